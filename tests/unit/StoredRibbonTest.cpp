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

TEST(StoredRibbon, IsReleasedWithItsHolder) {
    ScriptedRibbon ribbon;
    {
        StoredRibbon stored;
        stored.Store(&ribbon);
    }
    EXPECT_EQ(ribbon.References(), 1U);
}
