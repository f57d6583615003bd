// Drawing of areas, lines and controls.
#include "standins/office/window/Look.h"

#include "standins/office/window/Signs.h"
#include "standins/office/window/Window.h"

void FillArea(HDC dc, const RECT& area, COLORREF colour) {
    SetDCBrushColor(dc, colour);
    FillRect(dc, &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void FrameArea(HDC dc, const RECT& area, COLORREF colour) {
    SetDCBrushColor(dc, colour);
    FrameRect(dc, &area, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void DrawLine(HDC dc, const TextLine& line, TextStyle style, COLORREF colour, const Fonts& fonts) {
    const Selected font(dc, fonts.Get(style));
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, colour);
    TextOutW(dc, line.at.x, line.at.y, line.text.c_str(), static_cast<int>(line.text.size()));
}

namespace {

// A triangle that points down and fills the area.
void DrawArrow(HDC dc, const RECT& area, COLORREF colour) {
    const int height = Height(area);
    for (int row = 0; row < height; ++row) {
        FillArea(dc, {area.left + row, area.top + row, area.right - row, area.top + row + 1}, colour);
    }
}

void DrawCheckBox(HDC dc, const RECT& box, bool ticked, const Look& look) {
    FillArea(dc, box, look.palette.box);
    FrameArea(dc, box, look.palette.dimText);
    if (ticked) DrawTick(dc, box, look.palette.text);
}

}  // namespace

void DrawControl(HDC dc, const PlacedControl& control, ControlState state, HICON picture, bool ticked,
                 const Look& look) {
    if (state != ControlState::Normal) {
        FillArea(dc, control.place, state == ControlState::Pressed ? look.palette.pressed : look.palette.hover);
    }
    if (control.element->kind == L"checkBox") DrawCheckBox(dc, control.picture, ticked, look);
    if (picture) {
        DrawIconEx(dc, control.picture.left, control.picture.top, picture, Width(control.picture),
                   Height(control.picture), 0, nullptr, DI_NORMAL);
    }
    for (const TextLine& line : control.lines) {
        DrawLine(dc, line, TextStyle::Plain, look.palette.text, look.fonts);
    }
    if (!IsRectEmpty(&control.arrow)) DrawArrow(dc, control.arrow, look.palette.text);
}
