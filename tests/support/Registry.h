// The real registry of the throw-away prefix, for tests.
#pragma once

#include <windows.h>

#include <map>
#include <string>
#include <vector>

// Sets HKCU and HKLM values for a test and puts the companion's keys back to nothing at its start and end.
class CompanionKeys {
public:
    CompanionKeys() { Clear(); }
    CompanionKeys(const CompanionKeys&) = delete;
    CompanionKeys& operator=(const CompanionKeys&) = delete;
    ~CompanionKeys() { Clear(); }

    static void Set(HKEY root, const std::wstring& subkey, DWORD type, const void* data, DWORD size) {
        HKEY key = nullptr;
        RegCreateKeyExW(root, subkey.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
        RegSetValueExW(key, L"InstallPath", 0, type, static_cast<const BYTE*>(data), size);
        RegCloseKey(key);
    }
    static void Set(HKEY root, const std::wstring& subkey, const std::wstring& folder) {
        Set(root, subkey, REG_SZ, folder.c_str(), static_cast<DWORD>((folder.size() + 1) * sizeof(wchar_t)));
    }

private:
    static void Clear() {
        RegDeleteTreeW(HKEY_CURRENT_USER, L"SOFTWARE\\ZAVO");
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\WOW6432Node\\ZAVO");
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\ZAVO");
    }
};

// Everything below a key: "subkey|value name" to "type:hexadecimal bytes", and "subkey|key" with an empty text for the
// key itself.
inline void ListRegistry(HKEY root, const std::wstring& subkey, std::map<std::wstring, std::wstring>& found) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, subkey.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
    found[subkey + L"|key"] = L"";
    wchar_t name[1024];
    std::vector<BYTE> data(1 << 16);
    for (DWORD i = 0;; ++i) {
        DWORD length = ARRAYSIZE(name);
        DWORD type = 0;
        auto size = static_cast<DWORD>(data.size());
        const LONG result = RegEnumValueW(key, i, name, &length, nullptr, &type, data.data(), &size);
        if (result == ERROR_MORE_DATA) {
            data.resize(data.size() * 2);
            --i;
            continue;
        }
        if (result != ERROR_SUCCESS) break;
        std::wstring text = std::to_wstring(type) + L":";
        for (DWORD k = 0; k < size; ++k) {
            constexpr wchar_t digits[] = L"0123456789abcdef";
            text += digits[data[k] >> 4];
            text += digits[data[k] & 15];
        }
        found[subkey + L"|" + name] = text;
    }
    std::vector<std::wstring> children;
    for (DWORD i = 0;; ++i) {
        DWORD length = ARRAYSIZE(name);
        if (RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        children.emplace_back(name);
    }
    RegCloseKey(key);
    for (const std::wstring& child : children) ListRegistry(root, subkey + L"\\" + child, found);
}
