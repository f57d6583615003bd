// The window's own signs, drawn with smooth edges.
#pragma once

#include <windows.h>

void DrawTick(HDC dc, const RECT& box, COLORREF colour);
void DrawPaperClip(HDC dc, const RECT& area, COLORREF colour);   // fits an area of 8 to 14
void DrawHalfCircle(HDC dc, const RECT& area, COLORREF colour);  // a circle whose right half is filled
void DrawCross(HDC dc, const RECT& area, COLORREF colour);
