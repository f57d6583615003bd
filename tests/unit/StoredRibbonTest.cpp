#include "src/addin/StoredRibbon.h"

#include <gtest/gtest.h>

#include "tests/support/ScriptedRibbon.h"

TEST(StoredRibbon, IsReleasedOnce) {
    ScriptedRibbon ribbon;
    StoredRibbon stored;
    ribbon.AddRef();
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
    first.AddRef();
    stored.Store(&first);
    second.AddRef();
    stored.Store(&second);
    EXPECT_EQ(first.References(), 1U);
    EXPECT_EQ(second.References(), 2U);
    stored.Release();
    first.AddRef();
    stored.Store(&first);
    EXPECT_EQ(second.References(), 1U);
    EXPECT_EQ(first.References(), 2U);
    stored.Release();
}

TEST(StoredRibbon, IsReleasedWithItsHolder) {
    ScriptedRibbon ribbon;
    {
        StoredRibbon stored;
        ribbon.AddRef();
        stored.Store(&ribbon);
    }
    EXPECT_EQ(ribbon.References(), 1U);
}
