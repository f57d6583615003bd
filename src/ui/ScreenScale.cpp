#include "src/ui/ScreenScale.h"

namespace {

UINT DpiOf(HWND window) {
    if (!window) {
        POINT cursor = {};
        if (GetCursorPos(&cursor)) window = WindowFromPoint(cursor);
    }
    const UINT dpi = window ? GetDpiForWindow(window) : 0;
    return dpi ? dpi : GetDpiForSystem();  // a window that is gone has no dots per inch either
}

}  // namespace

int ScaleForDpi(int value, HWND window) {
    return MulDiv(value, static_cast<int>(DpiOf(window)), USER_DEFAULT_SCREEN_DPI);
}
