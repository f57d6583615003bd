#include "src/export/OwnerWindow.h"

#include <string_view>

#include "src/automation/HostWindow.h"

namespace {

HWND ForegroundWindowOfClass(std::wstring_view wanted) {
    const HWND window = GetForegroundWindow();
    wchar_t name[256];
    const int length = window ? GetClassNameW(window, name, ARRAYSIZE(name)) : 0;
    return std::wstring_view(name, static_cast<size_t>(length)) == wanted ? window : nullptr;
}

}  // namespace

HWND GetOwnerWindow(const AddinState& addin) {
    if (!addin.application) return nullptr;
    switch (addin.host) {
        case HostOutlook: return ForegroundWindowOfClass(L"rctrl_renwnd32");
        case HostPowerPoint: return ForegroundWindowOfClass(L"PPTFrameClass");
        default: return GetActiveWindowHandle(addin.application.Get());
    }
}
