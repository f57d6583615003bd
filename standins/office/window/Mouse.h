// A user's mouse on the window: messages to what is drawn, and nothing else.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "standins/office/window/HostWindow.h"

class Mouse {
public:
    explicit Mouse(HostWindow& window) : window_(window) {}

    // Presses a button or check box, after opening the menu that it is in. Answers the callback's result; throws
    // std::runtime_error when nothing of that kind is drawn or when the press had no effect.
    HRESULT Press(const RibbonElement& element);

    // Opens a menu.
    void Open(const RibbonElement& menu);

    // Rests on a control until its tip shows.
    void HoverOver(const RibbonElement& element);

    // Selects these mails of the list, and no others.
    void Select(std::vector<size_t> places);

    // Goes where nothing happens, and closes what is open.
    void Leave();

private:
    bool IsDrawn(const RibbonElement& element) const;
    DrawnControl Find(const RibbonElement& element) const;
    void Click(HWND window, const RECT& place, WPARAM keys = 0);

    HostWindow& window_;
};
