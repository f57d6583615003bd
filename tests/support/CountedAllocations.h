// The program's C++ allocations, counted. A program that links CountedAllocations.cpp has its global operators
// replaced.
#pragma once

#include <atomic>

extern std::atomic<long> liveBlocks;

// Counts down with every allocation; the one that finds 0 fails. Negative: none fails.
extern std::atomic<long> allocationsUntilFailure;
