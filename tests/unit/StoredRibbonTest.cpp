// How often the stored ribbons are called and released.
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

TEST(StoredRibbon, LaterRibbonIsCalledAndTheEarlierOneKeptUntilTheRelease) {
    ScriptedRibbon first;
    ScriptedRibbon second;
    StoredRibbon stored;
    stored.Store(&first);
    stored.Store(&second);
    EXPECT_EQ(first.References(), 2U);
    EXPECT_EQ(second.References(), 2U);
    stored.Invalidate();
    EXPECT_EQ(first.invalidations, 0);
    EXPECT_EQ(second.invalidations, 1);
    stored.Release();
    EXPECT_EQ(first.References(), 1U);
    EXPECT_EQ(second.References(), 1U);
}

TEST(StoredRibbon, IsCalledAfterItWasStoredOnceMore) {
    ScriptedRibbon ribbon;
    StoredRibbon stored;
    stored.Store(&ribbon);
    stored.Release();
    stored.Store(&ribbon);
    stored.Invalidate();
    EXPECT_EQ(ribbon.invalidations, 1);
    stored.Release();
    EXPECT_EQ(ribbon.References(), 1U);
}

TEST(StoredRibbon, NothingIsCalledWhereNoneIsStored) {
    const StoredRibbon stored;
    stored.Invalidate();
}

TEST(StoredRibbon, CallTakesAndGivesBackNoReference) {
    ScriptedRibbon ribbon;
    StoredRibbon stored;
    stored.Store(&ribbon);
    int releases = 0;
    ribbon.onRelease = [&] { ++releases; };
    ribbon.onInvalidate = [&] { EXPECT_EQ(ribbon.References(), 2U); };  // the test's and the holder's
    stored.Invalidate();
    EXPECT_EQ(ribbon.invalidations, 1);
    EXPECT_EQ(releases, 0);
    stored.Release();
}

TEST(StoredRibbon, IsReleasedWithItsHolder) {
    ScriptedRibbon ribbon;
    {
        StoredRibbon stored;
        stored.Store(&ribbon);
    }
    EXPECT_EQ(ribbon.References(), 1U);
}
