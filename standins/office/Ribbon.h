// The ribbon that an add-in's markup describes.
#pragma once

#include <string>
#include <vector>

struct RibbonElement {
    std::wstring kind;  // the element's name: tab, group, menu, button, checkBox
    std::wstring id;
    std::wstring label;
    std::wstring superTip;
    bool hasSuperTip = false;  // whether it has one, even an empty one
    std::wstring size;
    std::wstring onAction;
    std::wstring getImage;
    std::wstring getPressed;
    std::vector<RibbonElement> children;
};

struct Ribbon {
    std::wstring onLoad;
    std::vector<RibbonElement> tabs;
};

// Reads the markup. Throws std::runtime_error with the reason when it is not well-formed XML of the custom UI schema of
// 2006, or holds an element or attribute that this reader does not know.
Ribbon ParseRibbon(const std::wstring& markup);

// The element with that id, or null.
const RibbonElement* FindElement(const Ribbon& ribbon, const std::wstring& id);
