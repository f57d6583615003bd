// The engine under libFuzzer, which looks for files that do harm by itself.
#include <cstddef>
#include <cstdint>
#include <string>

#include <stdlib.h>
#include <unistd.h>

#include "engine/LargeStack.h"
#include "tests/pdf/TestFolder.h"
#include "tests/pdf/mutate/Exercise.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace zavo::pdf;
    static const bool inMemory = access("/dev/shm", W_OK) == 0 && setenv("TMPDIR", "/dev/shm", 1) == 0;
    static_cast<void>(inMemory);
    static const TestFolder folder;
    static Exercise exercise(folder.Path(), SmallPdfs());
    const std::string input(reinterpret_cast<const char*>(bytes), size);
    // As a thread of Office has it. What is thrown ends the program: libFuzzer keeps the input then.
    RunWithStack(std::size_t{1} << 20, [&] { exercise.Run(input); });
    return 0;
}
