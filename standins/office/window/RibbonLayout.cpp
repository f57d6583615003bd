// Layout of groups, large buttons, check boxes, menus and tips.
#include "standins/office/window/RibbonLayout.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "standins/office/window/Window.h"

namespace {

// At 96 dots per inch.
constexpr int groupMargin = 4;
constexpr int controlsTop = 3;
constexpr int rowHeight = 22;
constexpr int rowsOfAColumn = 3;
constexpr int groupLabelTop = 75;
constexpr int largeHeight = 70;
constexpr int pictureTop = 3;
constexpr int largeTextTop = 36;
constexpr int largeLineStep = 15;  // Office sets these two lines closer than the font would
constexpr int largeMargin = 6;
constexpr int largeMinimum = 46;
constexpr int boxSize = 13;
constexpr int boxMargin = 5;
constexpr int arrowWidth = 7;
constexpr int arrowHeight = 4;
constexpr int arrowGap = 4;
constexpr int menuRowHeight = 26;
constexpr int menuPictureColumn = 34;
constexpr int menuMargin = 14;
constexpr int tipMargin = 9;
constexpr int tipTextWidth = 240;

// What a text may take before a designer should look at it. Office cuts nothing: it makes the tab wider until groups
// collapse, and tips higher until they cover the document.
constexpr int largeLineLimit = 96;  // three times its picture
constexpr int checkBoxLimit = 250;
constexpr int menuItemLimit = 360;
constexpr int tabLabelLimit = 120;
constexpr size_t tipLinesLimit = 6;

// --- Lines ---

bool IsIdeographic(wchar_t c) { return (c >= 0x2E80 && c < 0xA000) || (c >= 0xF900 && c < 0xFB00) || c >= 0xFF00; }

// Closing signs, prolonged sounds and small kana do not begin a line.
bool BeginsNoLine(wchar_t c) {
    return std::wstring_view(
               L"\u3001\u3002\uFF0C\uFF0E\u30FB\u30FC\u300D\u300F\uFF09\u3041\u3043\u3045\u3047\u3049\u3063\u3083"
               L"\u3085\u3087\u30A1\u30A3\u30A5\u30A7\u30A9\u30C3\u30E3\u30E5\u30E7")
               .find(c) != std::wstring_view::npos;
}

bool IsBreakBetweenWords(const std::wstring& text, size_t position) { return text[position - 1] == L' '; }

bool IsBreak(const std::wstring& text, size_t position) {
    return IsBreakBetweenWords(text, position) ||
           ((IsIdeographic(text[position - 1]) || IsIdeographic(text[position])) && !BeginsNoLine(text[position]));
}

std::wstring Trimmed(const std::wstring& text) { return text.substr(0, text.find_last_not_of(L' ') + 1); }

// As few lines as the width allows.
std::vector<std::wstring> Wrapped(const std::wstring& text, TextStyle style, int width, const Fonts& fonts) {
    std::vector<std::wstring> lines;
    size_t start = 0;
    size_t end = 0;  // of the line so far
    for (size_t position = 1; position <= text.size(); ++position) {
        if (position < text.size() && !IsBreak(text, position)) continue;
        const bool fits = fonts.WidthOf(Trimmed(text.substr(start, position - start)), style) <= width;
        if (!fits && end > start) {
            lines.push_back(Trimmed(text.substr(start, end - start)));
            start = end;
        }
        end = position;
    }
    if (start < text.size()) lines.push_back(Trimmed(text.substr(start)));
    return lines;
}

// A large button's label: two lines of like length where it has two words, or where one line would be too long.
std::vector<std::wstring> LargeLabelLines(const std::wstring& label, const Fonts& fonts) {
    const auto width = [&](const std::wstring& line) { return fonts.WidthOf(line, TextStyle::Plain); };
    const bool isLong = width(label) > fonts.Scaled(largeLineLimit);
    std::vector<std::wstring> best = {label};
    int bestWidth = -1;
    for (size_t position = 1; position < label.size(); ++position) {
        if (!(isLong ? IsBreak(label, position) : IsBreakBetweenWords(label, position))) continue;
        std::vector<std::wstring> lines = {Trimmed(label.substr(0, position)), label.substr(position)};
        const int longer = std::max(width(lines[0]), width(lines[1]));
        if (bestWidth >= 0 && longer >= bestWidth) continue;
        bestWidth = longer;
        best = std::move(lines);
    }
    return best;
}

int WidestOf(const std::vector<std::wstring>& lines, TextStyle style, const Fonts& fonts) {
    int widest = 0;
    for (const std::wstring& line : lines) widest = std::max(widest, fonts.WidthOf(line, style));
    return widest;
}

// --- Controls ---

RECT Square(int left, int top, int size) { return {left, top, left + size, top + size}; }

PlacedControl PlaceLarge(const RibbonElement& element, const Fonts& fonts, int left, int top) {
    const std::vector<std::wstring> texts = LargeLabelLines(element.label, fonts);
    const bool isMenu = element.kind == L"menu";
    const int arrow = fonts.Scaled(arrowWidth);
    const int arrowSpace = isMenu && texts.size() > 1 ? fonts.Scaled(arrowGap) + arrow : 0;  // beside the second line
    int textWidth = 0;
    for (size_t i = 0; i < texts.size(); ++i) {
        textWidth = std::max(textWidth, fonts.WidthOf(texts[i], TextStyle::Plain) + (i == 1 ? arrowSpace : 0));
    }
    const int width = std::max(fonts.Scaled(largeMinimum), textWidth + 2 * fonts.Scaled(largeMargin));
    const int centre = left + width / 2;
    const int lineStep = fonts.Scaled(largeLineStep);

    PlacedControl placed = {};
    placed.element = &element;
    placed.place = {left, top, left + width, top + fonts.Scaled(largeHeight)};
    placed.picture =
        Square(centre - fonts.Scaled(largePicture) / 2, top + fonts.Scaled(pictureTop), fonts.Scaled(largePicture));
    int y = top + fonts.Scaled(largeTextTop);
    for (size_t i = 0; i < texts.size(); ++i, y += lineStep) {
        const int space = i == 1 ? arrowSpace : 0;
        const int textLeft = centre - (fonts.WidthOf(texts[i], TextStyle::Plain) + space) / 2;
        placed.lines.push_back({texts[i], {textLeft, y}});
    }
    if (isMenu) {
        const int lineHeight = fonts.LineHeight(TextStyle::Plain);
        const int arrowTop =
            top + fonts.Scaled(largeTextTop) + lineStep + (lineHeight - fonts.Scaled(arrowHeight)) / 2 + 1;
        const int arrowLeft =
            texts.size() > 1 ? placed.lines[1].at.x + fonts.WidthOf(texts[1], TextStyle::Plain) + fonts.Scaled(arrowGap)
                             : centre - arrow / 2;
        placed.arrow = {arrowLeft, arrowTop, arrowLeft + arrow, arrowTop + fonts.Scaled(arrowHeight)};
    }
    return placed;
}

PlacedControl PlaceCheckBox(const RibbonElement& element, const Fonts& fonts, int left, int top) {
    const int height = fonts.Scaled(rowHeight);
    const int size = fonts.Scaled(boxSize);
    const int margin = fonts.Scaled(boxMargin);
    const int textLeft = left + margin + size + margin;
    const int textTop = top + (height - fonts.LineHeight(TextStyle::Plain)) / 2;
    PlacedControl placed = {};
    placed.element = &element;
    placed.place = {left, top, textLeft + fonts.WidthOf(element.label, TextStyle::Plain) + margin, top + height};
    placed.picture = Square(left + margin, top + (height - size) / 2, size);
    placed.lines = {{element.label, {textLeft, textTop}}};
    return placed;
}

// The controls of one group, large ones side by side, others in columns of three. Answers the right edge.
int PlaceControls(const RibbonElement& group, const Fonts& fonts, int left, int top,
                  std::vector<PlacedControl>& controls) {
    int right = left;
    int row = 0;
    for (const RibbonElement& element : group.children) {
        const bool isLarge = element.size == L"large";
        if (isLarge || row == rowsOfAColumn) {
            left = right;
            row = 0;
        }
        controls.push_back(isLarge ? PlaceLarge(element, fonts, left, top)
                                   : PlaceCheckBox(element, fonts, left, top + row * fonts.Scaled(rowHeight)));
        right = std::max<int>(right, controls.back().place.right);
        if (isLarge) {
            left = right;
        } else {
            ++row;
        }
    }
    return right;
}

}  // namespace

