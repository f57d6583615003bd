// The registry watcher on real keys.
#include "src/ui/RegistryWatcher.h"

#include <gtest/gtest.h>

#include <atomic>
#include <system_error>

#include "tests/support/OpenHandles.h"

namespace {

constexpr wchar_t root[] = L"Software\\ZavoWatched";

class Watcher : public testing::Test {
protected:
    Watcher() {
        RegDeleteTreeW(HKEY_CURRENT_USER, root);
        Write(root, L"value", 0);
    }
    ~Watcher() override { RegDeleteTreeW(HKEY_CURRENT_USER, root); }

    static void Write(const wchar_t* key, const wchar_t* name, DWORD number) {
        RegSetKeyValueW(HKEY_CURRENT_USER, key, name, REG_DWORD, &number, sizeof number);
    }
    static RegistryValueSpec Spec(const wchar_t* key = root) { return {HKEY_CURRENT_USER, key, L"value", REG_DWORD}; }

    std::function<void()> Count() {
        return [this] { ++changes_; };
    }
    // Waits until there were that many changes; false after two seconds.
    bool WaitForChanges(int count) const {
        for (int i = 0; i < 200 && changes_ < count; ++i) Sleep(10);
        return changes_ == count;
    }
    // Writes until one change is seen: the watch is armed a moment after the start.
    void WriteUntilSeen() {
        const int before = changes_;
        for (DWORD i = 1; i < 100 && changes_ == before; ++i) {
            Write(root, L"value", 1000 + i);
            Sleep(20);
        }
        ASSERT_GT(changes_, before);
        Sleep(100);  // whatever else was written has arrived
    }

    std::atomic<int> changes_ = 0;
};

}  // namespace

TEST_F(Watcher, EveryChangeOfAnyValueOfTheKeyCalls) {
    RegistryWatcher watcher(Spec(), Count());
    ASSERT_TRUE(watcher.Start());
    WriteUntilSeen();
    for (DWORD i = 0; i < 5; ++i) {
        const int before = changes_;
        Write(root, i % 2 ? L"value" : L"another value", 10 + i);
        EXPECT_TRUE(WaitForChanges(before + 1)) << i;
        Sleep(50);
    }
}

TEST_F(Watcher, SubkeysDoNotCall) {
    RegistryWatcher watcher(Spec(), Count());
    Write(L"Software\\ZavoWatched\\below", L"value", 1);
    ASSERT_TRUE(watcher.Start());
    WriteUntilSeen();
    const int before = changes_;
    Write(L"Software\\ZavoWatched\\below", L"value", 2);
    Write(L"Software\\ZavoWatched\\another", L"value", 3);
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\ZavoWatched\\another");
    Sleep(200);
    EXPECT_EQ(changes_, before);
}

TEST_F(Watcher, SecondStartDoesNothing) {
    RegistryWatcher watcher(Spec(), Count());
    EXPECT_TRUE(watcher.Start());
    EXPECT_FALSE(watcher.Start());
}

TEST_F(Watcher, KeyThatIsMissingIsNotWatched) {
    RegistryWatcher watcher(Spec(L"Software\\NoSuchKey"), Count());
    EXPECT_FALSE(watcher.Start());
    EXPECT_FALSE(watcher.Start());
}

TEST_F(Watcher, StopOfOneThatNeverStartedDoesNothing) {
    RegistryWatcher watcher(Spec(), Count());
    watcher.Stop();
    watcher.Stop();
}

TEST_F(Watcher, StoppedWatcherIsSilentAndCanStartAgain) {
    RegistryWatcher watcher(Spec(), Count());
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(watcher.Start());
        WriteUntilSeen();
        watcher.Stop();
        const int before = changes_;
        Write(root, L"value", 5000);
        Write(root, L"value", 5001);
        Sleep(100);
        EXPECT_EQ(changes_, before);
    }
}

TEST_F(Watcher, DestructionStops) {
    {
        RegistryWatcher watcher(Spec(), Count());
        ASSERT_TRUE(watcher.Start());
        WriteUntilSeen();
    }
    const int before = changes_;
    Write(root, L"value", 5000);
    Sleep(100);
    EXPECT_EQ(changes_, before);
}

TEST_F(Watcher, EmptySubkeyWatchesTheRootsOwnValues) {
    RegistryWatcher watcher(Spec(L""), Count());
    ASSERT_TRUE(watcher.Start());
    Sleep(100);
    const DWORD number = 1;
    RegSetValueExW(HKEY_CURRENT_USER, L"ZavoRootValue", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), 4);
    EXPECT_TRUE(WaitForChanges(1));
    RegDeleteValueW(HKEY_CURRENT_USER, L"ZavoRootValue");
}

