// Files as others hold them open.
#pragma once

#include <windows.h>

#include <string>

#include "src/base/Handles.h"

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// An existing file, opened with `access` and shared by `share` while this lives.
class HeldFile {
public:
    HeldFile(const std::wstring& path, DWORD access, DWORD share, DWORD flags = 0)
        : file_(Open(path, access, share, flags)) {}

    HANDLE Get() const { return file_.Get(); }

private:
    static HANDLE Open(const std::wstring& path, DWORD access, DWORD share, DWORD flags) {
        const HANDLE file = CreateFileW(path.c_str(), access, share, nullptr, OPEN_EXISTING, flags, nullptr);
        return file == INVALID_HANDLE_VALUE ? nullptr : file;
    }

    const KernelHandle file_;
};

// Whether nobody has the file open.
inline bool IsClosedEverywhere(const std::wstring& path) { return HeldFile(path, GENERIC_READ, 0).Get() != nullptr; }
