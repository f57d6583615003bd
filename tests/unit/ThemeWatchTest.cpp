// From a written theme value to a ribbon that is drawn afresh.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>

#include "src/addin/RibbonCallbacks.h"
#include "tests/support/AddinObject.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/ScriptedDispatch.h"
#include "tests/support/ScriptedRibbon.h"
#include "tests/support/TestWindow.h"
#include "tests/support/ThemeKeys.h"

namespace {

HRESULT LoadRibbon(const AddinObject& addin, IDispatch* ribbon) {
    VARIANT argument = ObjectArgument(ribbon);
    DISPPARAMS params = {&argument, nullptr, 1, 0};
    return addin->Invoke(1001, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr);
}

class ThemeWatch : public testing::Test {
protected:
    ThemeWatch() {
        ThemeKeys::SetOffice(L"16.0", 0);
        ThemeKeys::SetWindows(1);
    }

    // Writes ever new values until the ribbon is asked once more; false after two seconds.
    static bool ChangeIsSeen(const ScriptedRibbon& ribbon, void (*write)(DWORD)) {
        const int before = ribbon.invalidations;
        static DWORD value = 100;
        for (int i = 0; i < 100 && ribbon.invalidations == before; ++i) {
            write(++value);
            Sleep(20);
        }
        return ribbon.invalidations > before;
    }

    const ThemeKeys keys_;
};

void WriteOffice(DWORD value) { ThemeKeys::SetOffice(L"16.0", value); }
void WriteWindows(DWORD value) { ThemeKeys::SetWindows(value); }

}  // namespace

TEST_F(ThemeWatch, ChangeOfEitherThemeInvalidatesTheRibbonFromAnotherThread) {
    const AddinObject addin;
    ScriptedRibbon ribbon;
    EXPECT_EQ(LoadRibbon(addin, &ribbon), S_OK);
    EXPECT_EQ(addin->watchers.size(), 2U);
    EXPECT_TRUE(ChangeIsSeen(ribbon, WriteOffice));
    EXPECT_NE(ribbon.invalidatingThread, GetCurrentThreadId());
    EXPECT_TRUE(ChangeIsSeen(ribbon, WriteWindows));
    addin->OnDisconnection(ext_dm_HostShutdown, nullptr);
    EXPECT_EQ(ribbon.References(), 1U);
}

TEST_F(ThemeWatch, NothingIsCalledAfterDisconnection) {
    const AddinObject addin;
    ScriptedRibbon ribbon;
    LoadRibbon(addin, &ribbon);
    EXPECT_TRUE(ChangeIsSeen(ribbon, WriteOffice));
    addin->OnDisconnection(ext_dm_HostShutdown, nullptr);
    EXPECT_TRUE(addin->watchers.empty());
    const int before = ribbon.invalidations;
    WriteOffice(77);
    WriteWindows(77);
    Sleep(200);
    EXPECT_EQ(ribbon.invalidations, before);
}

TEST_F(ThemeWatch, OfficeKeyOfTheVersionThatStoresAThemeIsWatched) {
    ThemeKeys::Clear();
    ThemeKeys::SetOffice(L"15.0", 1);
    ThemeKeys::SetWindows(1);
    const AddinObject addin;
    ScriptedRibbon ribbon;
    LoadRibbon(addin, &ribbon);
    EXPECT_TRUE(ChangeIsSeen(ribbon, [](DWORD value) { ThemeKeys::SetOffice(L"15.0", value); }));
}

TEST_F(ThemeWatch, SystemSettingIsWatchedWhereItIsStored) {
    ThemeKeys::Clear();
    ThemeKeys::SetOffice(L"15.0", 6);
    const AddinObject addin;
    ScriptedRibbon ribbon;
    LoadRibbon(addin, &ribbon);
    EXPECT_TRUE(ChangeIsSeen(ribbon, [](DWORD value) { ThemeKeys::SetOffice(L"15.0", value); }));
}

