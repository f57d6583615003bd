// Counting allocation functions.
#include "tests/support/CountedAllocations.h"

#include <cstdlib>
#include <new>

std::atomic<long> liveBlocks = 0;
std::atomic<long> allocationsUntilFailure = -1;

namespace {

void* Allocate(std::size_t size) noexcept {
    if (allocationsUntilFailure >= 0 && allocationsUntilFailure-- == 0) return nullptr;
    void* block = std::malloc(size ? size : 1);
    if (block) ++liveBlocks;
    return block;
}

void* AllocateOrThrow(std::size_t size) {
    void* block = Allocate(size);
    if (!block) throw std::bad_alloc();
    return block;
}

void Free(void* block) noexcept {
    if (block) --liveBlocks;
    std::free(block);
}

}  // namespace

void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* block) noexcept { Free(block); }
void operator delete[](void* block) noexcept { Free(block); }
void operator delete(void* block, std::size_t) noexcept { Free(block); }
void operator delete[](void* block, std::size_t) noexcept { Free(block); }
