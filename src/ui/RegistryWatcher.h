// Tells when a value of a registry key changes.
#pragma once

#include <functional>

#include "src/base/Handles.h"
#include "src/base/RegistryValues.h"

// Watches the values of one key, not its subkeys, with a thread of its own. The callback runs on that thread, once for
// every change, with no lock held. One caller at a time starts and stops it. It is not destroyed on its own thread.
class RegistryWatcher {
public:
    RegistryWatcher(RegistryValueSpec spec, std::function<void()> changed);
    RegistryWatcher(const RegistryWatcher&) = delete;
    RegistryWatcher& operator=(const RegistryWatcher&) = delete;
    ~RegistryWatcher();  // stops

    // False when it was started already or the key cannot be opened. Throws std::system_error when there is no thread
    // to be had; the watcher is then as before.
    bool Start();

    // Returns when the thread has ended; does nothing when there is none. Messages that other threads *send* to the
    // caller's windows meanwhile are answered, because the callback may wait for one; posted ones stay in the queue. On
    // the watcher's own thread it throws std::system_error (resource_deadlock_would_occur); the watch has then ended,
    // and the watcher can still be stopped or destroyed from elsewhere.
    void Stop();

private:
    static DWORD WINAPI RunThread(void* watcher);
    void Watch();

    const RegistryValueSpec spec_;
    const std::function<void()> changed_;
    const KernelHandle stop_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    SRWLOCK lock_ = SRWLOCK_INIT;  // guards what follows
    RegistryKey key_;
    KernelHandle thread_;
    DWORD threadId_ = 0;  // of the thread, as long as there is one
    bool running_ = false;
};
