// Deleting files, and folders with what is in them. Nothing here allocates: it has to work when memory is short.
#include "src/outlook/ScratchFiles.h"

#include <algorithm>
#include <iterator>

namespace {

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

bool IsFolder(const WIN32_FIND_DATAW& found) { return (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }

// Deletes what is at `path`, which is `length` characters long. A folder that is a link is only taken away, whatever it
// leads to. Paths beyond the buffer cannot be reached in this form, so nothing has one.
void DeleteFound(wchar_t (&path)[MAX_PATH], size_t length, const WIN32_FIND_DATAW& found) noexcept {
    if (found.dwFileAttributes & FILE_ATTRIBUTE_READONLY) {
        SetFileAttributesW(path, found.dwFileAttributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
    }
    if (!IsFolder(found)) {
        DeleteFileW(path);
        return;
    }
    if (!IsLink(found.dwFileAttributes, found.dwReserved0) && length + 2 < MAX_PATH) {
        wcscpy(path + length, L"\\*");
        FileSearch search(path);
        for (bool more = static_cast<bool>(search); more; more = search.Next()) {
            const wchar_t* name = search.Found().cFileName;
            if (wcscmp(name, L".") == 0 || wcscmp(name, L"..") == 0) continue;
            const size_t nameLength = wcslen(name);
            if (length + 1 + nameLength >= MAX_PATH) continue;
            wcscpy(path + length + 1, name);
            DeleteFound(path, length + 1 + nameLength, search.Found());
        }
        path[length] = L'\0';
    }
    RemoveDirectoryW(path);
}

// Whether nothing of that kind is there any more.
bool DeletePath(const std::wstring& path, bool isFolder) noexcept {
    const DWORD attributes = GetFileAttributesW(path.c_str());  // which, unlike a search, knows no wild cards
    if (attributes == INVALID_FILE_ATTRIBUTES || path.size() >= MAX_PATH) return true;
    const FileSearch search(path.c_str());
    if (!search || IsFolder(search.Found()) != isFolder) return true;
    wchar_t buffer[MAX_PATH];
    wcscpy(buffer, path.c_str());
    DeleteFound(buffer, path.size(), search.Found());
    return GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES;
}

}  // namespace

bool ScratchFiles::HasFile(const std::wstring& path) const {
    return std::any_of(paths_.begin(), paths_.end(), [&](const Scratch& scratch) {
        return !scratch.isFolder &&
               CompareStringOrdinal(scratch.path.c_str(), -1, path.c_str(), -1, TRUE) == CSTR_EQUAL;
    });
}

void ScratchFiles::Delete() noexcept {
    for (size_t i = paths_.size(); i-- > 0;) {
        if (DeletePath(paths_[i].path, paths_[i].isFolder)) paths_.erase(paths_.begin() + static_cast<ptrdiff_t>(i));
    }
}

void ScratchFiles::Take(ScratchFiles& other) {
    if (paths_.empty()) return paths_.swap(other.paths_);  // needs no memory
    paths_.insert(paths_.end(), std::make_move_iterator(other.paths_.begin()),
                  std::make_move_iterator(other.paths_.end()));
    other.paths_.clear();
}

bool IsLink(DWORD attributes, DWORD tag) {
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) && (tag == 0 || IsReparseTagNameSurrogate(tag));
}
