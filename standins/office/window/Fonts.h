// The fonts of the window, and what can be told about texts in them.
#pragma once

#include <windows.h>

#include <map>
#include <string>

#include "standins/office/window/Gdi.h"

enum class TextStyle { Plain, Strong, Small, Large };

// Fonts of a language of the interface, as Office takes them, for one scale of the screen.
class Fonts {
public:
    explicit Fonts(UINT dpi, LANGID language = GetUserDefaultUILanguage());

    // A length at 96 dots per inch in pixels of the screen.
    int Scaled(int length) const { return MulDiv(length, static_cast<int>(dpi_), USER_DEFAULT_SCREEN_DPI); }
    UINT Dpi() const { return dpi_; }

    HFONT Get(TextStyle style) const { return static_cast<HFONT>(fonts_.at(style).Get()); }
    int WidthOf(const std::wstring& text, TextStyle style) const;
    int LineHeight(TextStyle style) const;

    // The characters that the font has no glyph for, as "U+1234 U+5678"; empty when it has all.
    std::wstring MissingGlyphs(const std::wstring& text, TextStyle style) const;

private:
    UINT dpi_;
    std::map<TextStyle, GdiObject> fonts_;
    MemoryDc dc_;  // to measure with
};
