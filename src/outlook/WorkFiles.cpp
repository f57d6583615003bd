// Files of a mail in the working folder, and what had to make room for them.
#include "src/outlook/WorkFiles.h"

#include <windows.h>

#include <algorithm>

#include "src/base/Barrier.h"
#include "src/base/Paths.h"
#include "src/outlook/FileNames.h"

namespace {

constexpr wchar_t filesFolderEnding[] = L".files";

// An owned search of a folder.
class FileSearch {
public:
    explicit FileSearch(const std::wstring& pattern) : handle_(FindFirstFileW(pattern.c_str(), &found_)) {}
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

void DeleteOneFile(const std::wstring& path, DWORD attributes) {
    if (attributes & FILE_ATTRIBUTE_READONLY) SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    DeleteFileW(path.c_str());
}

// Folders in a folder are emptied one after the other, so depth costs no stack. A folder that is a link is only taken
// away, whatever it leads to.
void DeleteFolder(const std::wstring& folder) {
    std::vector<std::wstring> folders = {folder};
    for (size_t i = 0; i < folders.size(); ++i) {
        FileSearch search(folders[i] + L"\\*");
        for (bool more = static_cast<bool>(search); more; more = search.Next()) {
            const std::wstring name = search.Found().cFileName;
            const DWORD attributes = search.Found().dwFileAttributes;
            if (name == L"." || name == L"..") continue;
            const std::wstring path = folders[i] + L"\\" + name;
            if (!IsFolder(attributes)) {
                DeleteOneFile(path, attributes);
            } else if (IsLink(attributes)) {
                RemoveDirectoryW(path.c_str());
            } else {
                folders.push_back(path);
            }
        }
    }
    for (size_t i = folders.size(); i-- > 0;) RemoveDirectoryW(folders[i].c_str());
}

std::wstring FilesFolderOf(const std::wstring& documentPath) {
    return documentPath.substr(0, documentPath.size() - GetExtensionOfPath(documentPath).size()) + filesFolderEnding;
}

bool IsSamePath(const std::wstring& one, const std::wstring& other) {
    return CompareStringOrdinal(one.c_str(), -1, other.c_str(), -1, TRUE) == CSTR_EQUAL;
}

bool Contains(const std::vector<std::wstring>& paths, const std::wstring& path) {
    return std::any_of(paths.begin(), paths.end(), [&](const std::wstring& own) { return IsSamePath(own, path); });
}

// The path with the name that the file really has, where `path` has its short name or other capitals; empty where there
// is no such file. Paths that come here have no wild cards.
std::wstring RealPath(const std::wstring& path, DWORD& attributes) {
    const FileSearch search(path);
    if (!search) return {};
    attributes = search.Found().dwFileAttributes;
    return GetFolderOfPath(path) + search.Found().cFileName;
}

}  // namespace

void RemoveSavedDocument(const std::wstring& documentPath) {
    const DWORD document = GetFileAttributesW(documentPath.c_str());
    if (document != INVALID_FILE_ATTRIBUTES && !IsFolder(document)) DeleteOneFile(documentPath, document);

    const std::wstring folder = FilesFolderOf(documentPath);
    const DWORD attributes = GetFileAttributesW(folder.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !IsFolder(attributes)) return;
    if (IsLink(attributes)) {
        RemoveDirectoryW(folder.c_str());
    } else {
        DeleteFolder(folder);
    }
}

WorkFiles::~WorkFiles() { Finish(); }

bool WorkFiles::IsOwn(const std::wstring& path) const {
    return Contains(documents_, path) || Contains(attachments_, path);
}

bool WorkFiles::MakeRoom(const std::wstring& path) {
    DWORD attributes = 0;
    const std::wstring real = RealPath(path, attributes);
    return real.empty() || IsOwn(real) || IsFolder(attributes) || Move(real);
}

bool WorkFiles::MoveFolder(const std::wstring& path) {
    DWORD attributes = 0;
    const std::wstring real = RealPath(path, attributes);
    return real.empty() || !IsFolder(attributes) || Move(real);
}

bool WorkFiles::Move(const std::wstring& path) {
    std::wstring now = MakeUniquePath(1, path);
    if (!IsShortEnough(now)) return false;
    // What was set aside may be in the way again.
    auto file = std::find_if(setAside_.begin(), setAside_.end(),
                             [&](const SetAside& earlier) { return IsSamePath(earlier.now, path); });
    const bool isNew = file == setAside_.end();
    if (isNew) file = setAside_.insert(file, {path, path});
    const bool moved = MoveFileExW(path.c_str(), now.c_str(), 0);
    if (moved) {
        file->now.swap(now);
    } else if (isNew) {
        setAside_.pop_back();
    }
    return moved;
}

bool WorkFiles::AddDocument(const std::wstring& path) {
    if (!MakeRoom(path) || !MoveFolder(FilesFolderOf(path))) return false;
    documents_.push_back(path);
    return true;
}

bool WorkFiles::AddAttachment(const std::wstring& path) {
    if (!MakeRoom(path)) return false;
    attachments_.push_back(path);
    return true;
}

std::wstring WorkFiles::CurrentPath(std::wstring path) const {
    // A folder without a name of its own leaves a doubled separator.
    const size_t doubled = path.find(L"\\\\", 1);
    if (doubled != std::wstring::npos) path.erase(doubled, 1);
    for (const SetAside& file : setAside_) {
        if (IsSamePath(file.path, path)) return file.now;
    }
    return path;
}

void WorkFiles::Finish() noexcept {
    for (const std::wstring& path : attachments_) DeleteFileW(path.c_str());
    attachments_.clear();
    Barrier([&]() -> HRESULT {
        for (const std::wstring& path : documents_) RemoveSavedDocument(path);
        return S_OK;
    });
    documents_.clear();
    for (SetAside& file : setAside_) {
        if (MoveFileExW(file.now.c_str(), file.path.c_str(), 0)) file.now.swap(file.path);
    }
}
