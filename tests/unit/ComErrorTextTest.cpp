// The texts of result codes and the box that shows them.
#include "src/automation/ComErrorText.h"

#include <gtest/gtest.h>

#include "standins/office/DialogRobot.h"

TEST(ComErrorText, FallbackNumbersDispatchErrorsAfterThe0x200th) {
    EXPECT_EQ(FallbackErrorText(static_cast<HRESULT>(0x80040201)), "IDispatch error #1");
    EXPECT_EQ(FallbackErrorText(static_cast<HRESULT>(0x80040205)), "IDispatch error #5");
    EXPECT_EQ(FallbackErrorText(static_cast<HRESULT>(0x8004FFFF)), "IDispatch error #65023");
}

TEST(ComErrorText, FallbackShowsEveryOtherCodeInHexadecimal) {
    EXPECT_EQ(FallbackErrorText(static_cast<HRESULT>(0x80040200)), "Unknown error 0x80040200");
    EXPECT_EQ(FallbackErrorText(static_cast<HRESULT>(0x80050000)), "Unknown error 0x80050000");
    EXPECT_EQ(FallbackErrorText(static_cast<HRESULT>(0x800401FF)), "Unknown error 0x800401FF");
    EXPECT_EQ(FallbackErrorText(S_OK), "Unknown error 0x0");
}

TEST(ComErrorText, OneLineEndIsCut) {
    const struct {
        const char* text;
        const char* cut;
    } rows[] = {{"a\r\n", "a"}, {"a\n", "a"},           {"a", "a"},   {"", ""},
                {"\n", "\n"},   {"a\r\n\r\n", "a\r\n"}, {"\r\n", ""}, {"a\n\r", "a\n\r"}};
    for (const auto& row : rows) {
        char text[16];
        strcpy(text, row.text);
        CutLineEnd(text);
        EXPECT_STREQ(text, row.cut);
    }
}

TEST(ComErrorText, CodeWithASystemTextUsesItWithoutLineEnd) {
    const std::wstring text = ComErrorText(E_ACCESSDENIED);
    ASSERT_FALSE(text.empty());
    EXPECT_EQ(text.find(L"error"), std::wstring::npos);
    EXPECT_EQ(text.find_first_of(L"\r\n"), std::wstring::npos);
}

TEST(ComErrorText, CodeWithoutASystemTextUsesTheFallback) {
    EXPECT_EQ(ComErrorText(static_cast<HRESULT>(0x8004ABCD)), L"IDispatch error #43469");
    EXPECT_EQ(ComErrorText(static_cast<HRESULT>(0x8ABC1234)), L"Unknown error 0x8ABC1234");
}

TEST(ComErrorText, MessageBoxShowsTitleAndText) {
    const DialogRobot robot({});
    ShowComError(static_cast<HRESULT>(0x8004ABCD), L"The title");
    const auto seen = robot.Seen();
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0].caption, L"The title");
    EXPECT_EQ(seen[0].text, L"IDispatch error #43469");
}
