// Owner types for GDI, and drawing without flicker.
#pragma once

#include <windows.h>

#include <utility>

// An owned font, bitmap, brush or pen.
class GdiObject {
public:
    GdiObject() = default;
    explicit GdiObject(HGDIOBJ object) : object_(object) {}
    GdiObject(GdiObject&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    GdiObject& operator=(GdiObject&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~GdiObject() {
        if (object_) DeleteObject(object_);
    }

    HGDIOBJ Get() const { return object_; }

private:
    HGDIOBJ object_ = nullptr;
};

// An owned device context in memory, of the screen's kind.
class MemoryDc {
public:
    MemoryDc() : dc_(CreateCompatibleDC(nullptr)) {}
    MemoryDc(const MemoryDc&) = delete;
    MemoryDc& operator=(const MemoryDc&) = delete;
    ~MemoryDc() { DeleteDC(dc_); }

    HDC Get() const { return dc_; }

private:
    HDC dc_;
};

// An object that a device context has for the length of a scope.
class Selected {
public:
    Selected(HDC dc, HGDIOBJ object) : dc_(dc), before_(SelectObject(dc, object)) {}
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;
    ~Selected() { SelectObject(dc_, before_); }

private:
    HDC dc_;
    HGDIOBJ before_;
};

// A 32-bit bitmap of that size, readable and writable by GDI.
inline GdiObject MakeBitmap(int width, int height) {
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof info.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* bits = nullptr;
    return GdiObject(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
}

// The answer to WM_PAINT: what is drawn goes to a bitmap first and to the window at the end of the scope.
class Painting {
public:
    explicit Painting(HWND window) : window_(window) {
        BeginPaint(window, &paint_);
        GetClientRect(window, &area_);
        bitmap_ = MakeBitmap(area_.right, area_.bottom);
        before_ = SelectObject(memory_.Get(), bitmap_.Get());
    }
    Painting(const Painting&) = delete;
    Painting& operator=(const Painting&) = delete;
    ~Painting() {
        BitBlt(paint_.hdc, 0, 0, area_.right, area_.bottom, memory_.Get(), 0, 0, SRCCOPY);
        SelectObject(memory_.Get(), before_);
        EndPaint(window_, &paint_);
    }

    HDC Get() const { return memory_.Get(); }
    const RECT& Area() const { return area_; }

private:
    HWND window_;
    PAINTSTRUCT paint_ = {};
    RECT area_ = {};
    GdiObject bitmap_;
    MemoryDc memory_;
    HGDIOBJ before_ = nullptr;
};
