// Under which class id and names COM and Office know the add-in.
#pragma once

#include <windows.h>

inline constexpr CLSID addinClassId = {0x6C1E2F4A, 0x9B3D, 0x4E7A, {0x8C, 0x5F, 0x2A, 0x9D, 0x7B, 0x1E, 0x3F, 0x60}};
inline constexpr wchar_t addinClassIdText[] = L"{6C1E2F4A-9B3D-4E7A-8C5F-2A9D7B1E3F60}";
inline constexpr wchar_t addinProgId[] = L"ZAVO.OfficeAddin";
inline constexpr wchar_t addinDescription[] = L"ZAVO Office COM Addin";
