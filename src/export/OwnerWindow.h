// The window that owns the add-in's dialogs and message boxes.
#pragma once

#include <windows.h>

#include "src/base/AddinState.h"

// Null when there is none to be found; a dialog then has no owner.
HWND GetOwnerWindow(const AddinState& addin);
