// The drawn ribbon: the row of tabs and the groups of the open tab.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <optional>

#include "standins/office/RibbonState.h"
#include "standins/office/window/Look.h"
#include "standins/office/window/Popups.h"
#include "standins/office/window/Window.h"

// A control where it is drawn at the moment.
struct DrawnControl {
    HWND window;  // the ribbon, or an open menu
    const RibbonElement* element;
    RECT place;    // in the window's coordinates
    RECT picture;  // empty where there is none
};

class RibbonView final : public Window {
public:
    // `onUse` is called when a control was pressed.
    RibbonView(HWND parent, const RECT& place, const Look& look, std::function<void(const RibbonElement&)> onUse);

    // The height of tabs and groups.
    static int HeightOf(const Fonts& fonts);

    // The ribbon to draw; null for none. It has to outlive the view, or be taken back.
    void Show(const RibbonState* state);
    void Refresh();  // draws everything again, what is open, too

    // What is drawn now, menu included.
    std::vector<DrawnControl> Drawn() const;

    void CloseMenu();
    bool IsTipShown() const { return tip_ != nullptr; }

private:
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
    void LayOut();
    void Paint() const;
    void PaintTabs(HDC dc) const;
    ControlState StateOf(const RibbonElement& element) const;
    const PlacedControl* ControlAt(LPARAM point) const;
    void HoverOver(const PlacedControl* control);
    void Press(const PlacedControl* control);
    void Release(const PlacedControl* control);
    void OpenMenu(const PlacedControl& control);
    void ShowTip();
    void HideTip();

    const Look& look_;
    const std::function<void(const RibbonElement&)> onUse_;
    RibbonElement themes_;  // the window's own menu
    const RibbonState* state_ = nullptr;
    RibbonLayout layout_;
    RECT tab_ = {};
    TextLine tabLabel_;
    const RibbonElement* hovered_ = nullptr;
    const RibbonElement* pressed_ = nullptr;
    std::unique_ptr<MenuPopup> menu_;
    std::unique_ptr<TipPopup> tip_;
};
