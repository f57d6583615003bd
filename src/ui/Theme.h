// Whether Office and Windows show light or dark, read afresh at every call.
#pragma once

#include <windows.h>

#include <string>

// Office's theme number from the newest version that stores one, or -1. The number 6, "use system setting", is answered
// as 2 for a light Windows and as 1 for a dark one.
LONG GetOfficeUiTheme();

// True also where Windows stores nothing.
bool IsWindowsAppsLightTheme();

// The key below HKEY_CURRENT_USER under which GetOfficeUiTheme last found a theme; empty until it found one.
std::wstring OfficeCommonKeyPath();

inline constexpr wchar_t officeThemeValue[] = L"UI Theme";
inline constexpr wchar_t windowsThemeKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize";
inline constexpr wchar_t windowsThemeValue[] = L"AppsUseLightTheme";
