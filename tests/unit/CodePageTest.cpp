// Conversions to and from the ANSI code page, and the buffer of each thread.
#include "src/automation/CodePage.h"

#include <windows.h>
#include <gtest/gtest.h>

#include <cstring>
#include <thread>

TEST(CodePage, AnsiTextBecomesWide) {
    EXPECT_EQ(AnsiToWide("plain"), L"plain");
    EXPECT_EQ(AnsiToWide(""), L"");
    EXPECT_EQ(AnsiToWide(nullptr), L"");
    ASSERT_EQ(GetACP(), 1252U) << "run the tests through scripts/test, which sets the locale";
    EXPECT_EQ(AnsiToWide("\xE9t\xE9"), L"\u00E9t\u00E9");
}

TEST(CodePage, WideTextBecomesAnsi) {
    EXPECT_STREQ(WideToAnsi(L"plain"), "plain");
    EXPECT_STREQ(WideToAnsi(L"\u00E9t\u00E9"), "\xE9t\xE9");
    EXPECT_STREQ(WideToAnsi(L"\u4E00"), "?");  // the code page has no such character
}

TEST(CodePage, BufferEndsInFourZeroBytes) {
    for (const wchar_t* text : {L"", L"a", L"ab", L"Report.final"}) {
        const char* ansi = WideToAnsi(text);
        constexpr char zeros[4] = {};
        EXPECT_EQ(memcmp(ansi + wcslen(text), zeros, sizeof zeros), 0) << wcslen(text);
    }
}

TEST(CodePage, BufferIsTheThreadsOwnAndReused) {
    const std::wstring longText(300, L'x');
    const char* mine = WideToAnsi(longText);
    const char* others = nullptr;
    std::thread([&] {
        others = WideToAnsi(L"other thread");
        EXPECT_STREQ(others, "other thread");
    }).join();
    EXPECT_NE(mine, others);
    EXPECT_EQ(mine[299], 'x');
    EXPECT_EQ(WideToAnsi(L"next"), mine);  // no growth, so the same memory
    EXPECT_STREQ(mine, "next");
}
