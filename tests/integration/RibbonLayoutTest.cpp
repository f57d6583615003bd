// The layout of the drawn ribbon, and what is found about its texts.
#include "standins/office/window/RibbonLayout.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "src/addin/RibbonMarkup.h"
#include "src/ui/StringTable.h"

namespace {

constexpr UINT scales[] = {96, 120, 144, 192};
constexpr int windowWidth = 1000;  // at 96 dots per inch

RibbonElement Element(const wchar_t* kind, const wchar_t* id, const std::wstring& label, const wchar_t* size = L"") {
    RibbonElement element;
    element.kind = kind;
    element.id = id;
    element.label = label;
    element.size = size;
    return element;
}

RibbonElement TabOf(std::vector<RibbonElement> controls, const std::wstring& groupLabel = L"Group") {
    RibbonElement group = Element(L"group", L"group", groupLabel);
    group.children = std::move(controls);
    RibbonElement tab = Element(L"tab", L"tab", L"Tab");
    tab.children = {group};
    return tab;
}

std::vector<std::wstring> LinesOf(const std::wstring& label) {
    const RibbonElement tab = TabOf({Element(L"button", L"large", label, L"large")});
    const RibbonLayout layout = LayOutTab(tab, Fonts(96), 0, 0);
    std::vector<std::wstring> lines;
    for (const TextLine& line : layout.controls.at(0).lines) lines.push_back(line.text);
    return lines;
}

using Lines = std::vector<std::wstring>;

void Translate(std::vector<RibbonElement>& elements, UiLanguage language) {
    for (RibbonElement& element : elements) {
        element.label = LocalizeFor(GetLocalizedStringTable(), element.label, language);
        if (element.hasSuperTip) element.superTip = LocalizeFor(GetLocalizedStringTable(), element.superTip, language);
        Translate(element.children, language);
    }
}

// The add-in's ribbon in every host and language; these run with an English interface, where labels are keys.
std::vector<Ribbon> EveryRibbon() {
    std::vector<Ribbon> ribbons;
    for (const Host host : {HostWord, HostExcel, HostPowerPoint, HostOutlook}) {
        const Ribbon english = ParseRibbon(BuildRibbonMarkup(host));
        for (LONG language = 0; language < 12; ++language) {
            ribbons.push_back(english);
            Translate(ribbons.back().tabs, static_cast<UiLanguage>(language));
        }
    }
    return ribbons;
}

bool IsWithin(const RECT& inner, const RECT& outer) {
    return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
           inner.bottom <= outer.bottom;
}

void ExpectLinesWithin(const PlacedControl& control, const Fonts& fonts) {
    for (const TextLine& line : control.lines) {
        // The lower edge of a line is for accents and the like of the next one.
        const RECT area = {line.at.x, line.at.y, line.at.x + fonts.WidthOf(line.text, TextStyle::Plain),
                           line.at.y + fonts.Scaled(15)};
        EXPECT_TRUE(IsWithin(area, control.place)) << control.element->id << L" " << line.text;
    }
}

std::wstring ProblemOf(const std::vector<TextFinding>& findings, const wchar_t* id, const wchar_t* attribute) {
    for (const TextFinding& finding : findings) {
        if (finding.id == id && finding.attribute == attribute) return finding.problem;
    }
    return L"not checked";
}

std::wstring ProblemOf(RibbonElement control, const wchar_t* attribute = L"label") {
    const std::wstring id = control.id;
    Ribbon ribbon;
    ribbon.tabs = {TabOf({std::move(control)}, L"G")};
    return ProblemOf(CheckTexts(ribbon, Fonts(96), windowWidth), id.c_str(), attribute);
}

bool IsLargeOne(const PlacedControl& control) { return control.element->size == L"large"; }

}  // namespace

// --- Lines of labels ---

TEST(RibbonLayout, LabelOfTwoWordsTakesTwoLines) {
    EXPECT_EQ(LinesOf(L"Create PDF"), (Lines{L"Create", L"PDF"}));
    EXPECT_EQ(LinesOf(L"Word"), Lines{L"Word"});
}

TEST(RibbonLayout, LinesAreOfLikeLength) {
    EXPECT_EQ(LinesOf(L"Create PDF Portfolio"), (Lines{L"Create PDF", L"Portfolio"}));
    EXPECT_EQ(LinesOf(L"aa bbbbbbbb c"), (Lines{L"aa", L"bbbbbbbb c"}));
}

