// The host's window and its title row.
#include "standins/office/window/HostWindow.h"

#include <windowsx.h>

#include <utility>

#include "standins/office/window/Signs.h"

namespace {

// At 96 dots per inch.
constexpr int windowWidth = 1000;
constexpr int windowHeight = 640;
constexpr int titleHeight = 32;
constexpr int captionButtonWidth = 46;
constexpr int captionSign = 10;

constexpr UINT invalidated = WM_APP;

// The buttons at the right end of the title row, from there to the left.
constexpr UINT_PTR captionCommands[] = {SC_CLOSE, SC_MAXIMIZE, SC_MINIMIZE};

// The sign on a button of the title row: a cross, a square, or a line.
void DrawCaptionSign(HDC dc, UINT_PTR command, const RECT& area, COLORREF colour) {
    if (command == SC_MAXIMIZE) return FrameArea(dc, area, colour);
    const int middle = (area.top + area.bottom) / 2;
    if (command == SC_MINIMIZE) return FillArea(dc, {area.left, middle, area.right, middle + 1}, colour);
    DrawCross(dc, area, colour);
}

// Wine grabs the mouse for a window without a frame that fills the screen, and lets go of it only after a grab for
// another area than the whole screen. Without that a window that was maximised once gets no clicks after it was moved.
void ReleaseMouse() {
    const int left = GetSystemMetrics(SM_XVIRTUALSCREEN);
    const int top = GetSystemMetrics(SM_YVIRTUALSCREEN);
    const RECT almostAll = {left, top, left + GetSystemMetrics(SM_CXVIRTUALSCREEN) - 1,
                            top + GetSystemMetrics(SM_CYVIRTUALSCREEN)};
    ClipCursor(&almostAll);
    ClipCursor(nullptr);
}

}  // namespace

HostWindow::HostWindow(const OfficeHost& host, const std::wstring& title)
    : look_{host, Fonts(GetDpiForSystem()), CurrentPalette(host)},
      title_(title.empty() ? host.name : title + L" - " + host.name) {
    const RECT place = {0, 0, look_.fonts.Scaled(windowWidth), look_.fonts.Scaled(windowHeight)};
    Create(host.windowClass, title_.c_str(), WS_POPUP | WS_SYSMENU | WS_MINIMIZEBOX | WS_MAXIMIZEBOX | WS_CLIPCHILDREN,
           WS_EX_APPWINDOW, place, nullptr);
    ribbon_ = std::make_unique<RibbonView>(Get(), RECT{}, look_, [this](const RibbonElement& used) { Use(used); });
    Place();
    ShowWindow(Get(), SW_SHOW);
    SetForegroundWindow(Get());
}

void HostWindow::ShowDocument(const std::wstring& path) {
    page_ = std::make_unique<PageView>(Get(), look_);
    page_->Show(path);
    Place();
}

void HostWindow::ShowMails(const OutlookFolder& folder) {
    page_ = std::make_unique<PageView>(Get(), look_);
    mails_ = std::make_unique<MailList>(Get(), folder, look_, [this, &folder](size_t place) {
        page_->Show(folder.items[place].page, L"HTML (StarWriter)");
    });
    Place();
}

void HostWindow::ShowRibbon(RibbonState* state) {
    state_ = state;
    ribbon_->Show(state);
}

void HostWindow::Invalidate() const { PostMessageW(Get(), invalidated, 0, 0); }

std::optional<HRESULT> HostWindow::TakeResult() { return std::exchange(result_, std::nullopt); }

