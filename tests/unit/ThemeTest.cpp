// The themes as the registry gives them.
#include "src/ui/Theme.h"

#include <gtest/gtest.h>

#include "src/ui/RibbonImages.h"
#include "tests/support/ThemeKeys.h"

namespace {

class Theme : public testing::Test {
protected:
    const ThemeKeys keys_;
};

}  // namespace

TEST_F(Theme, WindowsIsLightWhereNothingIsStored) {
    EXPECT_TRUE(IsWindowsAppsLightTheme());
    ThemeKeys::SetWindows(0);
    EXPECT_FALSE(IsWindowsAppsLightTheme());
    ThemeKeys::SetWindows(1);
    EXPECT_TRUE(IsWindowsAppsLightTheme());
    ThemeKeys::SetWindows(2);
    EXPECT_FALSE(IsWindowsAppsLightTheme());
}

TEST_F(Theme, ValueOfFortyBytesCountsAsMissing) {
    const BYTE text[40] = {2};
    ThemeKeys::Set(windowsThemeKey, windowsThemeValue, REG_SZ, text, sizeof text);
    EXPECT_TRUE(IsWindowsAppsLightTheme());
    ThemeKeys::Set(ThemeKeys::Office(L"16.0"), officeThemeValue, REG_SZ, text, sizeof text);
    EXPECT_EQ(GetOfficeUiTheme(), -1);
    ThemeKeys::SetOffice(L"15.0", 3);
    EXPECT_EQ(GetOfficeUiTheme(), 3);
}

TEST_F(Theme, TypeOfTheValueIsNotLookedAt) {
    const DWORD four = 4;
    ThemeKeys::Set(ThemeKeys::Office(L"16.0"), officeThemeValue, REG_BINARY, &four, sizeof four);
    EXPECT_EQ(GetOfficeUiTheme(), 4);
    const BYTE one = 1;
    ThemeKeys::Set(ThemeKeys::Office(L"16.0"), officeThemeValue, REG_BINARY, &one, 1);
    EXPECT_EQ(GetOfficeUiTheme(), 1);
    ThemeKeys::Set(windowsThemeKey, windowsThemeValue, REG_BINARY, &one, 0);
    EXPECT_TRUE(IsWindowsAppsLightTheme());  // the buffer starts at 1
}

TEST_F(Theme, NewestVersionThatStoresAThemeDecides) {
    EXPECT_EQ(GetOfficeUiTheme(), -1);
    ThemeKeys::SetOffice(L"12.0", 1);
    EXPECT_EQ(GetOfficeUiTheme(), 1);
    ThemeKeys::SetOffice(L"14.0", 2);
    EXPECT_EQ(GetOfficeUiTheme(), 2);
    ThemeKeys::SetOffice(L"15.0", 3);
    EXPECT_EQ(GetOfficeUiTheme(), 3);
    ThemeKeys::SetOffice(L"16.0", 4);
    EXPECT_EQ(GetOfficeUiTheme(), 4);
}

TEST_F(Theme, KeyThatHeldTheThemeIsRemembered) {
    EXPECT_EQ(OfficeCommonKeyPath(), L"");  // every test is a process of its own
    ThemeKeys::SetOffice(L"15.0", 3);
    GetOfficeUiTheme();
    EXPECT_EQ(OfficeCommonKeyPath(), L"Software\\Microsoft\\Office\\15.0\\Common");
    ThemeKeys::Clear();
    EXPECT_EQ(GetOfficeUiTheme(), -1);
    EXPECT_EQ(OfficeCommonKeyPath(), L"Software\\Microsoft\\Office\\15.0\\Common");
}

TEST_F(Theme, KeyOfASystemSettingIsRememberedToo) {
    ThemeKeys::SetOffice(L"15.0", 6);
    GetOfficeUiTheme();
    EXPECT_EQ(OfficeCommonKeyPath(), L"Software\\Microsoft\\Office\\15.0\\Common");
}

TEST_F(Theme, SystemSettingFollowsWindows) {
    ThemeKeys::SetOffice(L"16.0", 6);
    EXPECT_EQ(GetOfficeUiTheme(), 2);
    ThemeKeys::SetWindows(0);
    EXPECT_EQ(GetOfficeUiTheme(), 1);
}

TEST_F(Theme, OfficesThemeDecidesTheSetOfTheRibbonsImages) {
    const struct {
        DWORD theme;
        bool light;
    } rows[] = {{0, true}, {1, false}, {2, true},  {3, true},   {4, false},
                {5, true}, {7, false}, {8, false}, {32, false}, {0xFFFFFFFF, false}};
    for (const DWORD windows : {0U, 1U}) {
        ThemeKeys::SetWindows(windows);
        for (const auto& row : rows) {
            ThemeKeys::SetOffice(L"16.0", row.theme);
            for (LONG number = 10; number <= 18; ++number) {
                EXPECT_EQ(ResolveIconResourceId(number), (row.light ? 100 : 200) + number) << row.theme;
            }
        }
    }
}

TEST_F(Theme, SystemSettingGivesTheSetOfWindows) {
    ThemeKeys::SetOffice(L"16.0", 6);
    ThemeKeys::SetWindows(0);
    EXPECT_EQ(ResolveIconResourceId(10), 210);
    ThemeKeys::SetWindows(1);
    EXPECT_EQ(ResolveIconResourceId(10), 110);
}

TEST_F(Theme, WithoutAnOfficeThemeTheSetIsDarkEvenWhenWindowsIsLight) {
    ThemeKeys::SetWindows(1);
    for (LONG number = 10; number <= 18; ++number) EXPECT_EQ(ResolveIconResourceId(number), 200 + number);
}

TEST_F(Theme, OldImageNumbersFollowWindowsAndKeepTheirScrambledRows) {
    const LONG light[] = {100, 103, 102, 104, 101, 105, 108, 107, 109, 106};
    ThemeKeys::SetOffice(L"16.0", 4);
    for (LONG number = 0; number < 10; ++number) EXPECT_EQ(ResolveIconResourceId(number), light[number]);
    ThemeKeys::SetWindows(0);
    for (LONG number = 0; number < 10; ++number) EXPECT_EQ(ResolveIconResourceId(number), light[number] + 100);
    for (const LONG number : {-1, 19, 100, 1000}) EXPECT_EQ(ResolveIconResourceId(number), 100);
}