TEST_F(ThemeWatch, RibbonLoadAnswersWhatTheQueryAnswered) {
    const AddinObject addin;
    ScriptedRibbon ribbon;
    ribbon.queryResult = S_FALSE;
    EXPECT_EQ(LoadRibbon(addin, &ribbon), S_FALSE);
    EXPECT_EQ(addin->watchers.size(), 2U);
    addin->OnDisconnection(ext_dm_HostShutdown, nullptr);
    EXPECT_EQ(ribbon.References(), 1U);
}

TEST_F(ThemeWatch, DisconnectionStopsTheWatchersThenReleasesTheRibbonThenTheApplication) {
    const AddinObject addin;
    ScriptedDispatch application;
    ScriptedRibbon ribbon;
    addin->state.application = &application;
    LoadRibbon(addin, &ribbon);
    int released = 0;
    ribbon.onRelease = [&] {
        ++released;
        EXPECT_TRUE(addin->watchers.empty());
        EXPECT_EQ(application.References(), 2U);
    };
    addin->OnDisconnection(ext_dm_HostShutdown, nullptr);
    EXPECT_EQ(released, 1);
    EXPECT_EQ(application.References(), 1U);
}

TEST_F(ThemeWatch, FailedRibbonLoadWatchesNothing) {
    const AddinObject addin;
    ScriptedRibbon ribbon;
    ribbon.queryResult = E_FAIL;
    EXPECT_EQ(LoadRibbon(addin, &ribbon), E_FAIL);
    ribbon.queryGivesNull = true;
    for (const HRESULT result : {S_OK, S_FALSE}) {
        ribbon.queryResult = result;
        EXPECT_EQ(LoadRibbon(addin, &ribbon), result);
    }
    EXPECT_TRUE(addin->watchers.empty());
}

TEST_F(ThemeWatch, SecondRibbonLoadAddsTwoMoreWatchersAndTheNewRibbonIsAsked) {
    const AddinObject addin;
    ScriptedRibbon first;
    ScriptedRibbon second;
    LoadRibbon(addin, &first);
    LoadRibbon(addin, &second);
    EXPECT_EQ(addin->watchers.size(), 4U);
    EXPECT_TRUE(ChangeIsSeen(second, WriteOffice));
    EXPECT_EQ(first.invalidations, 0);
}

TEST_F(ThemeWatch, RibbonThatASecondLoadReplacedIsReleasedAtDisconnectionOnTheHostsThread) {
    const AddinObject addin;
    ScriptedRibbon first;
    ScriptedRibbon second;
    LoadRibbon(addin, &first);
    std::atomic<int> elsewhere = 0;
    for (ScriptedRibbon* ribbon : {&first, &second}) {
        ribbon->onRelease = [&, self = GetCurrentThreadId()] { elsewhere += GetCurrentThreadId() != self; };
    }
    LoadRibbon(addin, &second);
    EXPECT_EQ(first.References(), 2U);
    EXPECT_TRUE(ChangeIsSeen(second, WriteOffice));
    EXPECT_TRUE(ChangeIsSeen(second, WriteWindows));
    EXPECT_EQ(first.References(), 2U);
    EXPECT_EQ(second.References(), 2U);
    addin->OnDisconnection(ext_dm_HostShutdown, nullptr);
    EXPECT_EQ(first.References(), 1U);
    EXPECT_EQ(second.References(), 1U);
    EXPECT_EQ(elsewhere, 0);
}

TEST_F(ThemeWatch, HostWithoutAnyStoredThemeHasTheRootsOwnValuesWatched) {
    ASSERT_EQ(OfficeCommonKeyPath(), L"") << "every test is a process of its own";
    ThemeKeys::Clear();
    ThemeKeys::SetWindows(1);
    const AddinObject addin;
    ScriptedRibbon ribbon;
    LoadRibbon(addin, &ribbon);
    ASSERT_EQ(addin->watchers.size(), 2U);
    addin->watchers[1]->Stop();
    EXPECT_TRUE(ChangeIsSeen(ribbon, [](DWORD value) {
        RegSetKeyValueW(HKEY_CURRENT_USER, nullptr, L"ZavoRootValue", REG_DWORD, &value, sizeof value);
    }));
    RegDeleteKeyValueW(HKEY_CURRENT_USER, nullptr, L"ZavoRootValue");
}

