// The mouse.
#include "standins/office/window/Mouse.h"

#include <algorithm>
#include <stdexcept>

#include "standins/common/Text.h"

namespace {

constexpr DWORD patience = 5000;  // milliseconds

POINT MiddleOf(const RECT& area) { return {(area.left + area.right) / 2, (area.top + area.bottom) / 2}; }

void MoveCursor(HWND window, POINT at) {
    ClientToScreen(window, &at);
    SetCursorPos(at.x, at.y);
    HandlePendingMessages();
}

bool Contains(const RibbonElement& parent, const RibbonElement& element) {
    return std::any_of(parent.children.begin(), parent.children.end(),
                       [&](const RibbonElement& child) { return &child == &element; });
}

const RibbonElement* MenuIn(const std::vector<RibbonElement>& elements, const RibbonElement& item) {
    for (const RibbonElement& element : elements) {
        if (element.kind == L"menu" && Contains(element, item)) return &element;
        if (const RibbonElement* menu = MenuIn(element.children, item)) return menu;
    }
    return nullptr;
}

}  // namespace

HRESULT Mouse::Press(const RibbonElement& element) {
    if (const RibbonElement* menu = MenuIn(window_.GetRibbon().tabs, element)) Open(*menu);
    window_.TakeResult();
    const DrawnControl drawn = Find(element);
    Click(drawn.window, drawn.place);
    const std::optional<HRESULT> result = window_.TakeResult();
    if (!result) throw std::runtime_error("the press had no effect: " + Utf8(element.id));
    return *result;
}

void Mouse::Open(const RibbonElement& menu) {
    Leave();
    const DrawnControl drawn = Find(menu);
    Click(drawn.window, drawn.place);
    if (menu.children.empty() || !IsDrawn(menu.children.front())) {
        throw std::runtime_error("the menu did not open: " + Utf8(menu.id));
    }
}

void Mouse::HoverOver(const RibbonElement& element) {
    Leave();
    const DrawnControl drawn = Find(element);
    const POINT at = MiddleOf(drawn.place);
    MoveCursor(drawn.window, at);
    PostMessageW(drawn.window, WM_MOUSEMOVE, 0, MAKELPARAM(at.x, at.y));
    if (!HandleMessagesUntil([this] { return window_.GetRibbonView().IsTipShown(); }, patience)) {
        throw std::runtime_error("there is no tip: " + Utf8(element.id));
    }
}

void Mouse::Select(std::vector<size_t> places) {
    MailList* mails = window_.Mails();
    if (!mails) throw std::runtime_error("there are no mails to select");
    WPARAM keys = 0;  // the first click clears what was selected, the others add to it
    for (const size_t place : places) {
        Click(mails->List(), mails->ShowItem(place), keys);
        keys = MK_CONTROL;
    }
    std::sort(places.begin(), places.end());
    if (mails->Selected() != places) throw std::runtime_error("other mails are selected");
}

void Mouse::Leave() {
    window_.GetRibbonView().CloseMenu();
    RECT area = window_.ClientArea();
    MoveCursor(window_.Get(), {area.right / 2, area.bottom - 2});
    HandleMessagesUntil([this] { return !window_.GetRibbonView().IsTipShown(); }, patience);
}

bool Mouse::IsDrawn(const RibbonElement& element) const {
    const std::vector<DrawnControl> drawn = window_.GetRibbonView().Drawn();
    return std::any_of(drawn.begin(), drawn.end(), [&](const DrawnControl& one) { return one.element == &element; });
}

DrawnControl Mouse::Find(const RibbonElement& element) const {
    for (const DrawnControl& drawn : window_.GetRibbonView().Drawn()) {
        if (drawn.element == &element) return drawn;
    }
    throw std::runtime_error("it is not drawn: " + Utf8(element.id));
}

void Mouse::Click(HWND window, const RECT& place, WPARAM keys) {
    const POINT at = MiddleOf(place);
    const LPARAM point = MAKELPARAM(at.x, at.y);
    MoveCursor(window, at);
    PostMessageW(window, WM_MOUSEMOVE, keys, point);
    PostMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON | keys, point);
    PostMessageW(window, WM_LBUTTONUP, keys, point);
    HandlePendingMessages();
}
