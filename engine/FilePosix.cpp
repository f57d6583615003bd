// The engine's files on Linux and its like.
#include <cerrno>
#include <climits>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/File.h"
#include "engine/FileSystem.h"

namespace zavo::pdf::filesystem {

namespace {

constexpr int linkLimit = 40;  // as the kernel has it

[[noreturn]] void Fail(const std::filesystem::path& path, const char* what, int error) {
    throw FileError(Utf8FromPath(path) + ": " + what + ": " + std::generic_category().message(error));
}

int Descriptor(Handle handle) { return static_cast<int>(handle); }

// Where symbolic links end, whether there is a file or not.
std::filesystem::path BehindLinks(std::filesystem::path path) {
    for (int links = 0; std::filesystem::is_symlink(std::filesystem::symlink_status(path)); ++links) {
        if (links == linkLimit) Fail(path, "cannot be opened", ELOOP);
        path = path.parent_path() / std::filesystem::read_symlink(path);
    }
    return path;
}

}  // namespace

Handle OpenForReading(const std::filesystem::path& path, std::uint64_t& size) {
    // A pipe is opened without waiting for its other end; it is refused below.
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) Fail(path, "cannot be opened", errno);
    struct stat status = {};
    int error = fstat(descriptor, &status) == 0 ? 0 : errno;
    if (error == 0 && S_ISDIR(status.st_mode)) error = EISDIR;
    if (error == 0 && !S_ISREG(status.st_mode)) error = EINVAL;
    if (error != 0) {
        close(descriptor);
        Fail(path, "cannot be opened", error);
    }
    size = static_cast<std::uint64_t>(status.st_size);
    return descriptor;
}

Handle Create(const std::filesystem::path& path, Purpose purpose) {
    const mode_t mode = purpose == Purpose::NewFile ? 0666 : 0600;
    const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (descriptor < 0) {
        if (errno == EEXIST) return noHandle;
        Fail(path.parent_path(), "a file cannot be made there", errno);
    }
    if (purpose == Purpose::Spool) unlink(path.c_str());
    return descriptor;
}

std::size_t ReadAt(Handle handle, std::uint64_t offset, char* bytes, std::size_t count,
                   const std::filesystem::path& path) {
    for (;;) {
        const ssize_t got = pread(Descriptor(handle), bytes, count, static_cast<off_t>(offset));
        if (got >= 0) return static_cast<std::size_t>(got);
        if (errno != EINTR) Fail(path, "cannot be read", errno);
    }
}

void WriteAt(Handle handle, std::uint64_t offset, const char* bytes, std::size_t count,
             const std::filesystem::path& path) {
    while (count > 0) {
        const ssize_t done = pwrite(Descriptor(handle), bytes, count, static_cast<off_t>(offset));
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) Fail(path, "cannot be written", errno);
        offset += static_cast<std::uint64_t>(done);
        bytes += done;
        count -= static_cast<std::size_t>(done);
    }
}

void Flush(Handle handle, const std::filesystem::path& path) {
    if (fsync(Descriptor(handle)) != 0) Fail(path, "cannot be written", errno);
}

void Close(Handle handle) noexcept { close(Descriptor(handle)); }

std::filesystem::path ReplaceableTarget(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::path target;
    try {
        target = BehindLinks(std::filesystem::absolute(path));
    } catch (const std::filesystem::filesystem_error& failure) {
        Fail(path, "cannot be written", failure.code().value());
    }
    struct stat status = {};
    if (stat(target.c_str(), &status) != 0) {
        if (errno == ENOENT) return target;
        Fail(path, "cannot be written", errno);
    }
    if (S_ISDIR(status.st_mode)) Fail(path, "cannot be written", EISDIR);
    if (!S_ISREG(status.st_mode)) Fail(path, "cannot be written", EINVAL);
    // A privileged user may write to any file; one without a single write bit was still meant to stay as it is.
    if ((status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0 || access(target.c_str(), W_OK) != 0) {
        throw FileError(Utf8FromPath(path) + ": cannot be written: the file is read-only");
    }
    return target;
}

void TakeAccessOf(Handle handle, const std::filesystem::path& target) {
    struct stat status = {};
    if (stat(target.c_str(), &status) != 0) return;
    // Only a privileged user can give files away; for others the file is theirs from now on.
    if (fchown(Descriptor(handle), status.st_uid, status.st_gid) != 0) errno = 0;
    if (fchmod(Descriptor(handle), status.st_mode & 07777) != 0) Fail(target, "cannot be written", errno);
}

void PutInPlace(const std::filesystem::path& temporary, const std::filesystem::path& target) {
    if (rename(temporary.c_str(), target.c_str()) != 0) Fail(target, "cannot be replaced", errno);
    // The new name reaches the disk with the folder. The file is in place by now, so a failure changes nothing.
    const int folder = open(target.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return;
    fsync(folder);
    close(folder);
}

bool Exists(const std::filesystem::path& path) noexcept {
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0;
}

bool IsSameFile(const std::filesystem::path& one, const std::filesystem::path& other) noexcept {
    struct stat statuses[2] = {};
    return stat(one.c_str(), &statuses[0]) == 0 && stat(other.c_str(), &statuses[1]) == 0 &&
           statuses[0].st_dev == statuses[1].st_dev && statuses[0].st_ino == statuses[1].st_ino;
}

std::optional<std::int64_t> LastChange(const std::filesystem::path& path) noexcept {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    return status.st_mtime;
}

void Remove(const std::filesystem::path& path) noexcept { unlink(path.c_str()); }

unsigned long ProcessId() noexcept { return static_cast<unsigned long>(getpid()); }

}  // namespace zavo::pdf::filesystem