LRESULT HostWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_ERASEBKGND: return TRUE;
        case WM_PAINT: Paint(); return 0;
        case WM_SIZE:
            if (wParam == SIZE_RESTORED) ReleaseMouse();
            Place();
            return 0;
        case WM_CLOSE: PostQuitMessage(0); return 0;
        case WM_NCHITTEST: {
            POINT at = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
            ScreenToClient(Get(), &at);
            const bool isTitle = at.y < look_.fonts.Scaled(titleHeight);
            return isTitle && CaptionButtonAt(at) == noButton ? HTCAPTION : HTCLIENT;
        }
        case WM_LBUTTONDOWN:
            ribbon_->CloseMenu();
            pressedButton_ = CaptionButtonAt({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)});
            if (pressedButton_ != noButton) SetCapture(Get());
            return 0;
        case WM_LBUTTONUP: ReleaseCaptionButton({GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}); return 0;
        case WM_CAPTURECHANGED: pressedButton_ = noButton; return 0;
        case WM_NCLBUTTONDOWN: ribbon_->CloseMenu(); return Window::Handle(message, wParam, lParam);
        case WM_PARENTNOTIFY:  // a click on what is below the ribbon closes an open menu, too
            if (LOWORD(wParam) == WM_LBUTTONDOWN &&
                GET_Y_LPARAM(lParam) > ribbon_->ClientArea().bottom + look_.fonts.Scaled(titleHeight)) {
                ribbon_->CloseMenu();
            }
            return 0;
        case WM_ACTIVATE:
            if (LOWORD(wParam) == WA_INACTIVE && ribbon_) ribbon_->CloseMenu();
            return 0;
        case WM_KEYDOWN:
            if (wParam == VK_ESCAPE) ribbon_->CloseMenu();
            return 0;
        case invalidated: Refresh(); return 0;
        default: return Window::Handle(message, wParam, lParam);
    }
}

void HostWindow::Paint() const {
    const Painting painting(Get());
    const HDC dc = painting.Get();
    const Fonts& fonts = look_.fonts;
    const int height = fonts.Scaled(titleHeight);
    RECT area = painting.Area();
    FillArea(dc, area, look_.palette.workspace);
    FillArea(dc, {0, 0, area.right, height}, look_.palette.title);
    const int left = (area.right - fonts.WidthOf(title_, TextStyle::Plain)) / 2;
    const int top = (height - fonts.LineHeight(TextStyle::Plain)) / 2;
    DrawLine(dc, {title_, {left, top}}, TextStyle::Plain, look_.palette.titleText, fonts);
    const int sign = fonts.Scaled(captionSign);
    for (int button = 0; button < static_cast<int>(ARRAYSIZE(captionCommands)); ++button) {
        DrawCaptionSign(dc, captionCommands[button], SquareIn(CaptionButton(button), sign), look_.palette.titleText);
    }
}

void HostWindow::Place() {
    if (!ribbon_) return;
    const Fonts& fonts = look_.fonts;
    const RECT area = ClientArea();
    const int ribbonTop = fonts.Scaled(titleHeight);
    const int height = RibbonView::HeightOf(fonts);
    MoveWindow(ribbon_->Get(), 0, ribbonTop, area.right, height, TRUE);
    const int top = ribbonTop + height;
    const int left = mails_ ? MailList::WidthOf(fonts) : 0;
    if (mails_) MoveWindow(mails_->Get(), 0, top, left, area.bottom - top, TRUE);
    if (page_) MoveWindow(page_->Get(), left, top, area.right - left, area.bottom - top, TRUE);
    Redraw();
}

void HostWindow::Refresh() {
    look_.palette = CurrentPalette(look_.host);
    if (state_) state_->Reload();
    Redraw();
    ribbon_->Refresh();
    if (mails_) mails_->Refresh();
    if (page_) page_->Redraw();
    ++refreshes_;
}

void HostWindow::Use(const RibbonElement& element) {
    const HCURSOR before = SetCursor(LoadCursorW(nullptr, IDC_WAIT));  // mails take a second each
    result_ = state_->Use(element);
    SetCursor(before);
    ribbon_->Refresh();
}

void HostWindow::ReleaseCaptionButton(POINT at) {
    const int button = std::exchange(pressedButton_, noButton);
    if (button == noButton) return;
    ReleaseCapture();
    if (CaptionButtonAt(at) != button) return;
    const UINT_PTR command =
        captionCommands[button] == SC_MAXIMIZE && IsZoomed(Get()) ? SC_RESTORE : captionCommands[button];
    PostMessageW(Get(), WM_SYSCOMMAND, command, 0);
}

int HostWindow::CaptionButtonAt(POINT at) const {
    for (int button = 0; button < static_cast<int>(ARRAYSIZE(captionCommands)); ++button) {
        const RECT place = CaptionButton(button);
        if (PtInRect(&place, at)) return button;
    }
    return noButton;
}

RECT HostWindow::CaptionButton(int button) const {
    const int width = look_.fonts.Scaled(captionButtonWidth);
    const int right = ClientArea().right - button * width;
    return {right - width, 0, right, look_.fonts.Scaled(titleHeight)};
}
