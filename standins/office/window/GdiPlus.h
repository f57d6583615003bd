// GDI+ for the files that draw or load pictures with it.
#pragma once

#include <windows.h>

#include <algorithm>

// GDI+'s headers use the macros that NOMINMAX takes away.
using std::max;
using std::min;
#include <gdiplus.h>
#include <objidl.h>

// GDI+ works from construction to destruction.
class GdiPlus {
public:
    GdiPlus() {
        const Gdiplus::GdiplusStartupInput input;
        Gdiplus::GdiplusStartup(&token_, &input, nullptr);
    }
    GdiPlus(const GdiPlus&) = delete;
    GdiPlus& operator=(const GdiPlus&) = delete;
    ~GdiPlus() { Gdiplus::GdiplusShutdown(token_); }

private:
    ULONG_PTR token_ = 0;
};
