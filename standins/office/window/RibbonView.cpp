// Drawing the ribbon, and the mouse on it.
#include "standins/office/window/RibbonView.h"

#include <windowsx.h>

#include <algorithm>
#include <utility>

#include "standins/office/window/Signs.h"

namespace {

// At 96 dots per inch.
constexpr int tabsHeight = 30;
constexpr int tabLeft = 12;
constexpr int tabMargin = 14;
constexpr int groupsLeft = 4;
constexpr int separatorMargin = 6;
constexpr int themesWidth = 34;
constexpr int themesSign = 14;

constexpr UINT_PTR tipTimer = 1;
constexpr UINT tipDelay = 500;  // milliseconds

// The menu of themes stands for the page where Office offers them. Its items are numbered as the registry does.
RibbonElement MakeThemesMenu() {
    RibbonElement menu;
    menu.kind = L"menu";
    menu.id = L"OfficeThemes";
    menu.label = L"Office Theme";
    for (const OfficeTheme& theme : officeThemes) {
        RibbonElement item;
        item.kind = L"button";
        item.id = L"OfficeTheme" + std::to_wstring(theme.number);
        item.label = theme.name;
        menu.children.push_back(item);
    }
    return menu;
}

}  // namespace

RibbonView::RibbonView(HWND parent, const RECT& place, const Look& look,
                       std::function<void(const RibbonElement&)> onUse)
    : look_(look), onUse_(std::move(onUse)), themes_(MakeThemesMenu()) {
    Create(L"ZavoStandInRibbon", L"Ribbon", WS_CHILD | WS_VISIBLE, 0, place, parent);
}

int RibbonView::HeightOf(const Fonts& fonts) { return fonts.Scaled(tabsHeight) + fonts.Scaled(ribbonHeight); }

void RibbonView::Show(const RibbonState* state) {
    CloseMenu();
    HideTip();
    hovered_ = pressed_ = nullptr;
    state_ = state;
    LayOut();
}

void RibbonView::Refresh() {
    Redraw();
    if (menu_) menu_->Redraw();
    if (tip_) tip_->Redraw();
}

void RibbonView::LayOut() {
    const Fonts& fonts = look_.fonts;
    layout_ = {};
    tab_ = {};
    if (state_ && !state_->GetRibbon().tabs.empty()) {
        const RibbonElement& tab = state_->GetRibbon().tabs.front();
        layout_ = LayOutTab(tab, fonts, fonts.Scaled(groupsLeft), fonts.Scaled(tabsHeight));
        const int labelWidth = fonts.WidthOf(tab.label, TextStyle::Plain);
        const int left = fonts.Scaled(tabLeft);
        tab_ = {left, fonts.Scaled(2), left + labelWidth + 2 * fonts.Scaled(tabMargin), fonts.Scaled(tabsHeight)};
        tabLabel_ = {
            tab.label,
            {left + fonts.Scaled(tabMargin), tab_.top + (Height(tab_) - fonts.LineHeight(TextStyle::Plain)) / 2}};
    }
    // The window's own menu, at the right end of the row of tabs.
    const int right = ClientArea().right;
    PlacedControl themes = {};
    themes.element = &themes_;
    themes.place = {right - fonts.Scaled(themesWidth), 0, right, fonts.Scaled(tabsHeight)};
    themes.picture = SquareIn(themes.place, fonts.Scaled(themesSign));
    layout_.controls.push_back(themes);
    Redraw();
}

std::vector<DrawnControl> RibbonView::Drawn() const {
    std::vector<DrawnControl> drawn;
    for (const PlacedControl& control : layout_.controls) {
        drawn.push_back({Get(), control.element, control.place, control.picture});
    }
    if (menu_) {
        for (const PlacedControl& item : menu_->Items()) {
            drawn.push_back({menu_->Get(), item.element, item.place, item.picture});
        }
    }
    return drawn;
}

LRESULT RibbonView::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_ERASEBKGND: return TRUE;
        case WM_PAINT: Paint(); return 0;
        case WM_SIZE: LayOut(); return 0;
        case WM_MOUSEMOVE: HoverOver(ControlAt(lParam)); return 0;
        case WM_MOUSELEAVE: HoverOver(nullptr); return 0;
        case WM_LBUTTONDOWN: Press(ControlAt(lParam)); return 0;
        case WM_LBUTTONUP: Release(ControlAt(lParam)); return 0;
        case WM_CAPTURECHANGED:
            pressed_ = nullptr;
            Redraw();
            return 0;
        case WM_TIMER: ShowTip(); return 0;
        case menuItemChosen:
            if (menu_) {
                const RibbonElement& item = menu_->Menu().children.at(wParam);
                const bool isTheme = &menu_->Menu() == &themes_;
                CloseMenu();
                UpdateWindow(Get());
                if (isTheme) {
                    StoreOfficeTheme(officeThemes[wParam].number);  // the add-in notices and has the ribbon drawn
                } else {
                    onUse_(item);
                }
            }
            return 0;
        default: return Window::Handle(message, wParam, lParam);
    }
}

