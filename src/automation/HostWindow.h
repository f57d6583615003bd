// The host's own window.
#pragma once

#include <windows.h>
#include <oaidl.h>

// The handle of the application's active window (`ActiveWindow`, then `hwnd`); null when any step fails.
HWND GetActiveWindowHandle(IDispatch* application);
