// Sizes on the screen.
#pragma once

#include <windows.h>

// `value` pixels at 96 dots per inch, scaled to the window's. Without a window that under the cursor decides, without
// one there the system.
int ScaleForDpi(int value, HWND window);