TEST(RibbonLayout, LabelOfIdeographsBreaksOnlyWhenItIsLong) {
    EXPECT_EQ(LinesOf(L"\u4F5C\u6210").size(), 1U);
    EXPECT_EQ(LinesOf(std::wstring(20, L'\u4F5C')).size(), 2U);
}

TEST(RibbonLayout, NoLineBeginsWithAProlongedSound) {
    // Ten ideographs, so that the middle falls before the sign; it stays with what it prolongs.
    std::wstring label(20, L'\u4F5C');
    label[10] = L'\u30FC';
    const Lines lines = LinesOf(label);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_NE(lines[1].front(), L'\u30FC');
    EXPECT_EQ(lines[0] + lines[1], label);
}

// --- Places ---

TEST(RibbonLayout, CheckBoxesStandInColumnsOfThree) {
    const RibbonElement tab = TabOf({Element(L"checkBox", L"a", L"a"), Element(L"checkBox", L"b", L"long label"),
                                     Element(L"checkBox", L"c", L"c"), Element(L"checkBox", L"d", L"d")});
    const RibbonLayout layout = LayOutTab(tab, Fonts(96), 0, 0);
    ASSERT_EQ(layout.controls.size(), 4U);
    const auto& [a, b, c, d] = std::tie(layout.controls[0], layout.controls[1], layout.controls[2], layout.controls[3]);
    EXPECT_EQ(a.place.left, b.place.left);
    EXPECT_EQ(b.place.left, c.place.left);
    EXPECT_EQ(a.place.bottom, b.place.top);
    EXPECT_EQ(b.place.bottom, c.place.top);
    EXPECT_EQ(d.place.top, a.place.top);
    EXPECT_EQ(d.place.left, b.place.right);
}

TEST(RibbonLayout, MenusHaveAnArrowAndButtonsHaveNone) {
    const RibbonElement tab =
        TabOf({Element(L"menu", L"menu", L"Open PDF", L"large"), Element(L"button", L"button", L"Open PDF", L"large")});
    const RibbonLayout layout = LayOutTab(tab, Fonts(96), 0, 0);
    EXPECT_FALSE(IsRectEmpty(&layout.controls[0].arrow));
    EXPECT_TRUE(IsWithin(layout.controls[0].arrow, layout.controls[0].place));
    EXPECT_GE(layout.controls[0].arrow.left, layout.controls[0].lines[1].at.x);
    EXPECT_TRUE(IsRectEmpty(&layout.controls[1].arrow));
}

TEST(RibbonLayout, GroupIsAsWideAsItsLabelAtLeast) {
    const std::wstring label = L"A label that is longer than the button below which it stands";
    const Fonts fonts(96);
    const RibbonElement tab = TabOf({Element(L"button", L"b", L"b", L"large")}, label);
    const RibbonLayout layout = LayOutTab(tab, fonts, 0, 0);
    const int labelWidth = fonts.WidthOf(label, TextStyle::Small);
    EXPECT_GE(layout.groups[0].place.right, labelWidth);
    EXPECT_GE(layout.groups[0].label.at.x, 0);
    const RECT& place = layout.controls[0].place;
    EXPECT_NEAR(place.left + place.right, layout.groups[0].place.right, 2) << "the button is in the middle";
}

TEST(RibbonLayout, EveryControlOfEveryRibbonHasAPlaceOfItsOwn) {
    for (const UINT dpi : scales) {
        const Fonts fonts(dpi);
        for (const Ribbon& ribbon : EveryRibbon()) {
            const RibbonLayout layout = LayOutTab(ribbon.tabs.front(), fonts, 10, 20);
            ASSERT_FALSE(layout.controls.empty());
            for (size_t i = 0; i < layout.controls.size(); ++i) {
                const PlacedControl& control = layout.controls[i];
                EXPECT_TRUE(IsWithin(control.picture, control.place)) << control.element->id;
                ExpectLinesWithin(control, fonts);
                const bool isInAGroup = std::any_of(layout.groups.begin(), layout.groups.end(), [&](const auto& group) {
                    return IsWithin(control.place, group.place);
                });
                EXPECT_TRUE(isInAGroup) << control.element->id;
                for (size_t j = 0; j < i; ++j) {
                    RECT common;
                    EXPECT_FALSE(IntersectRect(&common, &control.place, &layout.controls[j].place));
                }
            }
        }
    }
}

