// What opens over the window: menus and super tips.
#pragma once

#include <windows.h>

#include <string>

#include "standins/office/RibbonState.h"
#include "standins/office/window/Look.h"
#include "standins/office/window/Window.h"

// Posted to the owner of a menu when an item is chosen; WPARAM is the item's place in the menu, from 0.
inline constexpr UINT menuItemChosen = WM_APP + 1;

// A window above its owner that never becomes the active one.
class Popup : public Window {
protected:
    void Open(const wchar_t* className, const std::wstring& title, const RECT& place, HWND owner);
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
};

class MenuPopup final : public Popup {
public:
    // At that point of the screen. Everything given has to outlive the menu.
    MenuPopup(HWND owner, const RibbonElement& menu, POINT at, const RibbonState& state, const Look& look);

    const RibbonElement& Menu() const { return menu_; }
    const std::vector<PlacedControl>& Items() const { return layout_.items; }

private:
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
    void Paint() const;
    void HoverOver(int item);
    int ItemAt(LPARAM point) const;  // -1 for none

    const HWND owner_;
    const RibbonElement& menu_;
    const RibbonState& state_;
    const Look& look_;
    const PopupLayout layout_;
    int hovered_ = -1;
    bool isPressed_ = false;
};

class TipPopup final : public Popup {
public:
    TipPopup(HWND owner, const RibbonElement& element, POINT at, const Look& look);

    const RibbonElement& Element() const { return element_; }

private:
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
    void Paint() const;

    const RibbonElement& element_;
    const Look& look_;
    const PopupLayout layout_;
};
