// What File.cpp needs of the operating system: FileWindows.cpp and FilePosix.cpp each have all of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace zavo::pdf::filesystem {

using Handle = std::intptr_t;
constexpr Handle noHandle = -1;

// Paths may have any length. What is not noexcept throws FileError; `path` is what the error names.

Handle OpenForReading(const std::filesystem::path& path, std::uint64_t& size);

enum class Purpose {
    NewFile,
    Replacement,  // nobody else may read it before TakeAccessOf
    Spool,        // nobody else reads it, and it is gone when it is closed
};
// Makes a new file for reading and writing; noHandle where the name is taken.
Handle Create(const std::filesystem::path& path, Purpose purpose);

// Reads at most `count` bytes; 0 at the file's end.
std::size_t ReadAt(Handle handle, std::uint64_t offset, char* bytes, std::size_t count,
                   const std::filesystem::path& path);
void WriteAt(Handle handle, std::uint64_t offset, const char* bytes, std::size_t count,
             const std::filesystem::path& path);
void Flush(Handle handle, const std::filesystem::path& path);
void Close(Handle handle) noexcept;

// The file that a write to `path` is for, as an absolute path; throws where it stands and cannot be written.
std::filesystem::path ReplaceableTarget(const std::filesystem::path& path);
// Gives the file that `handle` writes what the target's owner set on it: permissions.
void TakeAccessOf(Handle handle, const std::filesystem::path& target);
// Puts the closed file `temporary` in the place of `target`, which need not exist.
void PutInPlace(const std::filesystem::path& temporary, const std::filesystem::path& target);

bool Exists(const std::filesystem::path& path) noexcept;  // also a link that leads nowhere
// Whether both paths lead to one file, whatever they look like.
bool IsSameFile(const std::filesystem::path& one, const std::filesystem::path& other) noexcept;
// Seconds since 1970; nothing where it is not known.
std::optional<std::int64_t> LastChange(const std::filesystem::path& path) noexcept;
void Remove(const std::filesystem::path& path) noexcept;
unsigned long ProcessId() noexcept;

}  // namespace zavo::pdf::filesystem
