// Menus and super tips.
#include "standins/office/window/Popups.h"

#include <windowsx.h>

#include <algorithm>

namespace {

// The popup's place on the monitor of that point, moved to the left where it would not fit.
RECT PlaceOf(POINT at, SIZE size) {
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromPoint(at, MONITOR_DEFAULTTONEAREST), &monitor);
    const LONG left = std::max(monitor.rcMonitor.left, std::min(at.x, monitor.rcMonitor.right - size.cx));
    return {left, at.y, left + size.cx, at.y + size.cy};
}

}  // namespace

void Popup::Open(const wchar_t* className, const std::wstring& title, const RECT& place, HWND owner) {
    Create(className, title.c_str(), WS_POPUP, WS_EX_TOOLWINDOW | WS_EX_TOPMOST | WS_EX_NOACTIVATE, place, owner);
    ShowWindow(Get(), SW_SHOWNOACTIVATE);
}

LRESULT Popup::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_MOUSEACTIVATE: return MA_NOACTIVATE;
        case WM_ERASEBKGND: return TRUE;
        default: return Window::Handle(message, wParam, lParam);
    }
}

MenuPopup::MenuPopup(HWND owner, const RibbonElement& menu, POINT at, const RibbonState& state, const Look& look)
    : owner_(owner), menu_(menu), state_(state), look_(look), layout_(LayOutMenu(menu, look.fonts)) {
    Open(L"ZavoStandInMenu", menu.label, PlaceOf(at, layout_.size), owner);
}

LRESULT MenuPopup::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_PAINT: Paint(); return 0;
        case WM_MOUSEMOVE: HoverOver(ItemAt(lParam)); return 0;
        case WM_MOUSELEAVE: HoverOver(-1); return 0;
        case WM_LBUTTONDOWN:
            HoverOver(ItemAt(lParam));
            isPressed_ = hovered_ >= 0;
            return 0;
        case WM_LBUTTONUP:
            if (isPressed_ && ItemAt(lParam) == hovered_) {
                PostMessageW(owner_, menuItemChosen, static_cast<WPARAM>(hovered_), 0);
            }
            isPressed_ = false;
            return 0;
        default: return Popup::Handle(message, wParam, lParam);
    }
}

void MenuPopup::Paint() const {
    const Painting painting(Get());
    FillArea(painting.Get(), painting.Area(), look_.palette.popup);
    FrameArea(painting.Get(), painting.Area(), look_.palette.line);
    for (size_t i = 0; i < layout_.items.size(); ++i) {
        const PlacedControl& item = layout_.items[i];
        const ControlState state = static_cast<int>(i) == hovered_ ? ControlState::Hovered : ControlState::Normal;
        DrawControl(painting.Get(), item, state, state_.Picture(*item.element), false, look_);
    }
}

void MenuPopup::HoverOver(int item) {
    if (item == hovered_) return;
    hovered_ = item;
    TRACKMOUSEEVENT track = {sizeof track, TME_LEAVE, Get(), 0};
    if (item >= 0) TrackMouseEvent(&track);
    Redraw();
}

int MenuPopup::ItemAt(LPARAM point) const {
    const POINT at = {GET_X_LPARAM(point), GET_Y_LPARAM(point)};
    for (size_t i = 0; i < layout_.items.size(); ++i) {
        if (PtInRect(&layout_.items[i].place, at)) return static_cast<int>(i);
    }
    return -1;
}

TipPopup::TipPopup(HWND owner, const RibbonElement& element, POINT at, const Look& look)
    : element_(element), look_(look), layout_(LayOutTip(element, look.fonts)) {
    Open(L"ZavoStandInTip", element.label, PlaceOf(at, layout_.size), owner);
}

LRESULT TipPopup::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_NCHITTEST: return HTTRANSPARENT;
        case WM_PAINT: Paint(); return 0;
        default: return Popup::Handle(message, wParam, lParam);
    }
}

void TipPopup::Paint() const {
    const Painting painting(Get());
    FillArea(painting.Get(), painting.Area(), look_.palette.popup);
    FrameArea(painting.Get(), painting.Area(), look_.palette.line);
    for (const TextLine& line : layout_.heading) {
        DrawLine(painting.Get(), line, TextStyle::Strong, look_.palette.text, look_.fonts);
    }
    for (const TextLine& line : layout_.lines) {
        DrawLine(painting.Get(), line, TextStyle::Plain, look_.palette.text, look_.fonts);
    }
}
