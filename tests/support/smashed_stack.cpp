// Writes past the end of a buffer on its stack and should not live to say so.
#include <windows.h>

namespace {

void WritePastTheEnd(size_t length) {
    volatile char buffer[16];
    volatile char* place = buffer;
    for (size_t i = 0; i < length; ++i) *place++ = 'x';
}

}  // namespace

int main(int count, char**) {
    WritePastTheEnd(16 + 64 * static_cast<size_t>(count));
    return 0;
}
