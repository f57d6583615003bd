// The library's entry point.
#include <windows.h>
#include <objbase.h>

#include "engine/ZavoKit.h"
#include "src/base/Module.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    switch (reason) {
        case DLL_PROCESS_ATTACH:
            moduleState.handle = instance;
            DisableThreadLibraryCalls(instance);
            CoInitialize(nullptr);
            PDF_InitLibrary(nullptr);
            break;
        case DLL_PROCESS_DETACH:
            // Not the reverse of attach, on purpose: COM is left before the PDF engine is torn down.
            CoUninitialize();
            PDF_DestroyLibrary();
            break;
        default: break;
    }
    return TRUE;  // a COM or engine that is not to be had never keeps the add-in from loading
}
