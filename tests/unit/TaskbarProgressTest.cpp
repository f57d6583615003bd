// Progress on the taskbar, with a recording object in the shell's place.
#include "src/ui/TaskbarProgress.h"

#include <gtest/gtest.h>

#include "src/outlook/CreateCommands.h"
#include "src/outlook/OpenAttachments.h"
#include "src/outlook/Portfolio.h"
#include "tests/support/ForegroundWindow.h"
#include "tests/support/OutlookCommandTest.h"
#include "tests/support/RecordedTaskbar.h"

namespace {

using Lines = std::vector<std::string>;

std::string Number(HWND window) { return std::to_string(reinterpret_cast<LONG_PTR>(window)); }

// What the taskbar is told of that many steps.
Lines Progress(HWND window, int steps) {
    Lines lines;
    for (int step = 1; step <= steps; ++step) {
        lines.push_back("value " + Number(window) + " " + std::to_string(step) + " of " + std::to_string(steps));
    }
    lines.push_back("state " + Number(window) + " 0");
    return lines;
}

class ProgressOfCommands : public OutlookCommandTest {
protected:
    ProgressOfCommands() { state_.application = &outlook_.application; }

    void AddContacts(int count) {
        for (int i = 0; i < count; ++i) outlook_.AddOther(L"IPM.Contact");
    }
    // Of the commands that walk mails.
    std::vector<std::function<bool()>> Commands() {
        IDispatch* application = &outlook_.application;
        return {[=, this] { return OpenPdfAttachmentsFromSelection(state_, application, folder_.Path()); },
                [=, this] { return OpenPdfAttachmentsFromFolder(state_, application, folder_.Path()); },
                [=, this] { return CreatePdfFromSelection(state_, application, folder_.Path()); },
                [=, this] { return CreatePdfFromFolder(state_, application, folder_.Path(), false); },
                [=, this] { return CreatePdfFromFolder(state_, application, folder_.Path(), true); },
                [=, this] { return CreatePortfolioFromSelection(state_, application, folder_.Path()); }};
    }

    RecordedTaskbar taskbar_;
    const CompanionProbe companion_;
    ForegroundWindow window_{L"rctrl_renwnd32"};
};

}  // namespace

TEST(TaskbarProgress, IsShownFromTenStepsOnAndClearedInTheEnd) {
    RecordedTaskbar taskbar;
    const ForegroundWindow window(L"ZavoProgress");
    for (const int steps : {9, 10}) {
        {
            TaskbarProgress progress(window.Get(), steps);
            for (int step = 1; step <= steps; ++step) progress.Show(step);
        }
        EXPECT_EQ(taskbar.TakeCalls(), steps < 10 ? Lines{} : Progress(window.Get(), 10));
        EXPECT_EQ(taskbar.Made(), steps < 10 ? 0 : 1);
        EXPECT_EQ(taskbar.Gone(), taskbar.Made());
    }
}

TEST(TaskbarProgress, IsNotShownWithoutAWindow) {
    RecordedTaskbar taskbar;
    { TaskbarProgress(nullptr, 100).Show(1); }
    EXPECT_EQ(taskbar.TakeCalls(), Lines{});
    EXPECT_EQ(taskbar.Made(), 0);
}

TEST(TaskbarProgress, IsNotShownWhereTheTaskbarIsNotToBeHad) {
    RecordedTaskbar taskbar;
    const ForegroundWindow window(L"ZavoProgress");
    SetEnvironmentVariableW(L"ZAVO_TASKBAR_FAIL", L"1");
    { TaskbarProgress(window.Get(), 100).Show(1); }
    EXPECT_EQ(taskbar.TakeCalls(), Lines{}) << "it cannot be initialised";
    EXPECT_EQ(taskbar.Made(), 1);
    EXPECT_EQ(taskbar.Gone(), 1);
    RecordedTaskbar::Register(L"no such library.dll");
    { TaskbarProgress(window.Get(), 100).Show(1); }
    EXPECT_EQ(taskbar.Made(), 1) << "there is none";
    CoUninitialize();
    { TaskbarProgress(window.Get(), 100).Show(1); }
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
}

TEST_F(ProgressOfCommands, IsShownOnTheHostsWindowAfterEachItem) {
    companion_.MakePortfolios(L"portfolio");
    AddContacts(11);
    outlook_.AddItem(nullptr);
    for (const auto& command : Commands()) {
        const DialogRobot robot({});
        EXPECT_FALSE(command());
        EXPECT_EQ(taskbar_.TakeCalls(), Progress(window_.Get(), 12));
        EXPECT_EQ(taskbar_.Gone(), 1);
    }
}

TEST_F(ProgressOfCommands, IsNotShownForNineItems) {
    companion_.MakePortfolios(L"portfolio");
    AddContacts(9);
    for (const auto& command : Commands()) {
        const DialogRobot robot({});
        EXPECT_FALSE(command());
        EXPECT_EQ(taskbar_.TakeCalls(), Lines{});
    }
}

TEST_F(ProgressOfCommands, IsNotShownForTheAttachmentsOfAMail) {
    ScriptedMail& mail = outlook_.AddMail(L"Hello");
    for (int i = 0; i < 20; ++i) mail.Attach(std::to_wstring(i) + L".pdf", "A");
    EXPECT_TRUE(Commands()[0]());
    EXPECT_EQ(taskbar_.TakeCalls(), Lines{});
}

TEST_F(ProgressOfCommands, IsClearedBeforeTheMessageComes) {
    AddContacts(10);
    Lines calls;
    outlook_.AddMail(L"RE: x").object.On(L"Subject", [&](VARIANT* result) {
        window_.Close();
        return GiveText(result, L"RE: x");
    });
    const HWND window = window_.Get();
    const DialogRobot robot({});
    EXPECT_FALSE(Commands()[2]());
    EXPECT_EQ(robot.Seen().size(), 2U) << "also where the window is closed by now";
    EXPECT_EQ(taskbar_.TakeCalls(), Progress(window, 11));
}
