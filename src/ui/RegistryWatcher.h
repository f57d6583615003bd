// Tells when a value of a registry key changes.
#pragma once

#include <functional>
#include <memory>

#include "src/base/RegistryValues.h"

// Watches the values of one key, not its subkeys, with a thread of its own. The callback runs on that thread, once for
// every change, with no lock held. One caller at a time starts and stops it; between a Stop on its own thread and the
// next one from elsewhere it does not start.
class RegistryWatcher {
public:
    RegistryWatcher(RegistryValueSpec spec, std::function<void()> changed);
    RegistryWatcher(const RegistryWatcher&) = delete;
    RegistryWatcher& operator=(const RegistryWatcher&) = delete;

    // Stops. On the watcher's own thread it lets the thread go, which then ends by itself.
    ~RegistryWatcher();

    // False when it was started already or the key cannot be opened. Throws std::system_error when there is no thread
    // to be had; the watcher is then as before.
    bool Start();

    // Returns when the thread has ended; does nothing when there is none. On the watcher's own thread it throws
    // std::system_error (resource_deadlock_would_occur); the watch has then ended, and the watcher can still be stopped
    // or destroyed from elsewhere.
    void Stop();

private:
    struct State;

    static DWORD WINAPI RunThread(void* shared);
    static void Watch(State& state);

    // The thread owns it too, because it may outlive the watcher.
    const std::shared_ptr<State> state_;
};
