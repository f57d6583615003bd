// The engine's files on Windows. Paths are absolute and carry the prefix that lifts the limit of 260 characters.
#include <windows.h>

#include <algorithm>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "engine/File.h"
#include "engine/FileSystem.h"

namespace zavo::pdf::filesystem {

namespace {

constexpr std::wstring_view longPrefix = LR"(\\?\)";
constexpr std::wstring_view uncPrefix = LR"(\\?\UNC\)";
constexpr DWORD largestPiece = 1u << 30;

std::string ErrorText(DWORD error) {
    wchar_t text[512];
    DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0, text,
                                  static_cast<DWORD>(std::size(text)), nullptr);
    while (length > 0 && (text[length - 1] <= L' ' || text[length - 1] == L'.')) --length;
    if (length == 0) return "error " + std::to_string(error);
    return Utf8FromPath(std::filesystem::path(std::wstring(text, length)));
}

// The path as the user knows it.
std::string ShownPath(const std::filesystem::path& path) {
    const std::wstring& text = path.native();
    if (text.starts_with(uncPrefix)) return Utf8FromPath(L"\\\\" + text.substr(uncPrefix.size()));
    if (text.starts_with(longPrefix)) return Utf8FromPath(text.substr(longPrefix.size()));
    return Utf8FromPath(path);
}

[[noreturn]] void Fail(const std::filesystem::path& path, const char* what, DWORD error) {
    throw FileError(ShownPath(path) + ": " + what + ": " + ErrorText(error));
}

// The path as the file system takes it at any length.
std::wstring LongPath(const std::filesystem::path& path) {
    const std::wstring& text = path.native();
    if (text.starts_with(longPrefix)) return text;
    std::wstring full(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetFullPathNameW(text.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
        if (length == 0) Fail(path, "is not a path", GetLastError());
        const bool fits = length < full.size();
        full.resize(length);
        if (fits) break;
    }
    if (full.starts_with(longPrefix) || full.starts_with(LR"(\\.\)")) return full;
    if (full.starts_with(LR"(\\)")) return std::wstring(uncPrefix) + full.substr(2);
    return std::wstring(longPrefix) + full;
}

// For functions that throw nothing: empty, which is no file's path, where there is none or no memory for it.
std::wstring LongPathIfPossible(const std::filesystem::path& path) noexcept {
    try {
        return LongPath(path);
    } catch (const std::exception&) {
        return {};
    }
}

// What the system knows of a file. Nobody's sharing is in the way of asking for it.
std::optional<BY_HANDLE_FILE_INFORMATION> Information(const std::filesystem::path& path) noexcept {
    const HANDLE file =
        CreateFileW(LongPathIfPossible(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) return std::nullopt;
    BY_HANDLE_FILE_INFORMATION information = {};
    const bool isKnown = GetFileInformationByHandle(file, &information) != 0;
    CloseHandle(file);
    if (!isKnown) return std::nullopt;
    return information;
}

HANDLE System(Handle handle) { return reinterpret_cast<HANDLE>(handle); }

// Reading and writing at a place of their own leave no file position behind that another call could meet.
OVERLAPPED At(std::uint64_t offset) {
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return place;
}

DWORD Piece(std::size_t count) { return static_cast<DWORD>(std::min<std::size_t>(count, largestPiece)); }

}  // namespace

Handle OpenForReading(const std::filesystem::path& path, std::uint64_t& size) {
    const HANDLE file = CreateFileW(LongPath(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) Fail(path, "cannot be opened", GetLastError());
    LARGE_INTEGER length = {};
    if (!GetFileSizeEx(file, &length)) {
        const DWORD error = GetLastError();
        CloseHandle(file);
        Fail(path, "cannot be opened", error);
    }
    size = static_cast<std::uint64_t>(length.QuadPart);
    return reinterpret_cast<Handle>(file);
}

Handle Create(const std::filesystem::path& path, Purpose purpose) {
    // The attributes of other files would stay.
    const DWORD flags = purpose == Purpose::Spool
                            ? FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE
                            : FILE_ATTRIBUTE_NORMAL;
    const HANDLE file =
        CreateFileW(LongPath(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW, flags, nullptr);
    if (file != INVALID_HANDLE_VALUE) return reinterpret_cast<Handle>(file);
    const DWORD error = GetLastError();
    if (error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS) return noHandle;
    Fail(path.parent_path(), "a file cannot be made there", error);
}

std::size_t ReadAt(Handle handle, std::uint64_t offset, char* bytes, std::size_t count,
                   const std::filesystem::path& path) {
    OVERLAPPED place = At(offset);
    DWORD got = 0;
    if (ReadFile(System(handle), bytes, Piece(count), &got, &place)) return got;
    if (GetLastError() != ERROR_HANDLE_EOF) Fail(path, "cannot be read", GetLastError());
    return 0;
}

void WriteAt(Handle handle, std::uint64_t offset, const char* bytes, std::size_t count,
             const std::filesystem::path& path) {
    while (count > 0) {
        OVERLAPPED place = At(offset);
        DWORD done = 0;
        if (!WriteFile(System(handle), bytes, Piece(count), &done, &place)) {
            Fail(path, "cannot be written", GetLastError());
        }
        if (done == 0) Fail(path, "cannot be written", ERROR_DISK_FULL);
        offset += done;
        bytes += done;
        count -= done;
    }
}

void Flush(Handle handle, const std::filesystem::path& path) {
    if (!FlushFileBuffers(System(handle))) Fail(path, "cannot be written", GetLastError());
}

void Close(Handle handle) noexcept { CloseHandle(System(handle)); }

std::filesystem::path ReplaceableTarget(const std::filesystem::path& path) {
    std::wstring target = LongPath(path);
    const DWORD attributes = GetFileAttributesW(target.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) {
        if (attributes & FILE_ATTRIBUTE_DIRECTORY) Fail(path, "cannot be written", ERROR_DIRECTORY);
        if (attributes & FILE_ATTRIBUTE_READONLY) {
            throw FileError(Utf8FromPath(path) + ": cannot be written: the file is read-only");
        }
    }
    return target;
}

void TakeAccessOf(Handle, const std::filesystem::path&) {}  // ReplaceFileW does

void PutInPlace(const std::filesystem::path& temporary, const std::filesystem::path& target) {
    const std::wstring from = LongPath(temporary);
    const std::wstring to = LongPath(target);
    if (GetFileAttributesW(to.c_str()) != INVALID_FILE_ATTRIBUTES) {
        // Keeps the permissions and streams of the file that was there; not every file system has it. The old file gets
        // a name that is known, so that nothing is left behind and nothing lost when only one half of it is done.
        const std::wstring old = from + L".old";
        if (ReplaceFileW(to.c_str(), from.c_str(), old.c_str(), REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr)) {
            DeleteFileW(old.c_str());
            return;
        }
        MoveFileExW(old.c_str(), to.c_str(), 0);
    }
    if (!MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        Fail(target, "cannot be replaced", GetLastError());
    }
}

bool Exists(const std::filesystem::path& path) noexcept {
    return GetFileAttributesW(LongPathIfPossible(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsSameFile(const std::filesystem::path& one, const std::filesystem::path& other) noexcept {
    const std::optional<BY_HANDLE_FILE_INFORMATION> first = Information(one);
    const std::optional<BY_HANDLE_FILE_INFORMATION> second = Information(other);
    return first && second && first->dwVolumeSerialNumber == second->dwVolumeSerialNumber &&
           first->nFileIndexHigh == second->nFileIndexHigh && first->nFileIndexLow == second->nFileIndexLow;
}

std::optional<std::int64_t> LastChange(const std::filesystem::path& path) noexcept {
    constexpr std::int64_t ticksPerSecond = 10'000'000;
    constexpr std::int64_t secondsFrom1601To1970 = 11'644'473'600;
    const std::optional<BY_HANDLE_FILE_INFORMATION> information = Information(path);
    if (!information) return std::nullopt;
    const FILETIME& time = information->ftLastWriteTime;
    const std::uint64_t ticks = (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
    return static_cast<std::int64_t>(ticks) / ticksPerSecond - secondsFrom1601To1970;
}

void Remove(const std::filesystem::path& path) noexcept { DeleteFileW(LongPathIfPossible(path).c_str()); }

unsigned long ProcessId() noexcept { return GetCurrentProcessId(); }

}  // namespace zavo::pdf::filesystem
