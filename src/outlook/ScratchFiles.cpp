// Deleting files, and folders with what is in them. That allocates nothing: it has to work when memory is short.
#include "src/outlook/ScratchFiles.h"

#include <algorithm>
#include <utility>

#include "src/base/Barrier.h"

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

}  // namespace

// Whether nothing of that kind is there any more, or what is there is somebody else's.
bool ScratchFiles::DeleteOne(Scratch& scratch) noexcept {
    const std::wstring& path = scratch.path;
    // Unlike a search, these know no wild cards.
    if (path.size() >= MAX_PATH || GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) return true;
    const FileSearch before(path.c_str());
    if (!before || IsFolder(before.Found()) != scratch.isFolder) return true;
    const bool isKept = scratch.kept.dwHighDateTime != 0;
    if (isKept && CompareFileTime(&scratch.kept, &before.Found().ftLastWriteTime) != 0) {
        if (scratch.isFolder) RemoveDirectoryW(path.c_str());  // unless something is in it
        return true;
    }
    wchar_t buffer[MAX_PATH];
    wcscpy(buffer, path.c_str());
    DeleteFound(buffer, path.size(), before.Found());
    const FileSearch after(path.c_str());
    if (after) scratch.kept = after.Found().ftLastWriteTime;
    return !after;
}

bool ScratchFiles::MakeFolder(const std::wstring& path) {
    Scratch scratch = {path, true};
    paths_.reserve(paths_.size() + 1);  // so that nothing fails once the folder is there
    if (!CreateDirectoryW(path.c_str(), nullptr)) return false;
    paths_.push_back(std::move(scratch));
    return true;
}

bool ScratchFiles::HasFile(const std::wstring& path) const {
    return std::any_of(paths_.begin(), paths_.end(), [&](const Scratch& scratch) {
        return !scratch.isFolder &&
               CompareStringOrdinal(scratch.path.c_str(), -1, path.c_str(), -1, TRUE) == CSTR_EQUAL;
    });
}

void ScratchFiles::Delete() noexcept {
    for (size_t i = paths_.size(); i-- > 0;) {
        if (DeleteOne(paths_[i])) paths_.erase(paths_.begin() + static_cast<ptrdiff_t>(i));
    }
}

void ScratchFiles::DeleteOrLeaveTo(ScratchFiles& other) noexcept {
    Delete();
    if (other.paths_.empty()) return paths_.swap(other.paths_);  // needs no memory
    Barrier([&]() -> HRESULT {
        other.paths_.insert(other.paths_.end(), paths_.begin(), paths_.end());
        return S_OK;
    });
    Forget();
}

bool IsLink(DWORD attributes, DWORD tag) {
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) && (tag == 0 || IsReparseTagNameSurrogate(tag));
}
