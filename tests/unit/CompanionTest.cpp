// Finding the companion in the real registry, starting a real one, and the message for nothing to open.
#include "src/export/Companion.h"

#include <gtest/gtest.h>

#include "src/ui/StringTable.h"
#include "standins/office/DialogRobot.h"
#include "tests/support/CompanionProbe.h"
#include "tests/support/ScriptedDispatch.h"
#include "tests/support/TestLanguage.h"
#include "tests/support/TestWindow.h"

namespace {

constexpr wchar_t userKey[] = L"SOFTWARE\\ZAVO";
constexpr wchar_t machine32Key[] = L"SOFTWARE\\WOW6432Node\\ZAVO";
constexpr wchar_t machineKey[] = L"SOFTWARE\\ZAVO";

class Companion : public testing::Test {
protected:
    const CompanionKeys keys_;
};

}  // namespace

TEST_F(Companion, IsNotFoundWithoutAnInstallPath) { EXPECT_EQ(FindCompanionExecutable(), L""); }

TEST_F(Companion, UsersInstallPathWinsOverTheMachines) {
    CompanionKeys::Set(HKEY_LOCAL_MACHINE, machineKey, L"C:\\machine");
    CompanionKeys::Set(HKEY_LOCAL_MACHINE, machine32Key, L"C:\\machine32");
    CompanionKeys::Set(HKEY_CURRENT_USER, userKey, L"C:\\user");
    EXPECT_EQ(FindCompanionExecutable(), L"C:\\user\\ZAVO.exe");
}

TEST_F(Companion, MachinesThirtyTwoBitPathWinsOverTheOther) {
    CompanionKeys::Set(HKEY_LOCAL_MACHINE, machineKey, L"C:\\machine");
    EXPECT_EQ(FindCompanionExecutable(), L"C:\\machine\\ZAVO.exe");
    CompanionKeys::Set(HKEY_LOCAL_MACHINE, machine32Key, L"C:\\machine32");
    EXPECT_EQ(FindCompanionExecutable(), L"C:\\machine32\\ZAVO.exe");
}

TEST_F(Companion, KeyWithoutTheValueIsPassedOver) {
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, userKey, 0, nullptr, 0, KEY_WRITE, nullptr, &key, nullptr);
    RegCloseKey(key);
    CompanionKeys::Set(HKEY_LOCAL_MACHINE, machineKey, L"C:\\machine");
    EXPECT_EQ(FindCompanionExecutable(), L"C:\\machine\\ZAVO.exe");
}

TEST_F(Companion, PathThatEndsInASeparatorGetsASecondOne) {
    CompanionKeys::Set(HKEY_CURRENT_USER, userKey, L"C:\\user\\");
    EXPECT_EQ(FindCompanionExecutable(), L"C:\\user\\\\ZAVO.exe");
}

TEST_F(Companion, EmptyPathIsStillAnAnswer) {
    CompanionKeys::Set(HKEY_CURRENT_USER, userKey, L"");
    CompanionKeys::Set(HKEY_LOCAL_MACHINE, machineKey, L"C:\\machine");
    EXPECT_EQ(FindCompanionExecutable(), L"\\ZAVO.exe");
}

TEST_F(Companion, InstallPathIsNeverReadPastItsEnd) {
    // A long value first: what it leaves on the stack must not show in the next one.
    CompanionKeys::Set(HKEY_CURRENT_USER, userKey, std::wstring(259, L'x'));
    EXPECT_EQ(FindCompanionExecutable(), std::wstring(259, L'x') + L"\\ZAVO.exe");
    CompanionKeys::Set(HKEY_CURRENT_USER, userKey, REG_BINARY, L"C:\\user", 7 * sizeof(wchar_t));
    EXPECT_EQ(FindCompanionExecutable(), L"C:\\user\\ZAVO.exe");
    CompanionKeys::Set(HKEY_CURRENT_USER, userKey, REG_BINARY, L"C:\\user", 7 * sizeof(wchar_t) + 1);
    EXPECT_EQ(FindCompanionExecutable(), L"C:\\user\\ZAVO.exe");
    CompanionKeys::Set(HKEY_CURRENT_USER, userKey, REG_SZ, L"C:\\a\0b", 7 * sizeof(wchar_t));
    EXPECT_EQ(FindCompanionExecutable(), L"C:\\a\\ZAVO.exe");
    const std::wstring full(260, L'p');
    CompanionKeys::Set(HKEY_CURRENT_USER, userKey, REG_BINARY, full.data(), 260 * sizeof(wchar_t));
    EXPECT_EQ(FindCompanionExecutable(), full + L"\\ZAVO.exe");
}

TEST_F(Companion, OverlongPathIsPassedOver) {
    CompanionKeys::Set(HKEY_CURRENT_USER, userKey, std::wstring(260, L'p'));  // 261 with its terminating zero
    CompanionKeys::Set(HKEY_LOCAL_MACHINE, machineKey, L"C:\\machine");
    EXPECT_EQ(FindCompanionExecutable(), L"C:\\machine\\ZAVO.exe");
}

