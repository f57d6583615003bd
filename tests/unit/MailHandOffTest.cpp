// The hand-off to a mail program that records what it gets.
#include "src/export/MailHandOff.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "standins/common/Text.h"
#include "tests/support/Files.h"

namespace {

class MailHandOff : public testing::Test {
protected:
    MailHandOff() {
        SetEnvironmentVariableW(L"ZAVO_MAIL_LOG", folder_.Path(L"mail.log").c_str());
        SetEnvironmentVariableW(L"ZAVO_MAIL_DELAY", nullptr);
        SetEnvironmentVariableW(L"ZAVO_MAIL_RESULT", nullptr);
    }

    std::vector<std::wstring> Calls() const {
        std::vector<std::wstring> calls;
        std::wstring text = Wide(ReadFileText(folder_.Path(L"mail.log")));
        for (size_t end; (end = text.find(L'\n')) != std::wstring::npos; text.erase(0, end + 1)) {
            calls.push_back(text.substr(0, end));
        }
        return calls;
    }

    const TemporaryFolder folder_;
};

// What a narrow text looks like to a function that takes it for a wide one.
std::wstring SeenAsWide(const std::string& narrow) {
    std::wstring wide(narrow.size() / 2 + 1, L'\0');
    memcpy(wide.data(), narrow.data(), narrow.size());
    return wide.c_str();
}

std::wstring WithoutThread(const std::wstring& call) {
    const size_t at = call.find(L" thread=");
    return call.substr(0, at) + call.substr(call.find(L' ', at + 1));
}

std::wstring ThreadOf(const std::wstring& call) {
    const size_t at = call.find(L" thread=") + 8;
    return call.substr(at, call.find(L' ', at) - at);
}

constexpr wchar_t head[] = L"mail: session=0 owner=4660 callflags=9 callreserved=0 reserved=0";
constexpr wchar_t middle[] =
    L" note=null type=null date=null conversation=null flags=0 originator=null recipients=0,null files=1 "
    L"file{reserved=0 flags=0 position=0xFFFFFFFF";

}  // namespace

TEST_F(MailHandOff, FirstCallHandsOverTheFileOnTheCallersThread) {
    SendFileByMail(reinterpret_cast<HWND>(LONG_PTR{0x1234}), L"C:\\Out\\Report.final.pdf");
    ASSERT_EQ(Calls().size(), 2U);
    EXPECT_EQ(WithoutThread(Calls()[0]), std::wstring(head) + L" subject=[Report.final]" + middle +
                                             L" path=[C:\\Out\\Report.final.pdf] name=[Report.final] type=null}");
    EXPECT_EQ(ThreadOf(Calls()[0]), std::to_wstring(GetCurrentThreadId()));
}

TEST_F(MailHandOff, SecondCallHandsNarrowTextsAndTheBareNameToTheWideFunctionOnAnotherThread) {
    SendFileByMail(reinterpret_cast<HWND>(LONG_PTR{0x1234}), L"C:\\Out\\Report.final.pdf");
    ASSERT_EQ(Calls().size(), 2U);
    const std::wstring name = SeenAsWide("Report.final");
    EXPECT_EQ(WithoutThread(Calls()[1]), std::wstring(head) + L" subject=[" + name + L"]" + middle + L" path=[" + name +
                                             L"] name=[" + name + L"] type=null}");
    EXPECT_NE(ThreadOf(Calls()[1]), std::to_wstring(GetCurrentThreadId()));
}

TEST_F(MailHandOff, NameOfOddLengthEndsWhereItEnds) {
    SendFileByMail(nullptr, L"C:\\Out\\abc.pdf");
    ASSERT_EQ(Calls().size(), 2U);
    EXPECT_NE(Calls()[1].find(L"subject=[" + SeenAsWide("abc") + L"]"), std::wstring::npos);
}

TEST_F(MailHandOff, FileWithoutANameHasNoAttachmentInTheSecondCall) {
    SendFileByMail(nullptr, L".pdf");
    ASSERT_EQ(Calls().size(), 2U);
    EXPECT_NE(Calls()[0].find(L"path=[.pdf] name=[]"), std::wstring::npos);
    EXPECT_NE(Calls()[1].find(L"subject=[] "), std::wstring::npos);
    EXPECT_NE(Calls()[1].find(L"files=0"), std::wstring::npos);
}

TEST_F(MailHandOff, ErrorOfTheMailProgramIsSilent) {
    SetEnvironmentVariableW(L"ZAVO_MAIL_RESULT", L"2");
    SendFileByMail(nullptr, L"C:\\Out\\a.pdf");
    EXPECT_EQ(Calls().size(), 2U);
}

TEST_F(MailHandOff, InputDuringTheSecondCallIsConsumedWithoutEffect) {
    static int received = 0;
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        if (message == WM_KEYDOWN || message == WM_CHAR || message == WM_LBUTTONDOWN || message == WM_APP) ++received;
        return DefWindowProcW(window, message, wParam, lParam);
    };
    windowClass.lpszClassName = L"MailOwner";
    RegisterClassW(&windowClass);
    const HWND window =
        CreateWindowW(L"MailOwner", L"", WS_OVERLAPPEDWINDOW, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    SetEnvironmentVariableW(L"ZAVO_MAIL_DELAY", L"400");
    std::thread typist([&] {
        while (Calls().size() < 2) Sleep(10);  // the second call is open
        for (int i = 0; i < 20; ++i) {
            PostMessageW(window, i % 2 ? WM_KEYDOWN : WM_LBUTTONDOWN, 'A', 0);
            Sleep(10);  // as a user would: the wait wakes for every new message
        }
    });
    SendFileByMail(window, L"C:\\Out\\a.pdf");
    typist.join();
    MSG msg;
    EXPECT_FALSE(PeekMessageW(&msg, window, 0, 0, PM_REMOVE)) << msg.message;
    EXPECT_EQ(received, 0);
    DestroyWindow(window);
}

TEST_F(MailHandOff, InputIsRemovedEightMessagesAtATime) {
    // Never shown: a visible window's paint messages would count too.
    const HWND window =
        CreateWindowW(L"STATIC", L"", WS_OVERLAPPEDWINDOW, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    MSG msg;
    for (int i = 0; i < 100 && PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE); ++i) {
    }
    SetEnvironmentVariableW(L"ZAVO_MAIL_DELAY", L"300");
    std::thread typist([&] {
        while (Calls().size() < 2) Sleep(10);
        Sleep(100);
        PostMessageW(window, WM_KEYDOWN, 'A', 0);
    });
    for (int i = 0; i < 20; ++i) PostMessageW(window, WM_KEYDOWN, 'A', 0);
    SendFileByMail(window, L"C:\\Out\\a.pdf");
    typist.join();
    // The twenty wake the wait once and the one once more: sixteen are gone.
    int left = 0;
    while (PeekMessageW(&msg, window, WM_KEYDOWN, WM_KEYDOWN, PM_REMOVE)) ++left;
    EXPECT_EQ(left, 5);
    DestroyWindow(window);
}
