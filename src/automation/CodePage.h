// Conversion between UTF-16 and the ANSI code page.
#pragma once

#include <string>

// Empty when the text is empty or cannot be converted.
std::wstring AnsiToWide(const char* text);

// The text in a buffer that belongs to the calling thread: valid until this thread's next call, freed when the thread
// ends. The buffer ends in at least four zero bytes, because a caller hands it to a function that reads wide
// characters. An empty text when the conversion fails.
const char* WideToAnsi(const std::wstring& text);