TEST(RibbonLayout, EveryItemOfEveryMenuIsWithinIt) {
    for (const UINT dpi : scales) {
        const Fonts fonts(dpi);
        for (const Ribbon& ribbon : EveryRibbon()) {
            for (const RibbonElement& element : ribbon.tabs.front().children.front().children) {
                if (element.kind != L"menu") continue;
                const PopupLayout layout = LayOutMenu(element, fonts);
                ASSERT_EQ(layout.items.size(), element.children.size());
                LONG bottom = 0;
                for (const PlacedControl& item : layout.items) {
                    EXPECT_TRUE(IsWithin(item.place, {0, 0, layout.size.cx, layout.size.cy}));
                    EXPECT_TRUE(IsWithin(item.picture, item.place));
                    EXPECT_GE(item.place.top, bottom);
                    bottom = item.place.bottom;
                    ExpectLinesWithin(item, fonts);
                }
            }
        }
    }
}

TEST(RibbonLayout, PicturesHaveOfficesSizesAtEveryScale) {
    const Ribbon ribbon = ParseRibbon(BuildRibbonMarkup(HostOutlook));
    for (const UINT dpi : scales) {
        const Fonts fonts(dpi);
        for (const PlacedControl& control : LayOutTab(ribbon.tabs.front(), fonts, 0, 0).controls) {
            ASSERT_TRUE(IsLargeOne(control));
            EXPECT_EQ(control.picture.right - control.picture.left, static_cast<LONG>(32 * dpi / 96));
            for (const PlacedControl& item : LayOutMenu(*control.element, fonts).items) {
                EXPECT_EQ(item.picture.right - item.picture.left, static_cast<LONG>(16 * dpi / 96));
            }
        }
    }
}

TEST(RibbonLayout, TipHoldsLabelAndTextAndNothingIsLost) {
    RibbonElement element = Element(L"button", L"b", L"Create PDF");
    element.superTip = L"The generated document contains information such as the title, the author, keywords and so on";
    const Fonts fonts(96);
    const PopupLayout layout = LayOutTip(element, fonts);
    ASSERT_EQ(layout.heading.size(), 1U);
    EXPECT_EQ(layout.heading[0].text, element.label);
    std::wstring all;
    for (const TextLine& line : layout.lines) {
        all += (all.empty() ? L"" : L" ") + line.text;
        EXPECT_LE(line.at.x + fonts.WidthOf(line.text, TextStyle::Plain), layout.size.cx);
        EXPECT_LE(line.at.y + fonts.LineHeight(TextStyle::Plain), layout.size.cy);
    }
    EXPECT_EQ(all, element.superTip);
    EXPECT_GT(layout.lines.size(), 1U);
}

// --- Findings ---

TEST(RibbonTexts, TextsThatFitHaveNoProblem) {
    RibbonElement button = Element(L"button", L"b", L"Create PDF", L"large");
    button.hasSuperTip = true;
    button.superTip = L"Convert the current document to PDF";
    EXPECT_EQ(ProblemOf(button), L"");
    EXPECT_EQ(ProblemOf(button, L"supertip"), L"");
}

TEST(RibbonTexts, EmptyTextsAreFound) {
    RibbonElement button = Element(L"button", L"b", L"", L"large");
    button.hasSuperTip = true;
    EXPECT_EQ(ProblemOf(button), L"empty");
    EXPECT_EQ(ProblemOf(button, L"supertip"), L"empty");
    button.superTip = L"  ";
    EXPECT_EQ(ProblemOf(button, L"supertip"), L"empty");
}

TEST(RibbonTexts, TipThatTheMarkupDoesNotGiveIsNotMissed) {
    EXPECT_EQ(ProblemOf(Element(L"button", L"b", L"b", L"large"), L"supertip"), L"not checked");
}

TEST(RibbonTexts, CharactersWithoutAGlyphAreNamed) {
    const std::wstring problem = ProblemOf(Element(L"button", L"b", L"a\uF8F0b\uF8F1", L"large"));
    EXPECT_EQ(problem, L"no glyph: U+F8F0 U+F8F1");
}

