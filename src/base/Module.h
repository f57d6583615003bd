// What the whole module shares: its instance handle and the two counts that decide whether it may be unloaded.
#pragma once

#include <windows.h>

struct ModuleState {
    HINSTANCE handle;  // set by DllMain on process attach; null before
    LONG objectCount;  // live class factories; changed by interlocked operations only
    LONG lockCount;    // LockServer(TRUE) less LockServer(FALSE); changed by interlocked operations only
};

extern ModuleState moduleState;

// Keeps this module in memory until the process ends. The host is told that the module may go while add-in objects and
// their threads still live (only factories and server locks count), so their code must not be unmapped.
void PinModule();