TEST_F(Companion, TypeOfTheValueIsNotLookedAt) {
    const DWORD number = 0x00420041;  // "AB" in two characters
    CompanionKeys::Set(HKEY_CURRENT_USER, userKey, REG_DWORD, &number, sizeof number);
    EXPECT_EQ(FindCompanionExecutable(), L"AB\\ZAVO.exe");
}

TEST_F(Companion, FilesAreQuotedEachFollowedByABlank) {
    const CompanionProbe companion;
    EXPECT_TRUE(OpenInCompanion(AddinState(), {L"C:\\a.pdf", L"C:\\b c.pdf"}, L"unused"));
    EXPECT_EQ(companion.WaitForParameters(), L" \"C:\\a.pdf\" \"C:\\b c.pdf\" ");
}

TEST_F(Companion, MissingCompanionIsSilent) {
    const DialogRobot robot({});
    EXPECT_TRUE(OpenInCompanion(AddinState(), {L"C:\\a.pdf"}, L"There are no PDF attachments that can be opened"));
    const TemporaryFolder folder;  // without ZAVO.exe
    CompanionKeys::Set(HKEY_CURRENT_USER, userKey, folder.Path());
    EXPECT_TRUE(OpenInCompanion(AddinState(), {L"C:\\a.pdf"}, L"There are no PDF attachments that can be opened"));
    EXPECT_TRUE(robot.Seen().empty());
}

TEST_F(Companion, EmptyListShowsTheMessageEvenWhenTheCompanionIsInstalled) {
    const CompanionProbe companion;
    const DialogRobot robot({});
    EXPECT_FALSE(OpenInCompanion(AddinState(), {}, L"There are no PDF attachments that can be opened"));
    ASSERT_EQ(robot.Seen().size(), 1U);
    const SeenDialog box = robot.Seen()[0];
    const bool german = TestLanguage() == UiLanguage::German;
    EXPECT_EQ(box.caption, german ? L"ZAVO-Add-in" : L"ZAVO Add-in");
    EXPECT_EQ(box.text, german ? L"Es gibt keine PDF-Anhänge, die geöffnet werden können"
                               : L"There are no PDF attachments that can be opened");
    EXPECT_EQ(box.icon, LoadIconW(nullptr, IDI_WARNING));
    EXPECT_EQ(box.owner, nullptr);
    EXPECT_FALSE(companion.WasStarted());
}

TEST_F(Companion, MessageBelongsToTheHostsWindow) {
    const TestWindow owner;
    ScriptedDispatch window;
    window.GiveNumber(L"hwnd", owner.Number());
    ScriptedDispatch application;
    application.GiveObject(L"ActiveWindow", &window);
    AddinState state;
    state.host = HostExcel;
    state.application = &application;
    const DialogRobot robot({});
    EXPECT_FALSE(OpenInCompanion(state, {}, L"There are no emails that can be created as PDFs"));
    ASSERT_EQ(robot.Seen().size(), 1U);
    EXPECT_EQ(robot.Seen()[0].owner, owner.Get());
    state.application.Reset();
}

TEST_F(Companion, MessageShowsAnUnknownKeyAsItIs) {
    const DialogRobot robot({});
    ShowMessage(nullptr, Localize(GetLocalizedStringTable(), L"no such key"), L"caption", MB_ICONWARNING);
    ASSERT_EQ(robot.Seen().size(), 1U);
    EXPECT_EQ(robot.Seen()[0].text, L"no such key");
}

TEST_F(Companion, CommandPutsPathAndWordInOnePairOfQuotationMarks) {
    const CompanionProbe companion(2000);
    EXPECT_TRUE(RunCompanionCommand(L"C:\\Temp\\Box"));
    EXPECT_EQ(companion.CommandLine(),
              L"\"" + companion.Executable() + L"\" \"C:\\Temp\\Box ZAVO_Q1JFQVRFX0VNUFRZX1BPUlRGT0xJTw\"");
}

TEST_F(Companion, CommandIsWaitedForHoweverLongItTakes) {
    const CompanionProbe companion(2000);
    SetEnvironmentVariableW(L"ZAVO_PROBE_DELAY", L"4000");
    const bool done = RunCompanionCommand(L"C:\\Temp\\Box");
    SetEnvironmentVariableW(L"ZAVO_PROBE_DELAY", nullptr);
    EXPECT_TRUE(done);
}

TEST_F(Companion, CommandSucceedsWithItsExitCodeOnly) {
    for (const DWORD code : {0U, 1U, 1999U, 2001U, 2000U + 65536U}) {
        const CompanionProbe companion(code);
        EXPECT_FALSE(RunCompanionCommand(L"C:\\Temp\\Box")) << code;
    }
}

TEST_F(Companion, CommandFailsWithoutACompanion) {
    EXPECT_FALSE(RunCompanionCommand(L"C:\\Temp\\Box"));
    const TemporaryFolder folder;  // without ZAVO.exe
    CompanionKeys::Set(HKEY_CURRENT_USER, userKey, folder.Path());
    EXPECT_FALSE(RunCompanionCommand(L"C:\\Temp\\Box"));
}
