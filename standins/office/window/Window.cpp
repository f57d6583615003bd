// Window procedure and message loops.
#include "standins/office/window/Window.h"

#include <exception>
#include <stdexcept>
#include <utility>

namespace {

std::exception_ptr& Failure() {
    static std::exception_ptr failure;
    return failure;
}

void ThrowFailure() {
    if (Failure()) std::rethrow_exception(std::exchange(Failure(), nullptr));
}

// False for WM_QUIT.
bool HandleOne(const MSG& message) {
    if (message.message == WM_QUIT) return false;
    TranslateMessage(&message);
    DispatchMessageW(&message);
    ThrowFailure();
    return true;
}

}  // namespace

Window::~Window() {
    if (!window_) return;
    SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
    DestroyWindow(window_);
}

RECT Window::ClientArea() const {
    RECT area = {};
    GetClientRect(window_, &area);
    return area;
}

RECT Window::ScreenArea() const {
    RECT area = {};
    GetWindowRect(window_, &area);
    return area;
}

void Window::Create(const wchar_t* className, const wchar_t* title, DWORD style, DWORD extendedStyle, const RECT& place,
                    HWND parent) {
    WNDCLASSW windowClass = {};
    windowClass.style = (style & WS_POPUP) && parent ? CS_DROPSHADOW : 0U;
    windowClass.lpfnWndProc = Receive;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.lpszClassName = className;
    RegisterClassW(&windowClass);  // fails for a second window of a class, which does not matter
    if (!CreateWindowExW(extendedStyle, className, title, style, place.left, place.top, Width(place), Height(place),
                         parent, nullptr, windowClass.hInstance, this)) {
        throw std::runtime_error("a window could not be created");
    }
}

LRESULT Window::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    return DefWindowProcW(window_, message, wParam, lParam);
}

LRESULT CALLBACK Window::Receive(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* object = static_cast<Window*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        object->window_ = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(object));
    }
    auto* object = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (!object) return DefWindowProcW(window, message, wParam, lParam);
    if (message == WM_NCDESTROY) {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        object->window_ = nullptr;
        return DefWindowProcW(window, message, wParam, lParam);
    }
    try {
        return object->Handle(message, wParam, lParam);
    } catch (const std::exception&) {
        Failure() = std::current_exception();
        return 0;
    }
}

void HandlePendingMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (!HandleOne(message)) return PostQuitMessage(0);  // for the loop that waits for it
    }
}

bool HandleMessagesUntil(const std::function<bool()>& condition, DWORD milliseconds) {
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (;;) {
        HandlePendingMessages();
        if (condition()) return true;
        if (GetTickCount64() >= end) return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 5, QS_ALLINPUT);
    }
}

void HandleMessagesUntilQuit() {
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) HandleOne(message);
}