RibbonLayout LayOutTab(const RibbonElement& tab, const Fonts& fonts, int left, int top) {
    RibbonLayout layout;
    const int margin = fonts.Scaled(groupMargin);
    int x = left;
    for (const RibbonElement& group : tab.children) {
        const size_t first = layout.controls.size();
        const int labelWidth = fonts.WidthOf(group.label, TextStyle::Small);
        const int right = PlaceControls(group, fonts, x + margin, top + fonts.Scaled(controlsTop), layout.controls);
        // A label that is longer than its controls widens the group, and these stay in its middle.
        const int missing = std::max(0, labelWidth - (right - x - margin));
        for (size_t i = first; i < layout.controls.size(); ++i) {
            PlacedControl& control = layout.controls[i];
            for (RECT* area : {&control.place, &control.picture, &control.arrow}) {
                if (!IsRectEmpty(area)) OffsetRect(area, missing / 2, 0);
            }
            for (TextLine& line : control.lines) line.at.x += missing / 2;
        }
        const int end = right + missing + margin;
        layout.groups.push_back({{x, top, end, top + fonts.Scaled(ribbonHeight)},
                                 {group.label, {x + (end - x - labelWidth) / 2, top + fonts.Scaled(groupLabelTop)}}});
        x = end;
    }
    layout.width = x - left;
    return layout;
}

