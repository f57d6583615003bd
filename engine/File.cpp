// The engine's files: what is the same on every operating system.
#include "engine/File.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <string>

#include "engine/FileSystem.h"

namespace zavo::pdf {

namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 20;
constexpr std::size_t bufferSize = std::size_t{256} << 10;
constexpr std::size_t spoolLimit = std::size_t{32} << 20;

struct NewFile {
    std::filesystem::path path;
    filesystem::Handle handle;
};

// A short name that no other process, thread or earlier run is likely to have taken.
std::string UniqueName() {
    static std::atomic<std::uint64_t> counter = 0;
    const auto now = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    std::uint64_t number = (now << 16) ^ (std::uint64_t{filesystem::ProcessId()} << 40) ^ ++counter;
    std::string name = "~zavo";
    for (int digit = 0; digit < 16; ++digit, number >>= 4) name += "0123456789abcdef"[number & 15];
    return name + ".tmp";
}

NewFile CreateIn(const std::filesystem::path& folder, filesystem::Purpose purpose) {
    for (int tries = 0; tries < 100; ++tries) {
        std::filesystem::path path = folder / UniqueName();
        const filesystem::Handle handle = filesystem::Create(path, purpose);
        if (handle != filesystem::noHandle) return {std::move(path), handle};
    }
    throw FileError(Utf8FromPath(folder) + ": no name is free for a temporary file");
}

void ReadExactly(filesystem::Handle handle, std::uint64_t offset, char* bytes, std::size_t count,
                 const std::filesystem::path& path) {
    while (count > 0) {
        const std::size_t got = filesystem::ReadAt(handle, offset, bytes, count, path);
        if (got == 0) throw FileError(Utf8FromPath(path) + ": ends before byte " + std::to_string(offset + count));
        offset += got;
        bytes += got;
        count -= got;
    }
}

void CopyPieces(filesystem::Handle handle, std::uint64_t size, const std::filesystem::path& path, const Sink& sink) {
    Buffer piece(static_cast<std::size_t>(std::min<std::uint64_t>(size, pieceSize)));
    for (std::uint64_t offset = 0; offset < size;) {
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(size - offset, pieceSize));
        ReadExactly(handle, offset, piece.Data(), count, path);
        sink(piece.View().substr(0, count));
        offset += count;
    }
}

}  // namespace

InputFile::InputFile(std::filesystem::path path)
    : path_(std::move(path)), handle_(filesystem::OpenForReading(path_, size_)) {}

InputFile::~InputFile() { filesystem::Close(handle_); }

void InputFile::ReadAt(std::uint64_t offset, char* bytes, std::size_t count) const {
    ReadExactly(handle_, offset, bytes, count, path_);
}

Buffer InputFile::ReadAll() const {
    if (size_ > SIZE_MAX) throw FileError(Utf8FromPath(path_) + ": is too large for the memory");
    Buffer buffer(static_cast<std::size_t>(size_));
    ReadAt(0, buffer.Data(), static_cast<std::size_t>(size_));
    return buffer;
}

void InputFile::CopyTo(const Sink& sink) const { CopyPieces(handle_, size_, path_, sink); }

ReplacementFile::ReplacementFile(const std::filesystem::path& target)
    : target_(filesystem::ReplaceableTarget(target)), targetExisted_(filesystem::Exists(target_)) {
    buffer_.reserve(bufferSize);
    NewFile file = CreateIn(target_.parent_path(),
                            targetExisted_ ? filesystem::Purpose::Replacement : filesystem::Purpose::NewFile);
    temporary_ = std::move(file.path);
    handle_ = file.handle;
}

ReplacementFile::~ReplacementFile() {
    if (handle_ != filesystem::noHandle) filesystem::Close(handle_);
    // Where the system took the old file away and then failed, the new one is all that is left.
    const bool isOnlyCopy = targetExisted_ && !filesystem::Exists(target_);
    if (!temporary_.empty() && !isOnlyCopy) filesystem::Remove(temporary_);
}

void ReplacementFile::Write(std::string_view bytes) {
    if (buffer_.size() + bytes.size() > bufferSize) FlushBuffer();
    if (bytes.size() >= bufferSize) {
        filesystem::WriteAt(handle_, position_, bytes.data(), bytes.size(), target_);
    } else {
        buffer_ += bytes;
    }
    position_ += bytes.size();
}

void ReplacementFile::FlushBuffer() {
    filesystem::WriteAt(handle_, position_ - buffer_.size(), buffer_.data(), buffer_.size(), target_);
    buffer_.clear();
}

void ReplacementFile::Commit() {
    FlushBuffer();
    if (targetExisted_) {
        filesystem::TakeAccessOf(handle_, target_);
        // What takes a file's place has to be on the disk before that file goes.
        filesystem::Flush(handle_, target_);
    }
    filesystem::Close(handle_);
    handle_ = filesystem::noHandle;
    filesystem::PutInPlace(temporary_, target_);
    temporary_.clear();
}

Spool::Spool(std::filesystem::path folder) : folder_(std::move(folder)), handle_(filesystem::noHandle) {}

Spool::~Spool() {
    if (handle_ != filesystem::noHandle) filesystem::Close(handle_);
}

void Spool::Write(std::string_view bytes) {
    if (handle_ == filesystem::noHandle && size_ + bytes.size() > spoolLimit) {
        handle_ = CreateIn(folder_, filesystem::Purpose::Spool).handle;
        filesystem::WriteAt(handle_, 0, memory_.data(), memory_.size(), folder_);
        std::string().swap(memory_);
    }
    if (handle_ == filesystem::noHandle) {
        memory_ += bytes;
    } else {
        filesystem::WriteAt(handle_, size_, bytes.data(), bytes.size(), folder_);
    }
    size_ += bytes.size();
}

void Spool::CopyTo(const Sink& sink) const {
    if (handle_ != filesystem::noHandle) {
        CopyPieces(handle_, size_, folder_, sink);
        return;
    }
    const std::string_view bytes = memory_;
    for (std::size_t offset = 0; offset < bytes.size(); offset += pieceSize) sink(bytes.substr(offset, pieceSize));
}

std::filesystem::path PathFromUtf8(std::string_view text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

std::string Utf8FromPath(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

}  // namespace zavo::pdf
