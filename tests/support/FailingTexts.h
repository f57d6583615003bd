// Texts for automation (BSTRs) that cannot be allocated. A program that links FailingTexts.cpp has its calls of
// SysAllocString and SysAllocStringLen led past here; those within the system's libraries are not.
#pragma once

#include <atomic>

// Counts down with every such text; the one that finds 0 fails. Negative: none fails.
extern std::atomic<long> textsUntilFailure;
