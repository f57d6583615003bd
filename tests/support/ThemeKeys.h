// The theme values of the throw-away prefix, for tests.
#pragma once

#include <windows.h>

#include <string>

#include "src/ui/Theme.h"

// Nothing stored at its start and end.
class ThemeKeys {
public:
    ThemeKeys() { Clear(); }
    ThemeKeys(const ThemeKeys&) = delete;
    ThemeKeys& operator=(const ThemeKeys&) = delete;
    ~ThemeKeys() { Clear(); }

    static std::wstring Office(const std::wstring& version) {
        return L"Software\\Microsoft\\Office\\" + version + L"\\Common";
    }
    static void Set(const std::wstring& subkey, const std::wstring& name, DWORD type, const void* data, DWORD size) {
        RegSetKeyValueW(HKEY_CURRENT_USER, subkey.c_str(), name.c_str(), type, data, size);
    }
    static void SetOffice(const std::wstring& version, DWORD theme) {
        Set(Office(version), officeThemeValue, REG_DWORD, &theme, sizeof theme);
    }
    static void SetWindows(DWORD light) { Set(windowsThemeKey, windowsThemeValue, REG_DWORD, &light, sizeof light); }

    static void Clear() {
        for (const wchar_t* version : {L"12.0", L"14.0", L"15.0", L"16.0"}) {
            RegDeleteKeyValueW(HKEY_CURRENT_USER, Office(version).c_str(), officeThemeValue);
        }
        RegDeleteKeyValueW(HKEY_CURRENT_USER, windowsThemeKey, windowsThemeValue);
    }
};
