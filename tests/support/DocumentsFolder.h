// The Documents folder of the throw-away prefix.
#pragma once

#include <windows.h>
#include <shlobj.h>

#include <filesystem>
#include <string>

inline std::wstring DocumentsPath() {
    wchar_t path[MAX_PATH] = L"";
    SHGetFolderPathW(nullptr, CSIDL_PERSONAL | CSIDL_FLAG_CREATE, nullptr, SHGFP_TYPE_CURRENT, path);
    return path;
}

inline std::wstring DocumentsPath(const std::wstring& name) { return DocumentsPath() + L"\\" + name; }

// The folder of the Outlook commands in it, which is not there at the start, and gone at the end.
class OutlookPdfs {
public:
    OutlookPdfs() { Remove(); }
    OutlookPdfs(const OutlookPdfs&) = delete;
    OutlookPdfs& operator=(const OutlookPdfs&) = delete;
    ~OutlookPdfs() { Remove(); }

    static std::wstring Path() { return DocumentsPath(L"ZAVO Outlook PDFs"); }
    static std::wstring Path(const std::wstring& name) { return Path() + L"\\" + name; }

private:
    static void Remove() {
        std::error_code ignored;
        std::filesystem::remove_all(Path(), ignored);
    }
};

// Has Windows take another folder for Documents.
class MovedDocuments {
public:
    explicit MovedDocuments(const std::wstring& path) : previous_(Value()) { Set(path); }
    MovedDocuments(const MovedDocuments&) = delete;
    MovedDocuments& operator=(const MovedDocuments&) = delete;
    ~MovedDocuments() { Set(previous_); }

private:
    static constexpr wchar_t key[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

    static std::wstring Value() {
        wchar_t text[MAX_PATH] = L"";
        DWORD size = sizeof text;
        RegGetValueW(HKEY_CURRENT_USER, key, L"Personal", RRF_RT_ANY | RRF_NOEXPAND, nullptr, text, &size);
        return text;
    }
    static void Set(const std::wstring& path) {
        if (path.empty()) {
            RegDeleteKeyValueW(HKEY_CURRENT_USER, key, L"Personal");
            return;
        }
        RegSetKeyValueW(HKEY_CURRENT_USER, key, L"Personal", REG_EXPAND_SZ, path.c_str(),
                        static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t)));
    }

    const std::wstring previous_;
};
