// The test programs' entry point.
#include <gtest/gtest.h>

#include <cstdio>

int main(int argc, char** argv) {
    // Unbuffered: what stands in a buffer is lost when a test crashes.
    setvbuf(stdout, nullptr, _IONBF, 0);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
