// Message boxes of the calling thread, closed as they appear. Unlike a DialogRobot it needs no thread and allocates
// nothing, so it can be used where allocations are counted.
#pragma once

#include <windows.h>

class MessageBoxes {
public:
    MessageBoxes() : hook_(SetWindowsHookExW(WH_CBT, Close, nullptr, GetCurrentThreadId())) { Shown() = 0; }
    MessageBoxes(const MessageBoxes&) = delete;
    MessageBoxes& operator=(const MessageBoxes&) = delete;
    ~MessageBoxes() { UnhookWindowsHookEx(hook_); }

    // Run while one is shown.
    static inline void (*onShown)() = nullptr;

    // How many there were since it was asked last.
    long Count() const {
        const long count = Shown();
        Shown() = 0;
        return count;
    }

private:
    static long& Shown() {
        static long shown = 0;
        return shown;
    }
    static LRESULT CALLBACK Close(int code, WPARAM window, LPARAM details) {
        wchar_t name[16] = {};
        if (code == HCBT_ACTIVATE && GetClassNameW(reinterpret_cast<HWND>(window), name, ARRAYSIZE(name)) &&
            lstrcmpW(name, L"#32770") == 0) {
            ++Shown();
            if (onShown) onShown();
            PostMessageW(reinterpret_cast<HWND>(window), WM_COMMAND, IDOK, 0);
        }
        return CallNextHookEx(nullptr, code, window, details);
    }

    const HHOOK hook_;
};
