// What the compiler calls around the first initialisation of a function-local static.
//
// It stands in the place of the compiler's own, whose lock is of the POSIX threads library. The first use of that has
// it describe the calling thread, with questions to the system that take longer than building the ribbon's markup.
#include <windows.h>

#include <atomic>

namespace {

// A static's guard, zero at first. Compiled code looks at its first byte only (C++ ABI for Itanium).
constexpr long long isInitialised = 1;
constexpr long long isUnderWay = 0x100;

SRWLOCK lock = SRWLOCK_INIT;
CONDITION_VARIABLE someEnded = CONDITION_VARIABLE_INIT;

void End(long long& guard, long long result) {
    AcquireSRWLockExclusive(&lock);
    std::atomic_ref(guard).store(result, std::memory_order_release);
    ReleaseSRWLockExclusive(&lock);
    WakeAllConditionVariable(&someEnded);
}

}  // namespace

extern "C" {

// 1 when the caller has to initialise the static, and to say how that ended; 0 when it is initialised.
int __cxa_guard_acquire(long long* guard) {
    AcquireSRWLockExclusive(&lock);
    while (*guard == isUnderWay) SleepConditionVariableSRW(&someEnded, &lock, INFINITE, 0);
    const bool isFirst = *guard == 0;
    if (isFirst) *guard = isUnderWay;
    ReleaseSRWLockExclusive(&lock);
    return isFirst;
}

void __cxa_guard_release(long long* guard) { End(*guard, isInitialised); }

void __cxa_guard_abort(long long* guard) { End(*guard, 0); }
}
