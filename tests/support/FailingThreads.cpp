// The program's own import of the function.
#include "tests/support/FailingThreads.h"

#include <windows.h>

std::atomic<bool> threadsFail = false;

namespace {

HANDLE WINAPI Create(LPSECURITY_ATTRIBUTES attributes, SIZE_T stack, LPTHREAD_START_ROUTINE start, LPVOID parameter,
                     DWORD flags, LPDWORD id) {
    static const auto real = reinterpret_cast<decltype(&CreateThread)>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "CreateThread")));
    if (!threadsFail) return real(attributes, stack, start, parameter, flags, id);
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

}  // namespace

// Under this name the linker looks for the imported function; it takes what it finds first.
extern "C" {
extern decltype(&CreateThread) const __imp_CreateThread;
decltype(&CreateThread) const __imp_CreateThread = Create;
}
