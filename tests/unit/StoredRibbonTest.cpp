// How often the stored ribbon is released.
#include "src/addin/StoredRibbon.h"

#include <gtest/gtest.h>

#include "tests/support/ScriptedRibbon.h"

TEST(StoredRibbon, IsReleasedOnce) {
    ScriptedRibbon ribbon;
    StoredRibbon stored;
    stored.Store(&ribbon);
    EXPECT_EQ(ribbon.References(), 2U);
    stored.Release();
    EXPECT_EQ(ribbon.References(), 1U);
    stored.Release();
    EXPECT_EQ(ribbon.References(), 1U);
}

TEST(StoredRibbon, LaterRibbonReleasesTheEarlierOnlyWhileItIsHeld) {
    ScriptedRibbon first;
    ScriptedRibbon second;
    StoredRibbon stored;
    stored.Store(&first);
    stored.Store(&second);
    EXPECT_EQ(first.References(), 1U);
    EXPECT_EQ(second.References(), 2U);
    stored.Release();
    stored.Store(&first);
    EXPECT_EQ(second.References(), 1U);
    EXPECT_EQ(first.References(), 2U);
    stored.Release();
}

TEST(StoredRibbon, IsInvalidatedOnlyWhileItIsHeld) {
    ScriptedRibbon ribbon;
    StoredRibbon stored;
    stored.Invalidate();
    stored.Store(&ribbon);
    stored.Invalidate();
    stored.Invalidate();
    stored.Release();
    stored.Invalidate();
    EXPECT_EQ(ribbon.invalidations, 2);
    EXPECT_EQ(ribbon.References(), 1U);
}

TEST(StoredRibbon, RibbonThatIsReleasedDuringACallLivesUntilTheCallEnds) {
    ScriptedRibbon ribbon;
    StoredRibbon stored;
    stored.Store(&ribbon);
    ribbon.onInvalidate = [&] {
        stored.Release();
        EXPECT_EQ(ribbon.References(), 2U);  // the test's and the call's
    };
    stored.Invalidate();
    EXPECT_EQ(ribbon.References(), 1U);
}

TEST(StoredRibbon, RibbonIsReleasedWithoutTheLock) {
    ScriptedRibbon first;
    ScriptedRibbon second;
    StoredRibbon stored;
    stored.Store(&first);
    first.onRelease = [&] { stored.Invalidate(); };  // hangs if the lock is held
    stored.Store(&second);
    EXPECT_EQ(second.invalidations, 1);
    second.onRelease = [&] { stored.Invalidate(); };
    stored.Release();
    first.onRelease = second.onRelease = nullptr;
}

TEST(StoredRibbon, IsReleasedWithItsHolder) {
    ScriptedRibbon ribbon;
    {
        StoredRibbon stored;
        stored.Store(&ribbon);
    }
    EXPECT_EQ(ribbon.References(), 1U);
}
