// A window of a given class in the foreground, as a host's is.
#pragma once

#include <windows.h>

class ForegroundWindow {
public:
    explicit ForegroundWindow(const wchar_t* className) {
        WNDCLASSW windowClass = {};
        windowClass.lpfnWndProc = DefWindowProcW;
        windowClass.lpszClassName = className;
        RegisterClassW(&windowClass);
        window_ = CreateWindowW(className, L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 100, 100, nullptr, nullptr,
                                nullptr, nullptr);
        SetForegroundWindow(window_);
    }
    ForegroundWindow(const ForegroundWindow&) = delete;
    ForegroundWindow& operator=(const ForegroundWindow&) = delete;
    ~ForegroundWindow() { Close(); }

    HWND Get() const { return window_; }
    void Close() {
        if (window_) DestroyWindow(window_);
        window_ = nullptr;
    }

private:
    HWND window_;
};
