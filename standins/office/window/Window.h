// A window whose messages go to an object.
#pragma once

#include <windows.h>

#include <functional>

// Derived classes create the window in their constructor and answer its messages. What a message's handling throws is
// kept, and thrown again by the function that runs the message loop.
class Window {
public:
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;
    virtual ~Window();  // destroys the window, if that did not happen already

    HWND Get() const { return window_; }
    RECT ClientArea() const;
    RECT ScreenArea() const;
    void Redraw() const { InvalidateRect(window_, nullptr, FALSE); }

protected:
    Window() = default;
    void Create(const wchar_t* className, const wchar_t* title, DWORD style, DWORD extendedStyle, const RECT& place,
                HWND parent);

    // The answer to a message; this one is the system's own.
    virtual LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);

private:
    static LRESULT CALLBACK Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    HWND window_ = nullptr;
};

// Handles this thread's messages until there are none.
void HandlePendingMessages();

// Handles messages until the condition holds; false when it still does not after that many milliseconds.
bool HandleMessagesUntil(const std::function<bool()>& condition, DWORD milliseconds);

// Handles messages until somebody posts WM_QUIT.
void HandleMessagesUntilQuit();

inline int Width(const RECT& area) { return area.right - area.left; }
inline int Height(const RECT& area) { return area.bottom - area.top; }

// The square of that size in the middle of an area.
inline RECT SquareIn(const RECT& area, int size) {
    const int left = area.left + (Width(area) - size) / 2;
    const int top = area.top + (Height(area) - size) / 2;
    return {left, top, left + size, top + size};
}
