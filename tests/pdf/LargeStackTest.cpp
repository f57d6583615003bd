// Threads with a stack of their own: depth, exceptions, threads that are not to be had.
#include "engine/LargeStack.h"

#include <gtest/gtest.h>

#include <thread>

#include "engine/PdfError.h"

namespace zavo::pdf {
namespace {

// Uses at least `depth` times 1 KiB of stack.
std::size_t Recurse(std::size_t depth) {
    volatile char room[1024];
    room[0] = 1;
    room[depth % sizeof room] = 1;
    return depth == 0 ? 0 : Recurse(depth - 1) + static_cast<std::size_t>(room[0]);
}

TEST(LargeStack, HoldsWhatOverflowsAnyOrdinaryStack) {
    constexpr std::size_t depth = 150000;
    std::size_t reached = 0;
    RunWithLargeStack([&] { reached = Recurse(depth); });
    EXPECT_EQ(reached, depth);
}

TEST(LargeStack, IsToBeHadFromASmallOne) {
    std::size_t reached = 0;
    RunWithStack(std::size_t{1} << 20, [&] { RunWithLargeStack([&] { reached = Recurse(50000); }); });
    EXPECT_EQ(reached, 50000U);
}

TEST(LargeStack, WorkRunsOnAnotherThreadAndIsOverOnReturn) {
    std::thread::id worker;
    RunWithLargeStack([&] { worker = std::this_thread::get_id(); });
    EXPECT_NE(worker, std::thread::id());
    EXPECT_NE(worker, std::this_thread::get_id());
}

TEST(LargeStack, ExceptionsComeOverWithTheirType) {
    EXPECT_THROW(RunWithLargeStack([] { throw PdfError("from the other thread"); }), PdfError);
    EXPECT_THROW(RunWithLargeStack([] { throw std::bad_alloc(); }), std::bad_alloc);
    EXPECT_THROW(RunWithLargeStack([] { throw 7; }), int);
}

TEST(LargeStack, AThreadThatIsNotToBeHadIsAnError) {
    bool ran = false;
    EXPECT_THROW(RunWithStack(std::size_t{1} << 60, [&] { ran = true; }), PdfError);
    EXPECT_FALSE(ran);
}

}  // namespace
}  // namespace zavo::pdf
