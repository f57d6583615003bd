// The engine's files: reading whole or in pieces, and writing that puts the finished file in place at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zavo::pdf {

// A file that cannot be opened, read, written or put in place; the text says which and why.
class FileError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Memory for a file's bytes. It is not cleared first.
class Buffer {
public:
    Buffer() = default;
    explicit Buffer(std::size_t size) : bytes_(std::make_unique_for_overwrite<char[]>(size)), size_(size) {}

    char* Data() { return bytes_.get(); }
    std::string_view View() const { return {bytes_.get(), size_}; }

private:
    std::unique_ptr<char[]> bytes_;
    std::size_t size_ = 0;
};

using Sink = std::function<void(std::string_view bytes)>;

// A file opened for reading. Others may read, rename and delete it meanwhile; on Windows they may not write to it.
// Paths of any length are taken.
class InputFile {
public:
    explicit InputFile(std::filesystem::path path);  // throws FileError
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;
    ~InputFile();

    std::uint64_t Size() const { return size_; }  // as it was when the file was opened

    // Reads exactly `count` bytes; throws FileError where the file has fewer.
    void ReadAt(std::uint64_t offset, char* bytes, std::size_t count) const;

    Buffer ReadAll() const;
    void CopyTo(const Sink& sink) const;  // in pieces of at most 1 MiB

private:
    std::filesystem::path path_;
    std::uint64_t size_ = 0;
    std::intptr_t handle_;
};

// A file that takes the place of `target` once it is complete. Until then it is written in the same folder under a name
// of its own; unless Commit succeeded that file is gone in the end and the target is as it was.
class ReplacementFile {
public:
    explicit ReplacementFile(const std::filesystem::path& target);  // throws FileError
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;
    ~ReplacementFile();

    void Write(std::string_view bytes);  // buffered; throws FileError
    std::uint64_t Position() const { return position_; }

    // Closes and puts the file in place, flushed to the disk first where there is one to replace; throws FileError. A
    // read-only target is not replaced.
    void Commit();

private:
    void FlushBuffer();

    std::filesystem::path target_;
    bool targetExisted_;
    std::filesystem::path temporary_;
    std::intptr_t handle_;
    std::uint64_t position_ = 0;
    std::string buffer_;
};

// Bytes kept for a while: in memory, and above 32 MiB in a file in `folder` that is deleted when it is closed.
class Spool {
public:
    explicit Spool(std::filesystem::path folder);
    Spool(const Spool&) = delete;
    Spool& operator=(const Spool&) = delete;
    ~Spool();

    void Write(std::string_view bytes);  // throws FileError
    std::uint64_t Size() const { return size_; }
    void CopyTo(const Sink& sink) const;  // from the start, in pieces of at most 1 MiB; may be called again

private:
    std::filesystem::path folder_;
    std::string memory_;
    std::intptr_t handle_;
    std::uint64_t size_ = 0;
};

// UTF-8 as the command line and PDF texts have it.
std::filesystem::path PathFromUtf8(std::string_view text);
std::string Utf8FromPath(const std::filesystem::path& path);

}  // namespace zavo::pdf