TEST_F(Watcher, DeletedKeyEndsTheThreadAndStopStillWorks) {
    // Deleted while the callback runs, so that the next watch finds the key gone.
    RegistryWatcher watcher(Spec(), [&] {
        ++changes_;
        RegDeleteTreeW(HKEY_CURRENT_USER, root);
    });
    ASSERT_TRUE(watcher.Start());
    for (DWORD i = 1; i < 100 && changes_ == 0; ++i) {
        HKEY key = nullptr;
        if (RegOpenKeyExW(HKEY_CURRENT_USER, root, 0, KEY_WRITE, &key) == ERROR_SUCCESS) {
            RegSetValueExW(key, L"value", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&i), sizeof i);
            RegCloseKey(key);
        }
        Sleep(20);
    }
    ASSERT_EQ(changes_, 1);
    FILETIME created, ended, kernel, before, after;
    Sleep(100);
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &before);
    const ULONGLONG kernelBefore = kernel.dwLowDateTime;
    Sleep(500);
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &kernel, &after);
    const ULONGLONG used = (after.dwLowDateTime - before.dwLowDateTime) + (kernel.dwLowDateTime - kernelBefore);
    EXPECT_LT(used, 500000U) << "a thread spins: " << used / 10000 << " ms of 500";
    watcher.Stop();
}

TEST_F(Watcher, StoppedWatcherHoldsNoKey) {
    std::vector<std::unique_ptr<RegistryWatcher>> watchers;
    for (int i = 0; i < 30; ++i) watchers.push_back(std::make_unique<RegistryWatcher>(Spec(), Count()));
    const size_t before = OpenHandles();
    for (const auto& watcher : watchers) ASSERT_TRUE(watcher->Start());
    EXPECT_GE(OpenHandles(), before + 30);
    for (const auto& watcher : watchers) watcher->Stop();
    Sleep(50);
    EXPECT_LT(OpenHandles(), before + 30);
}

TEST_F(Watcher, StopOnItsOwnThreadThrowsAndLeavesItStoppable) {
    std::atomic<int> thrown = 0;
    RegistryWatcher* self = nullptr;
    RegistryWatcher watcher(Spec(), [&] {
        ++changes_;
        try {
            self->Stop();
        } catch (const std::system_error& error) {
            if (error.code() == std::errc::resource_deadlock_would_occur) ++thrown;
        }
    });
    self = &watcher;
    ASSERT_TRUE(watcher.Start());
    WriteUntilSeen();
    EXPECT_EQ(thrown, 1);
    const int before = changes_;
    Write(root, L"value", 7);
    Sleep(100);
    EXPECT_EQ(changes_, before);  // the watch has ended
    watcher.Stop();
    EXPECT_TRUE(watcher.Start());  // and can begin again
}

TEST_F(Watcher, ThrowingCallbackDoesNotEndTheWatch) {
    RegistryWatcher watcher(Spec(), [&] {
        ++changes_;
        throw std::bad_alloc();
    });
    ASSERT_TRUE(watcher.Start());
    WriteUntilSeen();
    const int before = changes_;
    Write(root, L"value", 9);
    EXPECT_TRUE(WaitForChanges(before + 1));
}

TEST_F(Watcher, ProcessWithManyWatchersEndsThemAll) {
    std::vector<std::unique_ptr<RegistryWatcher>> watchers;
    for (int i = 0; i < 20; ++i) watchers.push_back(std::make_unique<RegistryWatcher>(Spec(), Count()));
    for (const auto& watcher : watchers) ASSERT_TRUE(watcher->Start());
    Sleep(100);
    Write(root, L"value", 4711);
    EXPECT_TRUE(WaitForChanges(20));
    watchers.clear();
    Write(root, L"value", 4712);
    Sleep(100);
    EXPECT_EQ(changes_, 20);
}

TEST_F(Watcher, StartAndStopLeaveNoHandleBehind) {
    const auto round = [&] {
        RegistryWatcher watcher(Spec(), Count());
        ASSERT_TRUE(watcher.Start());
        Write(root, L"value", 3);
        Sleep(5);
    };
    for (int i = 0; i < 3; ++i) round();
    const size_t before = OpenHandles();
    for (int i = 0; i < 50; ++i) round();
    EXPECT_LT(OpenHandles(), before + 50);  // one handle more or less is Wine's
}

TEST_F(Watcher, ProcessThatEndsWithALiveWatcherDoesNotHang) {
    static RegistryWatcher* forgotten = new RegistryWatcher(Spec(), Count());
    EXPECT_TRUE(forgotten->Start());
}
