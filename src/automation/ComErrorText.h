// The text of an HRESULT, and a message box that shows it.
#pragma once

#include <windows.h>

#include <string>

// The system's text without its line end, else the fallback.
std::wstring ComErrorText(HRESULT hr);

// "IDispatch error #N" for 0x80040201 to 0x8004FFFF, else "Unknown error 0x...".
std::string FallbackErrorText(HRESULT hr);

// Cuts one line feed, and a carriage return before it, from a text of two or more characters.
void CutLineEnd(char* text);

void ShowComError(HRESULT hr, const wchar_t* title);
