// Signs as lines and arcs on a grid that is scaled to the area.
#include "standins/office/window/Signs.h"

#include "standins/office/window/GdiPlus.h"
#include "standins/office/window/Window.h"

namespace {

// Draws on a grid of that width over the area; the unit is the grid's.
class Grid {
public:
    Grid(HDC dc, const RECT& area, float width, COLORREF colour)
        : graphics_(dc), colour_(255, GetRValue(colour), GetGValue(colour), GetBValue(colour)) {
        const float scale = static_cast<float>(Width(area)) / width;
        graphics_.SetSmoothingMode(Gdiplus::SmoothingModeAntiAlias);
        graphics_.TranslateTransform(static_cast<float>(area.left), static_cast<float>(area.top));
        graphics_.ScaleTransform(scale, scale);
    }

    void Draw(const Gdiplus::GraphicsPath& path, float thickness) {
        const Gdiplus::Pen pen(colour_, thickness);
        graphics_.DrawPath(&pen, &path);
    }
    void Fill(const Gdiplus::GraphicsPath& path) {
        const Gdiplus::SolidBrush brush(colour_);
        graphics_.FillPath(&brush, &path);
    }

private:
    const GdiPlus running_;  // before all that uses it
    Gdiplus::Graphics graphics_;
    Gdiplus::Color colour_;
};

}  // namespace

void DrawTick(HDC dc, const RECT& box, COLORREF colour) {
    Grid grid(dc, box, 13, colour);
    const Gdiplus::PointF corners[] = {{2.8F, 6.4F}, {5.3F, 9.2F}, {10.2F, 3.6F}};
    Gdiplus::GraphicsPath path;
    path.AddLines(corners, ARRAYSIZE(corners));
    grid.Draw(path, 1.7F);
}

void DrawPaperClip(HDC dc, const RECT& area, COLORREF colour) {
    Grid grid(dc, area, 8, colour);
    Gdiplus::GraphicsPath path;
    // From the outer end down, up on the left, down again inside, and up to the inner end.
    path.AddLine(6.9F, 4.0F, 6.9F, 10.2F);
    path.AddArc(1.1F, 7.3F, 5.8F, 5.8F, 0, 180);
    path.AddLine(1.1F, 10.2F, 1.1F, 3.0F);
    path.AddArc(1.1F, 1.0F, 4.0F, 4.0F, 180, 180);
    path.AddLine(5.1F, 3.0F, 5.1F, 9.4F);
    path.AddArc(3.1F, 8.4F, 2.0F, 2.0F, 0, 180);
    path.AddLine(3.1F, 9.4F, 3.1F, 4.6F);
    grid.Draw(path, 1.1F);
}

void DrawHalfCircle(HDC dc, const RECT& area, COLORREF colour) {
    Grid grid(dc, area, 14, colour);
    Gdiplus::GraphicsPath circle;
    circle.AddEllipse(1.0F, 1.0F, 12.0F, 12.0F);
    grid.Draw(circle, 1.2F);
    Gdiplus::GraphicsPath half;
    half.AddArc(1.0F, 1.0F, 12.0F, 12.0F, -90, 180);
    half.CloseFigure();
    grid.Fill(half);
}

void DrawCross(HDC dc, const RECT& area, COLORREF colour) {
    Grid grid(dc, area, 10, colour);
    for (const bool falls : {true, false}) {
        Gdiplus::GraphicsPath path;
        path.AddLine(0.5F, falls ? 0.5F : 9.5F, 9.5F, falls ? 9.5F : 0.5F);
        grid.Draw(path, 1.0F);
    }
}
