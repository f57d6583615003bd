#include "src/automation/HostWindow.h"

#include "src/automation/AutomationCalls.h"

HWND GetActiveWindowHandle(IDispatch* application) {
    const auto window = GetObjectProperty(application, L"ActiveWindow");
    if (!window) return nullptr;
    const auto handle = GetNumberProperty(window.Get(), L"hwnd");
    return handle ? reinterpret_cast<HWND>(static_cast<LONG_PTR>(*handle)) : nullptr;
}
