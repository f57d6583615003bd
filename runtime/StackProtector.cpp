// What the compiler's stack protector calls: the guard value and the end of a process whose stack was overrun.
//
// It stands in the place of the compiler's own libssp, which asks the CryptoAPI for the guard while the library loads.
// That reads the registry, loads four libraries of Windows and takes milliseconds, for each of our libraries anew.
//
// This file is compiled without the protector: a protected function would find another guard at its end than it had at
// its start.
#include <windows.h>
#include <ntsecapi.h>
#include <ntstatus.h>

namespace {

// Never 0, the value that an overrun writes most easily.
uintptr_t DrawGuard() {
    uintptr_t guard = 0;
    if (RtlGenRandom(&guard, sizeof guard) && guard != 0) return guard;
    // Where the stack lies differs from process to process, too. The odd factor, 2 to the power of 64 over the golden
    // ratio, spreads both over all bytes.
    LARGE_INTEGER counter = {};
    QueryPerformanceCounter(&counter);
    guard = static_cast<uintptr_t>(counter.QuadPart) ^ reinterpret_cast<uintptr_t>(&counter);
    guard *= 0x9E3779B97F4A7C15;
    return guard != 0 ? guard : 1;
}

}  // namespace

extern "C" {

// The one global with a constructor: the guard has to be there before the first protected function runs.
uintptr_t __stack_chk_guard = DrawGuard();

[[noreturn]] void __stack_chk_fail() {
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = static_cast<DWORD>(STATUS_STACK_BUFFER_OVERRUN);
    record.ExceptionFlags = EXCEPTION_NONCONTINUABLE;
    RaiseFailFastException(&record, nullptr, FAIL_FAST_GENERATE_EXCEPTION_ADDRESS);
    TerminateProcess(GetCurrentProcess(), record.ExceptionCode);
    for (;;) continue;
}

// A copy that is known to be larger than its target, found by the checked forms of memcpy and the like.
[[noreturn]] void __chk_fail() { __stack_chk_fail(); }
}
