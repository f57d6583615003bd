// What everything in the window is drawn with.
#pragma once

#include "standins/office/Hosts.h"
#include "standins/office/window/Fonts.h"
#include "standins/office/window/Palette.h"
#include "standins/office/window/RibbonLayout.h"

struct Look {
    const OfficeHost& host;
    Fonts fonts;
    Palette palette;
};

void FillArea(HDC dc, const RECT& area, COLORREF colour);
void FrameArea(HDC dc, const RECT& area, COLORREF colour);
void DrawLine(HDC dc, const TextLine& line, TextStyle style, COLORREF colour, const Fonts& fonts);

enum class ControlState { Normal, Hovered, Pressed };

// A control with its picture, tick or arrow. `picture` may be null.
void DrawControl(HDC dc, const PlacedControl& control, ControlState state, HICON picture, bool ticked,
                 const Look& look);
