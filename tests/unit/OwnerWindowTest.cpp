// The window that owns dialogs, in each host, with real foreground windows.
#include "src/export/OwnerWindow.h"

#include <gtest/gtest.h>

#include "tests/support/AddinObject.h"
#include "tests/support/ForegroundWindow.h"
#include "tests/support/ScriptedDispatch.h"

TEST(OwnerWindow, NoApplicationHasNone) {
    for (const Host host : {HostWord, HostExcel, HostPowerPoint, HostOutlook, HostUnknown}) {
        EXPECT_EQ(GetOwnerWindow(StateOf(host, nullptr)), nullptr) << host;
    }
}

TEST(OwnerWindow, WordAndExcelGiveTheActiveWindowsHandle) {
    for (const Host host : {HostWord, HostExcel, HostUnknown}) {
        ScriptedDispatch window;
        window.GiveNumber(L"hwnd", 0x1234);
        ScriptedDispatch application;
        application.GiveObject(L"ActiveWindow", &window);
        EXPECT_EQ(GetOwnerWindow(StateOf(host, &application)), reinterpret_cast<HWND>(LONG_PTR{0x1234})) << host;
        EXPECT_EQ(window.References(), 1U);
    }
}

TEST(OwnerWindow, EveryFailureOnTheWayGivesNone) {
    ScriptedDispatch noWindow;
    EXPECT_EQ(GetOwnerWindow(StateOf(HostWord, &noWindow)), nullptr);

    ScriptedDispatch wrongType;
    wrongType.GiveNumber(L"ActiveWindow", 5);
    EXPECT_EQ(GetOwnerWindow(StateOf(HostWord, &wrongType)), nullptr);

    for (const VARTYPE type : {VARTYPE{VT_I8}, VARTYPE{VT_BSTR}, VARTYPE{VT_EMPTY}}) {
        ScriptedDispatch window;
        window.GiveType(L"hwnd", type);
        ScriptedDispatch application;
        application.GiveObject(L"ActiveWindow", &window);
        EXPECT_EQ(GetOwnerWindow(StateOf(HostWord, &application)), nullptr) << type;
    }
}

TEST(OwnerWindow, PowerPointsOwnerIsTheForegroundWindowOfItsFrameClassOnly) {
    ScriptedDispatch application;
    {
        const ForegroundWindow frame(L"PPTFrameClass");
        EXPECT_EQ(GetOwnerWindow(StateOf(HostPowerPoint, &application)), frame.Get());
        EXPECT_EQ(GetOwnerWindow(StateOf(HostOutlook, &application)), nullptr);
    }
    const ForegroundWindow other(L"PPTFrameClass2");
    EXPECT_EQ(GetOwnerWindow(StateOf(HostPowerPoint, &application)), nullptr);
    EXPECT_TRUE(application.lookups.empty());
}

TEST(OwnerWindow, OutlooksOwnerIsTheForegroundWindowOfItsFrameClassOnly) {
    ScriptedDispatch application;
    {
        const ForegroundWindow frame(L"rctrl_renwnd32");
        EXPECT_EQ(GetOwnerWindow(StateOf(HostOutlook, &application)), frame.Get());
        EXPECT_EQ(GetOwnerWindow(StateOf(HostPowerPoint, &application)), nullptr);
    }
    const ForegroundWindow other(L"OpusApp");
    EXPECT_EQ(GetOwnerWindow(StateOf(HostOutlook, &application)), nullptr);
}
