// Scaling to the screen. ZAVO_TEST_DPI says what the screen has where it is not 96.
#include "src/ui/ScreenScale.h"

#include <gtest/gtest.h>

#include "standins/common/Text.h"
#include "tests/support/TestWindow.h"

namespace {

int ScreenDpi() {
    const std::wstring dpi = Environment(L"ZAVO_TEST_DPI");
    return dpi.empty() ? 96 : static_cast<int>(wcstol(dpi.c_str(), nullptr, 10));
}

}  // namespace

TEST(ScreenScale, WindowDecides) {
    const TestWindow window;
    EXPECT_EQ(ScaleForDpi(16, window.Get()), 16 * ScreenDpi() / 96);
    EXPECT_EQ(ScaleForDpi(0, window.Get()), 0);
    EXPECT_EQ(ScaleForDpi(3, window.Get()), MulDiv(3, ScreenDpi(), 96));
}

TEST(ScreenScale, WindowThatIsUnawareOfScalingCountsAsNinetySix) {
    const auto before = SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_UNAWARE);
    const TestWindow window;
    SetThreadDpiAwarenessContext(before);
    EXPECT_EQ(ScaleForDpi(16, window.Get()), 16);
}

TEST(ScreenScale, WithoutAWindowThatUnderTheCursorDecides) {
    const auto before = SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_UNAWARE);
    const HWND unaware = CreateWindowExW(WS_EX_TOPMOST, L"STATIC", L"", WS_POPUP | WS_VISIBLE | SS_NOTIFY, 0, 0, 400,
                                         400, nullptr, nullptr, nullptr, nullptr);
    SetThreadDpiAwarenessContext(before);
    SetCursorPos(100, 100);
    POINT cursor = {};
    GetCursorPos(&cursor);
    ASSERT_EQ(WindowFromPoint(cursor), unaware);
    EXPECT_EQ(ScaleForDpi(16, nullptr), 16);
    DestroyWindow(unaware);
}

TEST(ScreenScale, WithoutAWindowTheScreenDecides) { EXPECT_EQ(ScaleForDpi(16, nullptr), 16 * ScreenDpi() / 96); }

TEST(ScreenScale, WindowThatIsGoneLeavesItToTheSystem) {
    HWND gone = nullptr;
    {
        const TestWindow window;
        gone = window.Get();
    }
    EXPECT_EQ(ScaleForDpi(16, gone), 16 * ScreenDpi() / 96);
}