PopupLayout LayOutMenu(const RibbonElement& menu, const Fonts& fonts) {
    PopupLayout layout = {};
    const int border = 1;
    const int height = fonts.Scaled(menuRowHeight);
    const int textLeft = border + fonts.Scaled(menuPictureColumn);
    int widest = 0;
    for (const RibbonElement& item : menu.children) {
        widest = std::max(widest, fonts.WidthOf(item.label, TextStyle::Plain));
    }
    const int right = textLeft + widest + fonts.Scaled(menuMargin);
    int y = 2 * border;
    for (const RibbonElement& item : menu.children) {
        PlacedControl placed = {};
        placed.element = &item;
        placed.place = {2 * border, y, right - border, y + height};
        placed.picture = SquareIn({border, y, textLeft, y + height}, fonts.Scaled(smallPicture));
        placed.lines = {{item.label, {textLeft, y + (height - fonts.LineHeight(TextStyle::Plain)) / 2}}};
        layout.items.push_back(placed);
        y += height;
    }
    layout.size = {right + border, y + 2 * border};
    return layout;
}

PopupLayout LayOutTip(const RibbonElement& element, const Fonts& fonts) {
    PopupLayout layout = {};
    const int margin = fonts.Scaled(tipMargin);
    const int width = fonts.Scaled(tipTextWidth);
    int widest = 0;
    int y = margin;
    const auto place = [&](const std::wstring& text, TextStyle style, std::vector<TextLine>& lines) {
        for (const std::wstring& line : Wrapped(text, style, width, fonts)) {
            lines.push_back({line, {margin, y}});
            widest = std::max(widest, fonts.WidthOf(line, style));
            y += fonts.LineHeight(style);
        }
    };
    place(element.label, TextStyle::Strong, layout.heading);
    if (!element.superTip.empty()) {
        y += margin / 2;
        place(element.superTip, TextStyle::Plain, layout.lines);
    }
    layout.size = {widest + 2 * margin, y + margin};
    return layout;
}

// --- Findings ---

