// Files of a mail in the working folder, and what had to make room for them.
#include "src/outlook/WorkFiles.h"

#include <windows.h>

#include <algorithm>

#include "src/base/Paths.h"
#include "src/outlook/FileNames.h"

namespace {

constexpr wchar_t filesFolderEnding[] = L".files";

// An owned search of a folder.
class FileSearch {
public:
    explicit FileSearch(const wchar_t* pattern) : handle_(FindFirstFileW(pattern, &found_)) {}
    FileSearch(const FileSearch&) = delete;
    FileSearch& operator=(const FileSearch&) = delete;
    ~FileSearch() {
        if (handle_ != INVALID_HANDLE_VALUE) FindClose(handle_);
    }

    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
    bool Next() { return FindNextFileW(handle_, &found_); }
    const WIN32_FIND_DATAW& Found() const { return found_; }

private:
    WIN32_FIND_DATAW found_ = {};
    HANDLE handle_;
};

bool IsFolder(DWORD attributes) { return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
bool IsLink(DWORD attributes) { return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0; }

void MakeWritable(const wchar_t* path, DWORD attributes) noexcept {
    if (attributes & FILE_ATTRIBUTE_READONLY) SetFileAttributesW(path, attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
}

// Deletes the file or folder at `path`, which is `length` characters long, with what is in it. A folder that is a link
// is only taken away, whatever it leads to. Nothing here allocates: it has to work when memory is short. Paths beyond
// the buffer cannot be reached in this form, so nothing has one.
void DeleteAll(wchar_t (&path)[MAX_PATH], size_t length, DWORD attributes) noexcept {
    MakeWritable(path, attributes);
    if (!IsFolder(attributes)) {
        DeleteFileW(path);
        return;
    }
    if (!IsLink(attributes) && length + 2 < MAX_PATH) {
        wcscpy(path + length, L"\\*");
        FileSearch search(path);
        for (bool more = static_cast<bool>(search); more; more = search.Next()) {
            const WIN32_FIND_DATAW& found = search.Found();
            const size_t name = wcslen(found.cFileName);
            if (wcscmp(found.cFileName, L".") == 0 || wcscmp(found.cFileName, L"..") == 0) continue;
            if (length + 1 + name >= MAX_PATH) continue;
            wcscpy(path + length + 1, found.cFileName);
            DeleteAll(path, length + 1 + name, found.dwFileAttributes);
        }
        path[length] = L'\0';
    }
    RemoveDirectoryW(path);
}

void DeleteAll(const std::wstring& path, bool isFolder) noexcept {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || IsFolder(attributes) != isFolder || path.size() >= MAX_PATH) return;
    wchar_t buffer[MAX_PATH];
    wcscpy(buffer, path.c_str());
    DeleteAll(buffer, path.size(), attributes);
}

void DeleteDocument(const std::wstring& path, const std::wstring& filesFolder) noexcept {
    DeleteAll(path, false);
    DeleteAll(filesFolder, true);
}

std::wstring FilesFolderOf(const std::wstring& documentPath) {
    return documentPath.substr(0, documentPath.size() - GetExtensionOfPath(documentPath).size()) + filesFolderEnding;
}

bool IsSamePath(const std::wstring& one, const std::wstring& other) noexcept {
    return CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_EQUAL;
}

// The path with the name that the file really has, where `path` has its short name or other capitals; empty where there
// is none to be found. Paths that come here have no wild cards.
std::wstring RealPath(const std::wstring& path, DWORD& attributes) {
    const FileSearch search(path.c_str());
    if (!search) return {};
    attributes = search.Found().dwFileAttributes;
    return GetFolderOfPath(path) + search.Found().cFileName;
}

}  // namespace

void RemoveSavedDocument(const std::wstring& documentPath) {
    DeleteDocument(documentPath, FilesFolderOf(documentPath));
}

bool WorkFiles::IsOwn(const std::wstring& path) const {
    return std::any_of(documents_.begin(), documents_.end(),
                       [&](const Document& document) { return IsSamePath(document.path, path); }) ||
           std::any_of(attachments_.begin(), attachments_.end(),
                       [&](const std::wstring& attachment) { return IsSamePath(attachment, path); });
}

bool WorkFiles::IsClearedAway(const std::wstring& path) const {
    return IsOwn(path) || std::any_of(documents_.begin(), documents_.end(),
                                      [&](const Document& document) { return IsSamePath(document.filesFolder, path); });
}

bool WorkFiles::MakeRoom(const std::wstring& path) {
    DWORD attributes = 0;
    const std::wstring real = RealPath(path, attributes);
    if (real.empty()) return !Exists(path);
    if (IsFolder(attributes)) return false;
    if (IsOwn(real)) return true;
    // Under its new name the file may still answer to the old one, where that was its short name.
    return SetAsideFile(real) && !Exists(path);
}

bool WorkFiles::SetAsideFile(const std::wstring& path) {
    // A name that is to be cleared away in the end is not free, even when nothing has it any more.
    std::wstring now;
    for (unsigned counter = 1; now.empty() || IsClearedAway(now); ++counter) now = MakeUniquePath(counter, path);
    if (!IsShortEnough(now)) return false;
    std::wstring* const followed = Followed(path);
    std::wstring followedNow = followed ? now : std::wstring();
    // What was set aside may be in the way again.
    auto file = std::find_if(setAside_.begin(), setAside_.end(),
                             [&](const SetAside& earlier) { return IsSamePath(earlier.now, path); });
    const bool isNew = file == setAside_.end();
    if (isNew) file = setAside_.insert(file, {path, path});
    const bool moved = MoveFileExW(path.c_str(), now.c_str(), 0);
    if (moved) {
        file->now.swap(now);
        if (followed) followed->swap(followedNow);
    } else if (isNew) {
        setAside_.pop_back();
    }
    return moved;
}

bool WorkFiles::AddDocument(const std::wstring& path) {
    Document document = {path, FilesFolderOf(path)};
    DWORD attributes = 0;
    const std::wstring folder = RealPath(document.filesFolder, attributes);
    if (!folder.empty() && IsFolder(attributes) && !SetAsideFile(folder)) return false;
    if (!MakeRoom(path)) return false;
    documents_.push_back(std::move(document));
    return true;
}

bool WorkFiles::AddAttachment(const std::wstring& path) {
    if (!MakeRoom(path)) return false;
    attachments_.push_back(path);
    return true;
}

void WorkFiles::ForgetAttachment(const std::wstring& path) {
    std::erase_if(attachments_, [&](const std::wstring& attachment) { return IsSamePath(attachment, path); });
}

std::wstring* WorkFiles::Followed(const std::wstring& path) {
    const auto found = std::find_if(followed_.begin(), followed_.end(),
                                    [&](const std::wstring& followed) { return IsSamePath(followed, path); });
    return found == followed_.end() ? nullptr : &*found;
}

std::wstring& WorkFiles::Follow(const std::wstring& path) {
    std::wstring* const known = Followed(path);
    return known ? *known : followed_.emplace_back(path);
}

void WorkFiles::Finish() noexcept {
    for (const std::wstring& path : attachments_) DeleteAll(path, false);
    attachments_.clear();
    for (const Document& document : documents_) DeleteDocument(document.path, document.filesFolder);
    documents_.clear();
    while (PutOneBack()) continue;  // from the first on: it may have been in the place of an earlier one
}

bool WorkFiles::PutOneBack() noexcept {
    const auto file = std::find_if(setAside_.begin(), setAside_.end(), [](const SetAside& one) {
        return MoveFileExW(one.now.c_str(), one.home.c_str(), 0) != FALSE;
    });
    if (file == setAside_.end()) return false;
    if (std::wstring* const followed = Followed(file->now)) followed->swap(file->home);
    setAside_.erase(file);
    return true;
}