TEST(RibbonTexts, TextsThatAreTooWideAreFoundInEveryKindOfControl) {
    const std::wstring word(60, L'm');
    EXPECT_TRUE(ProblemOf(Element(L"button", L"b", word, L"large")).starts_with(L"too wide: "));
    EXPECT_TRUE(ProblemOf(Element(L"checkBox", L"b", word)).starts_with(L"too wide: "));
    RibbonElement tipped = Element(L"button", L"b", L"b", L"large");
    tipped.hasSuperTip = true;
    tipped.superTip = word;
    EXPECT_TRUE(ProblemOf(tipped, L"supertip").starts_with(L"too wide: "));
    RibbonElement menu = Element(L"menu", L"menu", L"Menu", L"large");
    menu.children = {Element(L"button", L"item", word)};
    Ribbon ribbon;
    ribbon.tabs = {TabOf({menu}, L"G")};
    EXPECT_TRUE(ProblemOf(CheckTexts(ribbon, Fonts(96), windowWidth), L"item", L"label").starts_with(L"too wide: "));
}

TEST(RibbonTexts, TipThatIsTooHighIsFound) {
    RibbonElement button = Element(L"button", L"b", L"b", L"large");
    button.hasSuperTip = true;
    for (int i = 0; i < 80; ++i) button.superTip += L"words ";
    EXPECT_TRUE(ProblemOf(button, L"supertip").starts_with(L"too high: "));
}

TEST(RibbonTexts, GroupLabelThatIsWiderThanItsControlsIsFound) {
    Ribbon ribbon;
    ribbon.tabs = {TabOf({Element(L"button", L"b", L"b", L"large")}, L"A label longer than its button")};
    EXPECT_TRUE(ProblemOf(CheckTexts(ribbon, Fonts(96), windowWidth), L"group", L"label").starts_with(L"too wide: "));
}

TEST(RibbonTexts, GroupsThatAreWiderThanTheWindowAreFound) {
    Ribbon ribbon;
    ribbon.tabs = {TabOf({Element(L"button", L"b", L"b", L"large")}, L"G")};
    EXPECT_EQ(ProblemOf(CheckTexts(ribbon, Fonts(96), windowWidth), L"tab", L"label"), L"");
    EXPECT_TRUE(ProblemOf(CheckTexts(ribbon, Fonts(96), 40), L"tab", L"label").starts_with(L"its groups are too wide"));
}

TEST(RibbonTexts, NoTextOfTheMarkupIsEmptyOrLacksGlyphsInTheFontOfItsLanguage) {
    constexpr LANGID languages[] = {
        MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_SIMPLIFIED),
        LANG_ENGLISH,
        LANG_GERMAN,
        LANG_FRENCH,
        LANG_ITALIAN,
        LANG_JAPANESE,
        LANG_PORTUGUESE,
        LANG_SPANISH,
        MAKELANGID(LANG_CHINESE, SUBLANG_CHINESE_TRADITIONAL),
        LANG_RUSSIAN,
        LANG_DUTCH,
        LANG_KOREAN,
    };
    const std::vector<Ribbon> ribbons = EveryRibbon();
    for (size_t i = 0; i < ribbons.size(); ++i) {
        const LANGID language = languages[i % ARRAYSIZE(languages)];
        for (const TextFinding& text : CheckTexts(ribbons[i], Fonts(96, language), windowWidth)) {
            EXPECT_FALSE(text.problem.starts_with(L"empty") || text.problem.starts_with(L"no glyph"))
                << text.id << L" " << text.attribute << L" in language " << language << L": " << text.problem;
        }
    }
}

TEST(RibbonTexts, EveryTextOfTheMarkupIsChecked) {
    for (const Ribbon& ribbon : EveryRibbon()) {
        size_t texts = 0;
        const auto count = [&](const auto& self, const std::vector<RibbonElement>& elements) -> void {
            for (const RibbonElement& element : elements) {
                texts += element.hasSuperTip ? 2 : 1;
                self(self, element.children);
            }
        };
        count(count, ribbon.tabs);
        EXPECT_EQ(CheckTexts(ribbon, Fonts(96), windowWidth).size(), texts);
    }
}
