#include "src/ui/Theme.h"

#include <atomic>

#include "src/base/RegistryValues.h"

namespace {

constexpr const wchar_t* officeThemeKeys[] = {
    L"Software\\Microsoft\\Office\\16.0\\Common",
    L"Software\\Microsoft\\Office\\15.0\\Common",
    L"Software\\Microsoft\\Office\\14.0\\Common",
    L"Software\\Microsoft\\Office\\12.0\\Common",
};

constinit std::atomic<const wchar_t*> foundKey = L"";

// Four bytes of the value; `number` keeps those that a shorter one lacks. False when it is missing or longer.
bool ReadNumber(const wchar_t* subkey, const wchar_t* name, DWORD& number) {
    return ReadRegistryValue(HKEY_CURRENT_USER, subkey, name, &number, sizeof number).has_value();
}

}  // namespace

LONG GetOfficeUiTheme() {
    constexpr DWORD systemSetting = 6;
    for (const wchar_t* key : officeThemeKeys) {
        DWORD theme = 0;
        if (!ReadNumber(key, officeThemeValue, theme)) continue;
        foundKey = key;
        if (theme == systemSetting) return IsWindowsAppsLightTheme() ? 2 : 1;
        return static_cast<LONG>(theme);
    }
    return -1;
}

bool IsWindowsAppsLightTheme() {
    DWORD light = 1;
    return !ReadNumber(windowsThemeKey, windowsThemeValue, light) || light == 1;
}

std::wstring OfficeCommonKeyPath() { return foundKey.load(); }
