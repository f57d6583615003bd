// Pictures through GDI+.
#include "standins/office/window/Images.h"

#include <stdexcept>

#include "standins/common/Text.h"
#include "standins/office/window/GdiPlus.h"
#include "standins/office/window/Window.h"

namespace {

constexpr CLSID pngEncoder = {0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};

}  // namespace

Image LoadImageFile(const std::wstring& path) {
    const GdiPlus running;
    Gdiplus::Bitmap file(path.c_str());
    HBITMAP bitmap = nullptr;
    if (file.GetHBITMAP(Gdiplus::Color(255, 255, 255), &bitmap) != Gdiplus::Ok) {
        throw std::runtime_error("not a picture: " + Utf8(path));
    }
    return {GdiObject(bitmap), {static_cast<LONG>(file.GetWidth()), static_cast<LONG>(file.GetHeight())}};
}

void SaveImageFile(const Image& image, const std::wstring& path) {
    const GdiPlus running;
    Gdiplus::Bitmap file(static_cast<HBITMAP>(image.bitmap.Get()), nullptr);
    if (file.Save(path.c_str(), &pngEncoder, nullptr) != Gdiplus::Ok) {
        throw std::runtime_error("the picture cannot be written: " + Utf8(path));
    }
}

Image CaptureScreen(const RECT& area) {
    Image image = {MakeBitmap(Width(area), Height(area)), {Width(area), Height(area)}};
    const HDC screen = GetDC(nullptr);
    {
        const MemoryDc memory;
        const Selected bitmap(memory.Get(), image.bitmap.Get());
        BitBlt(memory.Get(), 0, 0, Width(area), Height(area), screen, area.left, area.top, SRCCOPY);
    }
    ReleaseDC(nullptr, screen);
    return image;
}
