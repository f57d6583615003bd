// What the compiler's stack protector calls: the guard value and the end of a process whose stack was overrun.
//
// It stands in the place of the compiler's own libssp, which asks the CryptoAPI for the guard while the library loads.
// That reads the registry, loads four libraries of Windows and takes milliseconds, for each of our libraries anew.
#include <windows.h>
#include <ntsecapi.h>
#include <ntstatus.h>

extern "C" {

uintptr_t __stack_chk_guard = 0;

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

namespace {

// The one global with a constructor: the guard has to be there before the first protected function runs. It is written
// in place, because a function with a buffer of its own would be protected by what changes meanwhile.
[[maybe_unused]] const BOOLEAN seeded = RtlGenRandom(&__stack_chk_guard, sizeof __stack_chk_guard);

}  // namespace
