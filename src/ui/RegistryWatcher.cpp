// The registry watcher and its thread.
#include "src/ui/RegistryWatcher.h"

#include <system_error>
#include <utility>

#include "src/base/Barrier.h"
#include "src/base/Handles.h"

struct RegistryWatcher::State {
    State(RegistryValueSpec watchedValue, std::function<void()> callback)
        : spec(std::move(watchedValue)), changed(std::move(callback)) {}

    const RegistryValueSpec spec;
    const std::function<void()> changed;
    RegistryKey key;
    KernelHandle thread;  // not a std::thread, which asks more of the system while the host starts
    DWORD threadId = 0;   // of the thread, as long as there is one
    bool running = false;
    const KernelHandle stop{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    SRWLOCK lock = SRWLOCK_INIT;  // guards key, thread, its id and running
};

RegistryWatcher::RegistryWatcher(RegistryValueSpec spec, std::function<void()> changed)
    : state_(std::make_shared<State>(std::move(spec), std::move(changed))) {}

RegistryWatcher::~RegistryWatcher() {
    Barrier([this]() -> HRESULT {
        bool isOwnThread = false;
        {
            const ExclusiveLock lock(state_->lock);
            isOwnThread = state_->thread.Get() && state_->threadId == GetCurrentThreadId();
            if (isOwnThread) state_->running = false;
        }
        if (isOwnThread) {
            SetEvent(state_->stop.Get());
        } else {
            Stop();
        }
        return S_OK;
    });
}

bool RegistryWatcher::Start() {
    const ExclusiveLock lock(state_->lock);
    if (state_->running || state_->thread.Get() || !state_->stop.Get()) return false;
    const RegistryValueSpec& spec = state_->spec;
    RegistryKey key;
    if (RegOpenKeyExW(spec.root, spec.subkey.c_str(), 0, KEY_READ, key.Receive()) != ERROR_SUCCESS) return false;
    ResetEvent(state_->stop.Get());
    // The thread waits for the lock and then finds the rest done.
    auto shared = std::make_unique<std::shared_ptr<State>>(state_);
    state_->thread = KernelHandle(CreateThread(nullptr, 0, &RunThread, shared.get(), 0, &state_->threadId));
    if (!state_->thread.Get()) {
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    }
    (void)shared.release();
    state_->key = std::move(key);
    state_->running = true;
    return true;
}

void RegistryWatcher::Stop() {
    KernelHandle ending;
    {
        const ExclusiveLock lock(state_->lock);
        state_->running = false;
        if (!state_->thread.Get()) return;
        if (state_->threadId != GetCurrentThreadId()) ending = std::move(state_->thread);
    }
    SetEvent(state_->stop.Get());
    if (!ending.Get()) {
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    }
    WaitForSingleObject(ending.Get(), INFINITE);
    const ExclusiveLock lock(state_->lock);
    state_->key.Close();
}

DWORD WINAPI RegistryWatcher::RunThread(void* shared) {
    Barrier([&]() -> HRESULT {
        const std::unique_ptr<std::shared_ptr<State>> state(static_cast<std::shared_ptr<State>*>(shared));
        Watch(**state);
        return S_OK;
    });
    return 0;
}

void RegistryWatcher::Watch(State& state) {
    for (;;) {
        HKEY key = nullptr;
        {
            const ExclusiveLock lock(state.lock);
            if (!state.running) return;
            key = state.key.Get();
        }
        if (!key) return;
        DWORD signalled = WAIT_FAILED;
        {
            const KernelHandle change(CreateEventW(nullptr, TRUE, FALSE, nullptr));
            if (!change.Get()) return;
            const LONG armed = RegNotifyChangeKeyValue(key, FALSE, REG_NOTIFY_CHANGE_LAST_SET, change.Get(), TRUE);
            // A key that was deleted can never be watched again.
            if (armed == ERROR_KEY_DELETED || armed == ERROR_INVALID_HANDLE) return;
            if (armed != ERROR_SUCCESS) continue;
            const HANDLE events[] = {change.Get(), state.stop.Get()};
            signalled = WaitForMultipleObjects(ARRAYSIZE(events), events, FALSE, INFINITE);
        }
        if (signalled == WAIT_OBJECT_0 + 1) return;
        if (signalled == WAIT_OBJECT_0) {
            Barrier([&]() -> HRESULT {
                state.changed();
                return S_OK;
            });
        }
    }
}
