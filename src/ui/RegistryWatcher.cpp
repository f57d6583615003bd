#include "src/ui/RegistryWatcher.h"

#include <system_error>
#include <utility>

#include "src/base/Barrier.h"

namespace {

void WaitAnsweringSentMessages(HANDLE thread) {
    for (;;) {
        const DWORD signalled = MsgWaitForMultipleObjectsEx(1, &thread, INFINITE, QS_SENDMESSAGE, MWMO_INPUTAVAILABLE);
        if (signalled == WAIT_OBJECT_0) return;
        if (signalled != WAIT_OBJECT_0 + 1) {
            WaitForSingleObject(thread, INFINITE);
            return;
        }
        MSG msg;
        PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);  // answers what was sent
    }
}

}  // namespace

RegistryWatcher::RegistryWatcher(RegistryValueSpec spec, std::function<void()> changed)
    : spec_(std::move(spec)), changed_(std::move(changed)) {}

RegistryWatcher::~RegistryWatcher() {
    Barrier([this]() -> HRESULT {
        Stop();
        return S_OK;
    });
}

bool RegistryWatcher::Start() {
    const ExclusiveLock lock(lock_);
    if (running_ || thread_.Get() || !stop_.Get()) return false;
    RegistryKey key;
    if (RegOpenKeyExW(spec_.root, spec_.subkey.c_str(), 0, KEY_READ, key.Receive()) != ERROR_SUCCESS) return false;
    ResetEvent(stop_.Get());
    // The thread waits for the lock and then finds the rest done.
    thread_ = KernelHandle(CreateThread(nullptr, 0, &RunThread, this, 0, &threadId_));
    if (!thread_.Get()) {
        throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
    }
    key_ = std::move(key);
    running_ = true;
    return true;
}

void RegistryWatcher::Stop() {
    KernelHandle ending;
    {
        const ExclusiveLock lock(lock_);
        running_ = false;
        if (!thread_.Get()) return;
        if (threadId_ != GetCurrentThreadId()) ending = std::move(thread_);
    }
    SetEvent(stop_.Get());
    if (!ending.Get()) {
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
    }
    WaitAnsweringSentMessages(ending.Get());
    const ExclusiveLock lock(lock_);
    key_.Close();
}

DWORD WINAPI RegistryWatcher::RunThread(void* watcher) {
    Barrier([&]() -> HRESULT {
        static_cast<RegistryWatcher*>(watcher)->Watch();
        return S_OK;
    });
    return 0;
}

void RegistryWatcher::Watch() {
    for (;;) {
        HKEY key = nullptr;
        {
            const ExclusiveLock lock(lock_);
            if (running_) key = key_.Get();
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
            const HANDLE events[] = {change.Get(), stop_.Get()};
            signalled = WaitForMultipleObjects(ARRAYSIZE(events), events, FALSE, INFINITE);
        }
        if (signalled == WAIT_OBJECT_0 + 1) return;
        if (signalled == WAIT_OBJECT_0) {
            Barrier([this]() -> HRESULT {
                changed_();
                return S_OK;
            });
        }
    }
}
