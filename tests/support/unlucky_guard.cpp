// A program in which no random number is to be had when the stack protector draws its guard. Writes the guard to the
// file that its argument names, and ends with 0 when the number had been asked for.
#include <windows.h>
#include <ntsecapi.h>

#include <cstdint>
#include <fstream>

namespace {

constinit int requests = 0;

}  // namespace

extern "C" {

extern uintptr_t __stack_chk_guard;

// In the place of Windows' own function, which programs know as SystemFunction036.
BOOLEAN WINAPI RtlGenRandom(PVOID, ULONG) {
    ++requests;
    return FALSE;
}
}

int main(int count, char** arguments) {
    if (count != 2 || requests != 1) return 1;
    std::ofstream(arguments[1]) << __stack_chk_guard;
    return 0;
}
