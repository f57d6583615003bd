// The argument pack: what it starts with, how positions map to slots, what its release clears.
#include "src/automation/AutomationArgs.h"

#include <gtest/gtest.h>
#include <oleauto.h>

#include "tests/support/ScriptedDispatch.h"

TEST(AutomationArgs, EverySlotStartsOmitted) {
    const AutomationArgsHandle pack = MakeAutomationArgs(3);
    ASSERT_TRUE(pack);
    EXPECT_EQ(pack->params.rgvarg, pack->slots);
    EXPECT_EQ(pack->params.cArgs, 3U);
    EXPECT_EQ(pack->params.cNamedArgs, 0U);
    EXPECT_EQ(pack->params.rgdispidNamedArgs, nullptr);
    for (UINT i = 0; i < 3; ++i) EXPECT_EQ(WireOf(pack->slots[i]), WireOmitted()) << i;
}

TEST(AutomationArgs, PackOfNothingIsAPack) {
    const AutomationArgsHandle pack = MakeAutomationArgs(0);
    ASSERT_TRUE(pack);
    EXPECT_EQ(pack->params.cArgs, 0U);
    EXPECT_EQ(pack->params.rgvarg, nullptr);
}

TEST(AutomationArgs, PositionsAreReversedInTheSlots) {
    const AutomationArgsHandle pack = MakeAutomationArgs(3);
    EXPECT_EQ(&pack->Argument(1), &pack->slots[2]);
    EXPECT_EQ(&pack->Argument(3), &pack->slots[0]);
}

TEST(AutomationArgs, ReleaseClearsTextsAndLeavesObjectsAlone) {
    ScriptedDispatch object;
    AutomationArgsHandle pack = MakeAutomationArgs(3);
    pack->Argument(1) = ObjectArgument(&object);
    pack->Argument(2).vt = VT_BSTR;
    pack->Argument(2).bstrVal = nullptr;
    pack->Argument(3) = MakeVariantString(L"freed");
    object.AddRef();
    pack.reset();
    EXPECT_EQ(object.References(), 2U);  // the slot's reference is the caller's to release
}

TEST(AutomationArgs, ReleasingNothingDoesNothing) { ReleaseAutomationArgs(nullptr); }

TEST(AutomationArgs, BuildersSetTypeAndValue) {
    EXPECT_EQ(WireOf(MakeVariantInt(-3)), WireNumber(-3));
    EXPECT_EQ(WireOf(MakeVariantBool(1)), WireBool(1));
    VARIANT text = MakeVariantString(L"a");
    EXPECT_EQ(WireOf(text), WireText(L"a"));
    ClearVariant(&text);
    EXPECT_EQ(text.vt, VT_EMPTY);
    text.vt = VT_I4;
    InitVariant(&text);
    EXPECT_EQ(text.vt, VT_EMPTY);
}