TEST_F(ThemeWatch, OfficesWatcherComesFirstThenThatOfWindows) {
    const AddinObject addin;
    ScriptedRibbon ribbon;
    LoadRibbon(addin, &ribbon);
    ASSERT_EQ(addin->watchers.size(), 2U);
    addin->watchers[0]->Stop();
    EXPECT_TRUE(ChangeIsSeen(ribbon, WriteWindows));
    Sleep(100);  // whatever else was written has arrived
    const int before = ribbon.invalidations;
    WriteOffice(4711);
    Sleep(200);
    EXPECT_EQ(ribbon.invalidations, before);
    EXPECT_TRUE(addin->watchers[0]->Start());
    addin->watchers[1]->Stop();
    EXPECT_TRUE(ChangeIsSeen(ribbon, WriteOffice));
}

// Office's ribbon may hand a call on to its own thread and wait there for the answer.
TEST_F(ThemeWatch, RibbonThatSendsToTheDisconnectingThreadDoesNotHangIt) {
    constexpr UINT posted = WM_APP + 1;
    const AddinObject addin;
    const TestWindow window;
    ScriptedRibbon ribbon;
    LoadRibbon(addin, &ribbon);
    std::atomic<bool> answered = false;
    ribbon.onInvalidate = [&] {
        SendMessageW(window.Get(), WM_APP, 0, 0);
        answered = true;
    };
    ASSERT_TRUE(ChangeIsSeen(ribbon, WriteOffice));
    ASSERT_FALSE(answered);
    PostMessageW(window.Get(), posted, 0, 0);
    EXPECT_EQ(addin->OnDisconnection(ext_dm_HostShutdown, nullptr), S_OK);
    EXPECT_TRUE(answered);
    EXPECT_TRUE(addin->watchers.empty());
    EXPECT_EQ(ribbon.References(), 1U);
    MSG msg = {};
    EXPECT_TRUE(PeekMessageW(&msg, window.Get(), posted, posted, PM_REMOVE)) << "a posted message was taken";
}

namespace {

// What the host does within a message that it is sent.
std::function<void()> onSent;

LRESULT CALLBACK AnswerSent(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_APP && onSent) onSent();
    return DefWindowProcW(window, message, first, second);
}

}  // namespace

TEST_F(ThemeWatch, CallbacksThatComeInDuringDisconnectionAreHarmless) {
    const AddinObject addin;
    const TestWindow window;
    SetWindowLongPtrW(window.Get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&AnswerSent));
    ScriptedRibbon ribbon;
    ScriptedRibbon later;
    LoadRibbon(addin, &ribbon);
    int calls = 0;
    onSent = [&] {
        if (++calls > 1) return;
        LoadRibbon(addin, &later);
        EXPECT_EQ(addin->OnDisconnection(ext_dm_HostShutdown, nullptr), S_OK);
        EXPECT_EQ(ribbon.References(), 2U) << "its call is not over";
        LoadRibbon(addin, &later);
    };
    ribbon.onInvalidate = [&] { SendMessageW(window.Get(), WM_APP, 0, 0); };
    EXPECT_TRUE(ChangeIsSeen(ribbon, WriteOffice));
    EXPECT_EQ(addin->OnDisconnection(ext_dm_HostShutdown, nullptr), S_OK);
    onSent = nullptr;
    EXPECT_EQ(calls, 1);
    EXPECT_TRUE(addin->watchers.empty());
    EXPECT_EQ(ribbon.References(), 1U);
    EXPECT_EQ(later.References(), 1U);
}

TEST_F(ThemeWatch, TenRibbonLoadsAndOneDisconnectionLeaveNothingBehind) {
    ScriptedRibbon ribbon;
    const auto round = [&] {
        const AddinObject addin;
        for (int i = 0; i < 10; ++i) EXPECT_EQ(LoadRibbon(addin, &ribbon), S_OK);
        EXPECT_EQ(addin->watchers.size(), 20U);
        addin->OnDisconnection(ext_dm_HostShutdown, nullptr);
        Sleep(50);  // Wine frees what a thread had a moment after its end
    };
    // Threads and keys are handles too. What is lost would be lost in every round; one handle more or less is Wine's.
    constexpr size_t rounds = 8;
    for (size_t i = 0; i < 3; ++i) round();
    const size_t handles = OpenHandles();
    for (size_t i = 0; i < rounds; ++i) round();
    EXPECT_LT(OpenHandles(), handles + rounds);
    EXPECT_EQ(ribbon.References(), 1U);
}

