// The Word stand-in in the registry: its class, for all users, and the type library that is in the program.
#pragma once

#include <windows.h>

inline constexpr CLSID wordClassId = {0x000209FF, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

// Makes this program the local server of Word's class. An HRESULT of the first step that failed.
HRESULT RegisterWord();

// Takes it out again. What is not there is no failure.
HRESULT UnregisterWord();
