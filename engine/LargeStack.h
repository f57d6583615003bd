// Running work that recurses deeply: on a thread of its own, because the stack of Office's threads is small.
#pragma once

#include <cstddef>
#include <functional>

namespace zavo::pdf {

// Runs `work` on a thread with a stack of `stackSize` bytes and waits for it. What `work` throws is thrown here;
// PdfError where there is no such thread to be had.
void RunWithStack(std::size_t stackSize, const std::function<void()>& work);

inline constexpr std::size_t largeStackSize = std::size_t{256} << 20;

// The same with a stack that is large enough for any document. Only what is used of it takes memory.
void RunWithLargeStack(const std::function<void()>& work);

}  // namespace zavo::pdf
