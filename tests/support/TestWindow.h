// A window for tests.
#pragma once

#include <windows.h>

class TestWindow {
public:
    explicit TestWindow(const wchar_t* className = L"STATIC")
        : window_(CreateWindowW(className, L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 100, 100, nullptr, nullptr,
                                nullptr, nullptr)) {}
    TestWindow(const TestWindow&) = delete;
    TestWindow& operator=(const TestWindow&) = delete;
    ~TestWindow() { DestroyWindow(window_); }

    HWND Get() const { return window_; }

    // As an automation object hands it out.
    LONG Number() const { return static_cast<LONG>(reinterpret_cast<LONG_PTR>(window_)); }

private:
    HWND window_;
};
