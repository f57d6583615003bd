// Where the controls of a ribbon are drawn: Office's proportions, in pixels of the screen.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "standins/office/Ribbon.h"
#include "standins/office/window/Fonts.h"

struct TextLine {
    std::wstring text;
    POINT at;  // its upper left corner
};

struct PlacedControl {
    const RibbonElement* element;
    RECT place;
    RECT picture;  // empty where there is none; of a check box, the box
    std::vector<TextLine> lines;
    RECT arrow;  // of a menu, else empty
};

struct PlacedGroup {
    RECT place;
    TextLine label;
};

struct RibbonLayout {
    std::vector<PlacedGroup> groups;
    std::vector<PlacedControl> controls;
    int width = 0;
};

// Heights and the like at 96 dots per inch.
inline constexpr int ribbonHeight = 95;
inline constexpr int largePicture = 32;
inline constexpr int smallPicture = 16;

// The groups of a tab; `left` and `top` is the corner of the ribbon below the tabs.
RibbonLayout LayOutTab(const RibbonElement& tab, const Fonts& fonts, int left, int top);

struct PopupLayout {
    SIZE size;
    std::vector<PlacedControl> items;  // of a menu
    std::vector<TextLine> heading;     // of a tip
    std::vector<TextLine> lines;       // of a tip
};

PopupLayout LayOutMenu(const RibbonElement& menu, const Fonts& fonts);

// The super tip of a control; the label alone where it has no text of its own.
PopupLayout LayOutTip(const RibbonElement& element, const Fonts& fonts);

// A text of the ribbon, and how it fits the place that it is drawn in.
struct TextFinding {
    std::wstring id;
    std::wstring attribute;  // "label" or "supertip"
    std::wstring text;
    std::wstring problem;  // empty: it fits and the font has all of its characters
};

// Every text of a ribbon, in the ribbon's order. `width` is what the window has for a tab's groups.
std::vector<TextFinding> CheckTexts(const Ribbon& ribbon, const Fonts& fonts, int width);
