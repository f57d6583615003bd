// Path helpers on the shell's own path functions.
#include "src/base/Paths.h"

#include <windows.h>
#include <shlobj.h>
#include <shlwapi.h>

std::wstring GetFileNameOfPath(const std::wstring& path, bool keepExtension) {
    // PathFindFileNameW gives the whole text back where it finds no file name.
    std::wstring name = PathFindFileNameW(path.c_str());
    if (!keepExtension) {
        const size_t dot = name.rfind(L'.');
        if (dot != std::wstring::npos) name.resize(dot);
    }
    return name;
}

std::wstring GetFolderOfPath(const std::wstring& path) {
    const size_t separator = path.find_last_of(L"\\/");
    return separator == std::wstring::npos ? std::wstring() : path.substr(0, separator + 1);
}

std::wstring GetExtensionOfPath(const std::wstring& path) { return PathFindExtensionW(path.c_str()); }

std::wstring MakeUniquePath(unsigned counter, const std::wstring& path) {
    const std::wstring extension = GetExtensionOfPath(path);
    const std::wstring stem = path.substr(0, path.size() - extension.size());
    std::wstring candidate = path;
    for (;; ++counter) {
        if (counter != 0) candidate.assign(stem).append(L"(" + std::to_wstring(counter) + L")").append(extension);
        if (!PathFileExistsW(candidate.c_str())) return candidate;
    }
}

bool Exists(const std::wstring& path) { return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES; }

void MakeFolder(const std::wstring& path) { SHCreateDirectoryExW(nullptr, path.c_str(), nullptr); }

std::wstring Shortened(const std::wstring& text, size_t length) {
    if (text.size() <= length) return text;
    if (length > 0 && IS_HIGH_SURROGATE(text[length - 1])) --length;
    return text.substr(0, length);
}