TEST_F(ThemeWatch, ObjectThatDiesWithoutDisconnectionStopsItsWatchers) {
    ScriptedRibbon ribbon;
    {
        const AddinObject addin;
        LoadRibbon(addin, &ribbon);
        EXPECT_TRUE(ChangeIsSeen(ribbon, WriteOffice));
    }
    EXPECT_EQ(ribbon.References(), 1U);
    const int before = ribbon.invalidations;
    WriteOffice(55);
    Sleep(200);
    EXPECT_EQ(ribbon.invalidations, before);
}

TEST_F(ThemeWatch, HostThatEndsWithoutDisconnectionDoesNotHang) {
    static ScriptedRibbon ribbon;
    auto* forgotten = new ZOfficeAddin;
    VARIANT argument = ObjectArgument(&ribbon);
    DISPPARAMS params = {&argument, nullptr, 1, 0};
    EXPECT_EQ(forgotten->Invoke(1001, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr), S_OK);
}

TEST_F(ThemeWatch, WatchersStopInTheirOrder) {
    const AddinObject addin;
    const TestWindow window;
    SetWindowLongPtrW(window.Get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&AnswerSent));
    ScriptedRibbon ribbon;
    LoadRibbon(addin, &ribbon);
    static DWORD value = 7000;
    std::atomic<DWORD> first = 0;
    std::atomic<bool> secondWorks = false;
    onSent = [&] {
        for (int i = 0; i < 100 && !secondWorks; ++i) {
            WriteWindows(++value);
            Sleep(20);
        }
    };
    ribbon.onInvalidate = [&] {
        if (first.exchange(first ? first.load() : GetCurrentThreadId()) == 0) {
            SendMessageW(window.Get(), WM_APP, 0, 0);
        } else if (first != GetCurrentThreadId()) {
            secondWorks = true;
        }
    };
    EXPECT_TRUE(ChangeIsSeen(ribbon, WriteOffice));
    EXPECT_EQ(addin->OnDisconnection(ext_dm_HostShutdown, nullptr), S_OK);
    onSent = nullptr;
    EXPECT_TRUE(secondWorks) << "while the first was being stopped";
}

TEST_F(ThemeWatch, LastReferenceMayGoDuringDisconnection) {
    auto* addin = new ZOfficeAddin;
    const TestWindow window;
    SetWindowLongPtrW(window.Get(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&AnswerSent));
    ScriptedRibbon ribbon;
    ScriptedDispatch application;
    addin->state.application = &application;
    VARIANT argument = ObjectArgument(&ribbon);
    DISPPARAMS params = {&argument, nullptr, 1, 0};
    addin->Invoke(1001, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr);
    ULONG left = 0;
    onSent = [&] {
        left = addin->Release();
        onSent = nullptr;
    };
    ribbon.onInvalidate = [&] { SendMessageW(window.Get(), WM_APP, 0, 0); };
    EXPECT_TRUE(ChangeIsSeen(ribbon, WriteOffice));
    EXPECT_EQ(addin->OnDisconnection(ext_dm_HostShutdown, nullptr), S_OK);
    EXPECT_EQ(left, 1U) << "the disconnection's own";
    EXPECT_EQ(ribbon.References(), 1U);
    EXPECT_EQ(application.References(), 1U);
}

TEST_F(ThemeWatch, RibbonThatCallsWhileADyingObjectReleasesItIsHarmless) {
    ScriptedRibbon ribbon;
    {
        const AddinObject addin;
        LoadRibbon(addin, &ribbon);
        ribbon.onRelease = [&ribbon, object = addin.Get()] {
            ribbon.onRelease = nullptr;
            VARIANT argument = ObjectArgument(&ribbon);
            DISPPARAMS params = {&argument, nullptr, 1, 0};
            EXPECT_EQ(object->Invoke(1001, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr), S_OK);
        };
    }
    EXPECT_EQ(ribbon.References(), 1U);
}
