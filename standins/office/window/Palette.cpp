// Colours, chosen close to Office's.
#include "standins/office/window/Palette.h"

namespace {

constexpr wchar_t officeKey[] = L"Software\\Microsoft\\Office\\16.0\\Common";
constexpr wchar_t officeValue[] = L"UI Theme";
constexpr wchar_t windowsKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize";
constexpr wchar_t windowsValue[] = L"AppsUseLightTheme";

constexpr DWORD colorful = 0;
constexpr DWORD darkGray = 3;
constexpr DWORD black = 4;
constexpr DWORD white = 5;
constexpr DWORD systemSetting = 6;

std::optional<DWORD> ReadNumber(const wchar_t* key, const wchar_t* value) {
    DWORD number = 0;
    DWORD size = sizeof number;
    const LSTATUS status = RegGetValueW(HKEY_CURRENT_USER, key, value, RRF_RT_REG_DWORD, nullptr, &number, &size);
    return status == ERROR_SUCCESS ? std::optional(number) : std::nullopt;
}

constexpr COLORREF Grey(BYTE value) { return RGB(value, value, value); }

Palette LightPalette(COLORREF accent) {
    return {accent,     Grey(0xFF), accent,     Grey(0xF3), Grey(0x26), Grey(0x60), Grey(0xD2),
            Grey(0xDA), Grey(0xC4), Grey(0xFF), Grey(0xFF), Grey(0xE6), Grey(0xFF), RGB(0xCD, 0xE6, 0xF7),
            accent};
}

Palette DarkPalette(COLORREF accent) {
    return {Grey(0x1A), Grey(0xF0), Grey(0xFF), Grey(0x29), Grey(0xF0), Grey(0xB4), Grey(0x4A),
            Grey(0x44), Grey(0x5C), Grey(0x33), Grey(0x29), Grey(0x14), Grey(0x1F), RGB(0x1B, 0x4B, 0x72),
            accent};
}

Palette DarkGrayPalette(COLORREF accent) {
    Palette palette = LightPalette(accent);
    palette.title = Grey(0x44);
    palette.tabText = Grey(0x26);
    palette.ribbon = Grey(0xB8);
    palette.dimText = Grey(0x3A);
    palette.line = Grey(0x96);
    palette.hover = Grey(0xA2);
    palette.pressed = Grey(0x8C);
    palette.popup = Grey(0xD4);
    palette.workspace = Grey(0x66);
    palette.list = Grey(0xD4);
    return palette;
}

Palette WhitePalette(COLORREF accent) {
    Palette palette = LightPalette(accent);
    palette.title = Grey(0xFF);
    palette.titleText = Grey(0x26);
    palette.ribbon = Grey(0xFF);
    return palette;
}

}  // namespace

std::optional<DWORD> StoredOfficeTheme() { return ReadNumber(officeKey, officeValue); }

void StoreOfficeTheme(DWORD number) {
    RegSetKeyValueW(HKEY_CURRENT_USER, officeKey, officeValue, REG_DWORD, &number, sizeof number);
}

Palette CurrentPalette(const OfficeHost& host) {
    DWORD theme = StoredOfficeTheme().value_or(colorful);
    if (theme == systemSetting) theme = ReadNumber(windowsKey, windowsValue).value_or(1) == 1 ? colorful : black;
    switch (theme) {
        case darkGray: return DarkGrayPalette(host.accent);
        case black: return DarkPalette(host.accent);
        case white: return WhitePalette(host.accent);
        default: return LightPalette(host.accent);
    }
}
