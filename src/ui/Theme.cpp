// The two themes in the registry.
#include "src/ui/Theme.h"

#include "src/base/Handles.h"

namespace {

// Where GetOfficeUiTheme last found a theme.
struct FoundKey {
    SRWLOCK lock = SRWLOCK_INIT;
    std::wstring path;
};

FoundKey& TheFoundKey() {
    static FoundKey found;
    return found;
}

// Four bytes of the value, whatever its type; `value` keeps the bytes that a shorter one lacks. False when it is
// missing or longer.
bool ReadNumber(const std::wstring& subkey, const wchar_t* name, DWORD& value) {
    RegistryKey key;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, subkey.c_str(), 0, KEY_READ, key.Receive()) != ERROR_SUCCESS) return false;
    DWORD size = sizeof value;
    return RegQueryValueExW(key.Get(), name, nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &size) == ERROR_SUCCESS;
}

}  // namespace

LONG GetOfficeUiTheme() {
    constexpr DWORD systemSetting = 6;
    for (const wchar_t* version : {L"16.0", L"15.0", L"14.0", L"12.0"}) {
        const std::wstring path = std::wstring(L"Software\\Microsoft\\Office\\") + version + L"\\Common";
        DWORD theme = 0;
        if (!ReadNumber(path, officeThemeValue, theme)) continue;
        {
            FoundKey& found = TheFoundKey();
            const ExclusiveLock lock(found.lock);
            found.path = path;
        }
        if (theme == systemSetting) return IsWindowsAppsLightTheme() ? 2 : 1;
        return static_cast<LONG>(theme);
    }
    return -1;
}

bool IsWindowsAppsLightTheme() {
    DWORD light = 1;
    return !ReadNumber(windowsThemeKey, windowsThemeValue, light) || light == 1;
}

std::wstring OfficeCommonKeyPath() {
    FoundKey& found = TheFoundKey();
    const ExclusiveLock lock(found.lock);
    return found.path;
}