void RibbonView::Paint() const {
    const Painting painting(Get());
    const HDC dc = painting.Get();
    const Fonts& fonts = look_.fonts;
    const Palette& palette = look_.palette;
    RECT area = painting.Area();
    FillArea(dc, area, palette.ribbon);
    PaintTabs(dc);
    FillArea(dc, {0, area.bottom - 1, area.right, area.bottom}, palette.line);
    for (const PlacedGroup& group : layout_.groups) {
        const int margin = fonts.Scaled(separatorMargin);
        FillArea(dc, {group.place.right - 1, group.place.top + margin, group.place.right, group.place.bottom - margin},
                 palette.line);
        DrawLine(dc, group.label, TextStyle::Small, palette.dimText, fonts);
    }
    for (const PlacedControl& control : layout_.controls) {
        if (control.element == &themes_) {
            DrawHalfCircle(dc, control.picture, palette.titleText);
        } else {
            DrawControl(dc, control, StateOf(*control.element), state_->Picture(*control.element),
                        state_->IsTicked(*control.element), look_);
        }
    }
}

void RibbonView::PaintTabs(HDC dc) const {
    const Fonts& fonts = look_.fonts;
    FillArea(dc, {0, 0, ClientArea().right, fonts.Scaled(tabsHeight)}, look_.palette.title);
    if (IsRectEmpty(&tab_)) return;
    FillArea(dc, tab_, look_.palette.ribbon);
    DrawLine(dc, tabLabel_, TextStyle::Plain, look_.palette.tabText, fonts);
}

ControlState RibbonView::StateOf(const RibbonElement& element) const {
    if (menu_ && &menu_->Menu() == &element) return ControlState::Pressed;
    if (pressed_ == &element) return hovered_ == &element ? ControlState::Pressed : ControlState::Hovered;
    return hovered_ == &element && !pressed_ ? ControlState::Hovered : ControlState::Normal;
}

const PlacedControl* RibbonView::ControlAt(LPARAM point) const {
    const POINT at = {GET_X_LPARAM(point), GET_Y_LPARAM(point)};
    for (const PlacedControl& control : layout_.controls) {
        if (PtInRect(&control.place, at)) return &control;
    }
    return nullptr;
}

void RibbonView::HoverOver(const PlacedControl* control) {
    const RibbonElement* element = control ? control->element : nullptr;
    if (element == hovered_) return;
    hovered_ = element;
    HideTip();
    if (element) {
        TRACKMOUSEEVENT track = {sizeof track, TME_LEAVE, Get(), 0};
        TrackMouseEvent(&track);
        if (!menu_) SetTimer(Get(), tipTimer, tipDelay, nullptr);
    }
    Redraw();
}

void RibbonView::Press(const PlacedControl* control) {
    HoverOver(control);
    HideTip();
    const RibbonElement* open = menu_ ? &menu_->Menu() : nullptr;
    CloseMenu();
    if (!control) return;
    if (control->element->kind == L"menu") {
        if (control->element != open) OpenMenu(*control);
        return;
    }
    pressed_ = control->element;
    SetCapture(Get());
    Redraw();
}

void RibbonView::Release(const PlacedControl* control) {
    const RibbonElement* pressed = std::exchange(pressed_, nullptr);
    if (!pressed) return;
    ReleaseCapture();
    Redraw();
    UpdateWindow(Get());
    if (control && control->element == pressed) onUse_(*pressed);
}

void RibbonView::OpenMenu(const PlacedControl& control) {
    if (!state_) return;
    POINT at = {control.place.left, control.place.bottom};
    ClientToScreen(Get(), &at);
    menu_ = std::make_unique<MenuPopup>(Get(), *control.element, at, *state_, look_);
    Redraw();
}

void RibbonView::CloseMenu() {
    if (!menu_) return;
    menu_.reset();
    Redraw();
}

void RibbonView::ShowTip() {
    HideTip();
    const auto control = std::find_if(layout_.controls.begin(), layout_.controls.end(),
                                      [this](const PlacedControl& one) { return one.element == hovered_; });
    if (control == layout_.controls.end() || menu_ || pressed_) return;
    // Below the ribbon, where Office shows it, or below the row of tabs.
    const int below = control->element == &themes_ ? control->place.bottom : ClientArea().bottom + 2;
    POINT at = {control->place.left, below};
    ClientToScreen(Get(), &at);
    tip_ = std::make_unique<TipPopup>(Get(), *control->element, at, look_);
}

void RibbonView::HideTip() {
    KillTimer(Get(), tipTimer);
    tip_.reset();
}
