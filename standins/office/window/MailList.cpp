// Mails in a list box of the system, drawn here.
#include "standins/office/window/MailList.h"

#include <utility>

#include "standins/office/window/Signs.h"

namespace {

constexpr int listId = 1;

// At 96 dots per inch.
constexpr int listWidth = 330;
constexpr int rowHeight = 46;
constexpr int textLeft = 14;
constexpr int textRight = 12;
constexpr int firstLine = 5;
constexpr int secondLine = 25;
constexpr int clipWidth = 8;
constexpr int clipHeight = 14;
constexpr int gap = 8;

// Date and time as Windows writes them in the user's country; empty for none.
std::wstring TimeText(const std::optional<DATE>& time) {
    SYSTEMTIME system = {};
    if (!time || !VariantTimeToSystemTime(*time, &system)) return {};
    wchar_t date[64] = {};
    wchar_t clock[64] = {};
    GetDateFormatEx(LOCALE_NAME_USER_DEFAULT, DATE_SHORTDATE, &system, nullptr, date, ARRAYSIZE(date), nullptr);
    GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, TIME_NOSECONDS, &system, nullptr, clock, ARRAYSIZE(clock));
    return std::wstring(date) + L" " + clock;
}

// One line, cut with three dots where it is too long.
void DrawCut(HDC dc, const std::wstring& text, RECT area, TextStyle style, COLORREF colour, UINT alignment,
             const Fonts& fonts) {
    const Selected font(dc, fonts.Get(style));
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, colour);
    DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &area,
              alignment | DT_TOP | DT_SINGLELINE | DT_NOPREFIX | DT_END_ELLIPSIS);
}

}  // namespace

MailList::MailList(HWND parent, const OutlookFolder& folder, const Look& look, std::function<void(size_t)> onFocus)
    : folder_(folder), look_(look), onFocus_(std::move(onFocus)) {
    Create(L"ZavoStandInMails", L"Mails", WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 0, {}, parent);
    list_ = CreateWindowExW(
        0, L"LISTBOX", L"",
        WS_CHILD | WS_VISIBLE | WS_VSCROLL | LBS_EXTENDEDSEL | LBS_OWNERDRAWFIXED | LBS_NOINTEGRALHEIGHT | LBS_NOTIFY,
        0, 0, 0, 0, Get(), reinterpret_cast<HMENU>(static_cast<LONG_PTR>(listId)), nullptr, nullptr);
    SendMessageW(list_, LB_SETITEMHEIGHT, 0, look.fonts.Scaled(rowHeight));
    for (size_t place = 0; place < folder.items.size(); ++place) {
        SendMessageW(list_, LB_ADDSTRING, 0, static_cast<LPARAM>(place));
    }
    Refresh();
}

int MailList::WidthOf(const Fonts& fonts) { return fonts.Scaled(listWidth); }

std::vector<size_t> MailList::Selected() const {
    std::vector<int> places(static_cast<size_t>(SendMessageW(list_, LB_GETSELCOUNT, 0, 0)));
    SendMessageW(list_, LB_GETSELITEMS, places.size(), reinterpret_cast<LPARAM>(places.data()));
    return {places.begin(), places.end()};
}

RECT MailList::ShowItem(size_t place) {
    RECT item = {};
    SendMessageW(list_, LB_GETITEMRECT, place, reinterpret_cast<LPARAM>(&item));
    if (item.top < 0 || item.bottom > ClientArea().bottom) {
        SendMessageW(list_, LB_SETTOPINDEX, place, 0);
        SendMessageW(list_, LB_GETITEMRECT, place, reinterpret_cast<LPARAM>(&item));
    }
    return item;
}

void MailList::Refresh() {
    background_ = GdiObject(CreateSolidBrush(look_.palette.list));
    RedrawWindow(Get(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

LRESULT MailList::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_SIZE:
            MoveWindow(list_, 0, 0, LOWORD(lParam) - 1, HIWORD(lParam), TRUE);  // a line to the right stays free
            return 0;
        case WM_ERASEBKGND: FillArea(reinterpret_cast<HDC>(wParam), ClientArea(), look_.palette.line); return TRUE;
        case WM_CTLCOLORLISTBOX: return reinterpret_cast<LRESULT>(background_.Get());
        case WM_DRAWITEM: DrawItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam)); return TRUE;
        case WM_COMMAND:
            if (HIWORD(wParam) == LBN_SELCHANGE) {
                onFocus_(static_cast<size_t>(SendMessageW(list_, LB_GETCARETINDEX, 0, 0)));
            }
            return 0;
        default: return Window::Handle(message, wParam, lParam);
    }
}

void MailList::DrawItem(const DRAWITEMSTRUCT& draw) const {
    if (draw.itemID >= folder_.items.size()) return;
    const OutlookItem& item = folder_.items[draw.itemID];
    const Fonts& fonts = look_.fonts;
    const Palette& palette = look_.palette;
    const RECT& area = draw.rcItem;
    const bool isSelected = (draw.itemState & ODS_SELECTED) != 0;
    FillArea(draw.hDC, area, isSelected ? palette.selected : palette.list);
    FillArea(draw.hDC, {area.left, area.bottom - 1, area.right, area.bottom}, palette.line);
    if (isSelected)
        FillArea(draw.hDC, {area.left, area.top, area.left + fonts.Scaled(3), area.bottom - 1}, palette.accent);

    const int left = area.left + fonts.Scaled(textLeft);
    int right = area.right - fonts.Scaled(textRight);
    const std::wstring time = TimeText(item.received);
    const int subjectTop = area.top + fonts.Scaled(secondLine);
    const int timeLeft = right - fonts.WidthOf(time, TextStyle::Small);
    DrawCut(draw.hDC, time, {timeLeft, subjectTop, right, area.bottom}, TextStyle::Small, palette.dimText, DT_RIGHT,
            fonts);
    DrawCut(draw.hDC, item.subject.value_or(L""), {left, subjectTop, timeLeft - fonts.Scaled(gap), area.bottom},
            TextStyle::Plain, palette.text, DT_LEFT, fonts);
    if (!item.attachments.empty()) {
        const int top = area.top + fonts.Scaled(firstLine) + fonts.Scaled(3);
        const int clipLeft = right - fonts.Scaled(clipWidth);
        DrawPaperClip(draw.hDC, {clipLeft, top, right, top + fonts.Scaled(clipHeight)}, palette.dimText);
        right = clipLeft - fonts.Scaled(gap);
    }
    DrawCut(draw.hDC, item.sender.value_or(L""), {left, area.top + fonts.Scaled(firstLine), right, area.bottom},
            TextStyle::Large, palette.text, DT_LEFT, fonts);
}
