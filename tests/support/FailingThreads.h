// Threads that cannot be started. A program that links FailingThreads.cpp has its calls of CreateThread led past here;
// those within the system's libraries are not.
#pragma once

#include <atomic>

extern std::atomic<bool> threadsFail;
