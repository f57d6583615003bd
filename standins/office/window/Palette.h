// The colours of the window, by host and Office theme.
#pragma once

#include <windows.h>

#include <optional>

#include "standins/office/Hosts.h"

struct Palette {
    COLORREF title;  // title row and row of tabs
    COLORREF titleText;
    COLORREF tabText;  // of the open tab, which has the ribbon's colour
    COLORREF ribbon;
    COLORREF text;
    COLORREF dimText;  // of group labels, times and the like
    COLORREF line;
    COLORREF hover;
    COLORREF pressed;
    COLORREF popup;      // of menus and tips
    COLORREF box;        // inside of a check box
    COLORREF workspace;  // around a page
    COLORREF list;
    COLORREF selected;  // behind what is selected in the list
    COLORREF accent;    // what the host is recognised by
};

// Office's themes as the registry numbers them.
struct OfficeTheme {
    DWORD number;
    const wchar_t* name;
};
inline constexpr OfficeTheme officeThemes[] = {
    {0, L"Colorful"}, {3, L"Dark Gray"}, {4, L"Black"}, {5, L"White"}, {6, L"Use system setting"},
};

// The theme that is stored for Office, if there is one.
std::optional<DWORD> StoredOfficeTheme();
void StoreOfficeTheme(DWORD number);

// The colours for the stored theme, or for Windows' own where it says so.
Palette CurrentPalette(const OfficeHost& host);
