// Fonts by language and scale.
#include "standins/office/window/Fonts.h"

#include <cstdio>
#include <vector>

namespace {

struct LanguageFace {
    LANGID language;  // primary language, or a whole id where the two scripts of Chinese part
    const wchar_t* face;
};

// What Office writes its ribbon in; Segoe UI for every other language.
constexpr LanguageFace faces[] = {
    {MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_TRADITIONAL), L"Microsoft JhengHei UI"},
    {LANG_CHINESE, L"Microsoft YaHei UI"},
    {LANG_JAPANESE, L"Yu Gothic UI"},
    {LANG_KOREAN, L"Malgun Gothic"},
};

const wchar_t* FaceOf(LANGID language) {
    for (const LanguageFace& row : faces) {
        if (row.language == language || row.language == PRIMARYLANGID(language)) return row.face;
    }
    return L"Segoe UI";
}

struct StyledFont {
    TextStyle style;
    int halfPoints;
    int weight;
};

constexpr StyledFont styles[] = {
    {TextStyle::Plain, 18, FW_NORMAL},
    {TextStyle::Strong, 18, FW_SEMIBOLD},
    {TextStyle::Small, 16, FW_NORMAL},
    {TextStyle::Large, 21, FW_NORMAL},
};

}  // namespace

Fonts::Fonts(UINT dpi, LANGID language) : dpi_(dpi) {
    const wchar_t* face = FaceOf(language);
    for (const StyledFont& style : styles) {
        const int height = MulDiv(style.halfPoints, static_cast<int>(dpi), 144);  // a half point is 1/144 of an inch
        fonts_[style.style] = GdiObject(CreateFontW(-height, 0, 0, 0, style.weight, FALSE, FALSE, FALSE,
                                                    DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                                                    CLEARTYPE_QUALITY, DEFAULT_PITCH | FF_SWISS, face));
    }
}

int Fonts::WidthOf(const std::wstring& text, TextStyle style) const {
    const Selected font(dc_.Get(), Get(style));
    SIZE size = {};
    GetTextExtentPoint32W(dc_.Get(), text.c_str(), static_cast<int>(text.size()), &size);
    return size.cx;
}

int Fonts::LineHeight(TextStyle style) const {
    const Selected font(dc_.Get(), Get(style));
    TEXTMETRICW metrics = {};
    GetTextMetricsW(dc_.Get(), &metrics);
    return metrics.tmHeight;
}

std::wstring Fonts::MissingGlyphs(const std::wstring& text, TextStyle style) const {
    constexpr WORD noGlyph = 0xFFFF;
    const Selected font(dc_.Get(), Get(style));
    std::vector<WORD> glyphs(text.size());
    GetGlyphIndicesW(dc_.Get(), text.c_str(), static_cast<int>(text.size()), glyphs.data(),
                     GGI_MARK_NONEXISTING_GLYPHS);
    std::wstring missing;
    for (size_t i = 0; i < text.size(); ++i) {
        if (glyphs[i] != noGlyph) continue;
        wchar_t code[8];
        swprintf(code, ARRAYSIZE(code), L"U+%04X", static_cast<unsigned>(text[i]));
        missing += (missing.empty() ? L"" : L" ") + std::wstring(code);
    }
    return missing;
}