namespace {

void AddProblem(std::wstring& problem, const std::wstring& text) { problem += (problem.empty() ? L"" : L"; ") + text; }

void CheckWidth(std::wstring& problem, int width, int limit) {
    if (width > limit) {
        AddProblem(problem, L"too wide: " + std::to_wstring(width) + L" of " + std::to_wstring(limit));
    }
}

void CheckHeight(std::wstring& problem, size_t lines, size_t limit) {
    if (lines > limit) {
        AddProblem(problem, L"too high: " + std::to_wstring(lines) + L" lines of " + std::to_wstring(limit));
    }
}

class TextChecker {
public:
    TextChecker(const Fonts& fonts, int width) : fonts_(fonts), width_(width) {}

    void CheckTab(const RibbonElement& tab) {
        TextFinding& finding = Add(tab.id, L"label", tab.label, {TextStyle::Plain});
        CheckWidth(finding.problem, fonts_.WidthOf(tab.label, TextStyle::Plain), fonts_.Scaled(tabLabelLimit));
        const int groups = LayOutTab(tab, fonts_, 0, 0).width;
        if (groups > width_) {
            AddProblem(finding.problem,
                       L"its groups are too wide: " + std::to_wstring(groups) + L" of " + std::to_wstring(width_));
        }
        for (const RibbonElement& group : tab.children) CheckGroup(group);
    }

    std::vector<TextFinding> Take() { return std::move(findings_); }

private:
    // `styles` are those that the text is drawn in.
    TextFinding& Add(const std::wstring& id, const wchar_t* attribute, const std::wstring& text,
                     std::initializer_list<TextStyle> styles) {
        findings_.push_back({id, attribute, text, {}});
        TextFinding& finding = findings_.back();
        if (text.find_first_not_of(L' ') == std::wstring::npos) AddProblem(finding.problem, L"empty");
        for (const TextStyle style : styles) {
            const std::wstring missing = fonts_.MissingGlyphs(text, style);
            if (missing.empty()) continue;
            AddProblem(finding.problem, L"no glyph: " + missing);
            break;
        }
        return finding;
    }

    void CheckGroup(const RibbonElement& group) {
        std::vector<PlacedControl> controls;
        const int room = PlaceControls(group, fonts_, 0, 0, controls);
        TextFinding& finding = Add(group.id, L"label", group.label, {TextStyle::Small});
        CheckWidth(finding.problem, fonts_.WidthOf(group.label, TextStyle::Small), room);
        for (const RibbonElement& element : group.children) CheckControl(element);
    }

    void CheckControl(const RibbonElement& element) {
        TextFinding& finding = Add(element.id, L"label", element.label, {TextStyle::Plain, TextStyle::Strong});
        if (element.size == L"large") {
            const int widest = WidestOf(LargeLabelLines(element.label, fonts_), TextStyle::Plain, fonts_);
            CheckWidth(finding.problem, widest, fonts_.Scaled(largeLineLimit));
        } else {
            const int limit = fonts_.Scaled(element.kind == L"checkBox" ? checkBoxLimit : menuItemLimit);
            CheckWidth(finding.problem, fonts_.WidthOf(element.label, TextStyle::Plain), limit);
        }
        if (element.hasSuperTip) CheckTip(element);
        for (const RibbonElement& item : element.children) CheckControl(item);
    }

    void CheckTip(const RibbonElement& element) {
        TextFinding& finding = Add(element.id, L"supertip", element.superTip, {TextStyle::Plain});
        const int limit = fonts_.Scaled(tipTextWidth);
        const std::vector<std::wstring> lines = Wrapped(element.superTip, TextStyle::Plain, limit, fonts_);
        CheckWidth(finding.problem, WidestOf(lines, TextStyle::Plain, fonts_), limit);
        CheckHeight(finding.problem, lines.size(), tipLinesLimit);
    }

    const Fonts& fonts_;
    const int width_;
    std::vector<TextFinding> findings_;
};

}  // namespace

std::vector<TextFinding> CheckTexts(const Ribbon& ribbon, const Fonts& fonts, int width) {
    TextChecker checker(fonts, width);
    for (const RibbonElement& tab : ribbon.tabs) checker.CheckTab(tab);
    return checker.Take();
}
