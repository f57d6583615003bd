// Late-bound calls as they arrive on the wire, and what their results count as.
#include "src/automation/AutomationCalls.h"

#include <gtest/gtest.h>
#include <oleauto.h>

#include "src/base/Handles.h"
#include "tests/support/ScriptedDispatch.h"

namespace {

void ExpectUsualCall(const Invocation& call, WORD flags) {
    EXPECT_EQ(call.flags, flags);
    EXPECT_EQ(call.lcid, 0x400U);
    EXPECT_TRUE(IsEqualIID(call.riid, IID_NULL));
    EXPECT_FALSE(call.hasExceptionInfo);
    EXPECT_FALSE(call.hasWrongArgument);
}

}  // namespace

TEST(AutomationCalls, UnknownMemberAnswersTheLookupsErrorAndIsNeverInvoked) {
    ScriptedDispatch object;
    OwnedVariant result;
    VARIANT arg = MakeVariantInt(1);
    EXPECT_EQ(AutomationGetProperty(&object, L"Nothing", &result), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(AutomationPutProperty(&object, L"Nothing", 1, &arg), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(AutomationCallMethod(&object, L"Nothing", &result, 1, &arg), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(AutomationCallMethod1(&object, L"Nothing", &result, arg), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(AutomationCallLongMethod(&object, L"Nothing", nullptr, 3, [](AutomationArgs&) { FAIL() << "filled"; }),
              DISP_E_UNKNOWNNAME);
    EXPECT_EQ(object.lookups.size(), 5U);
    EXPECT_TRUE(object.invocations.empty());
    EXPECT_EQ(object.References(), 1U);
}

TEST(AutomationCalls, LookupAsksForOneNameInTheUsersLocale) {
    ScriptedDispatch object;
    OwnedVariant result;
    AutomationGetProperty(&object, L"FullName", &result);
    ASSERT_EQ(object.lookups.size(), 1U);
    EXPECT_EQ(object.lookups[0].name, L"FullName");
    EXPECT_EQ(object.lookups[0].count, 1U);
    EXPECT_EQ(object.lookups[0].lcid, 0x400U);
    EXPECT_TRUE(IsEqualIID(object.lookups[0].riid, IID_NULL));
}

TEST(AutomationCalls, PropertyGetPassesNoArguments) {
    ScriptedDispatch object;
    object.GiveText(L"FullName", L"C:\\a.docx");
    OwnedVariant result;
    EXPECT_EQ(AutomationGetProperty(&object, L"FullName", &result), S_OK);
    EXPECT_EQ(TextOf(result), L"C:\\a.docx");
    ExpectUsualCall(object.invocations.at(0), DISPATCH_PROPERTYGET);
    EXPECT_TRUE(object.invocations[0].wire.empty());
    EXPECT_TRUE(object.invocations[0].named.empty());
}

TEST(AutomationCalls, PropertyPutNamesTheValueAndWantsNoResult) {
    ScriptedDispatch object;
    object.GiveNothing(L"Visible");
    VARIANT value = MakeVariantInt(7);
    EXPECT_EQ(AutomationPutProperty(&object, L"Visible", 1, &value), S_OK);
    const Invocation& call = object.invocations.at(0);
    ExpectUsualCall(call, DISPATCH_PROPERTYPUT);
    EXPECT_EQ(call.wire, std::vector{WireNumber(7)});
    EXPECT_EQ(call.named, std::vector<DISPID>{DISPID_PROPERTYPUT});
    EXPECT_FALSE(call.hasResult);
}

TEST(AutomationCalls, IndexedPropertyPutNamesOnlyTheValue) {
    ScriptedDispatch object;
    object.GiveNothing(L"Item");
    VARIANT values[] = {MakeVariantInt(7), MakeVariantInt(1)};  // the value, then the index
    EXPECT_EQ(AutomationPutProperty(&object, L"Item", 2, values), S_OK);
    EXPECT_EQ(object.invocations.at(0).wire, (std::vector{WireNumber(7), WireNumber(1)}));
    EXPECT_EQ(object.invocations[0].named, std::vector<DISPID>{DISPID_PROPERTYPUT});
}

TEST(AutomationCalls, MethodArgumentKOfNIsSlotNMinusK) {
    ScriptedDispatch object;
    object.GiveNumber(L"Add", 9);
    const VARIANT args[] = {MakeVariantInt(1), MakeVariantInt(2), MakeVariantInt(3)};
    OwnedVariant result;
    EXPECT_EQ(AutomationCallMethod(&object, L"Add", &result, 3, args), S_OK);
    EXPECT_EQ(NumberOf(result), 9);
    const Invocation& call = object.invocations.at(0);
    ExpectUsualCall(call, DISPATCH_METHOD);
    EXPECT_EQ(call.wire, (std::vector{WireNumber(3), WireNumber(2), WireNumber(1)}));
    EXPECT_TRUE(call.named.empty());
    EXPECT_TRUE(call.hasResult);
}

TEST(AutomationCalls, MethodResultMayBeLeftOut) {
    ScriptedDispatch object;
    object.GiveText(L"Run", L"dropped");
    EXPECT_EQ(AutomationCallMethod(&object, L"Run", nullptr, 0, nullptr), S_OK);
    EXPECT_FALSE(object.invocations.at(0).hasResult);
}

TEST(AutomationCalls, OneArgumentIsPassedFromACopyAndStaysTheCallers) {
    ScriptedDispatch object;
    object.GiveNothing(L"Item");
    VARIANT arg = MakeVariantString(L"key");
    OwnedVariant result;
    EXPECT_EQ(AutomationCallMethod1(&object, L"Item", &result, arg), S_OK);
    EXPECT_EQ(object.invocations.at(0).wire, std::vector{WireText(L"key")});
    ExpectUsualCall(object.invocations[0], DISPATCH_METHOD);
    EXPECT_STREQ(arg.bstrVal, L"key");
    VariantClear(&arg);
}

TEST(AutomationCalls, LongMethodPassesUnfilledArgumentsAsOmitted) {
    ScriptedDispatch object;
    object.GiveNothing(L"Open");
    EXPECT_EQ(AutomationCallLongMethod(&object, L"Open", nullptr, 4,
                                       [](AutomationArgs& args) {
                                           args.Argument(1) = MakeVariantString(L"first");
                                           args.Argument(4) = MakeVariantInt(4);
                                       }),
              S_OK);
    EXPECT_EQ(object.invocations.at(0).wire,
              (std::vector{WireNumber(4), WireOmitted(), WireOmitted(), WireText(L"first")}));
    ExpectUsualCall(object.invocations[0], DISPATCH_METHOD);
}

TEST(AutomationCalls, LongMethodDropsAnObjectResult) {
    ScriptedDispatch result;
    ScriptedDispatch object;
    object.GiveObject(L"Open", &result);
    EXPECT_EQ(AutomationCallLongMethod(&object, L"Open", nullptr, 0, [](AutomationArgs&) {}), S_OK);
    EXPECT_EQ(result.References(), 1U);
}

TEST(AutomationCalls, InvokesErrorIsAnsweredAsItIs) {
    ScriptedDispatch object;
    object.Fail(L"Run", DISP_E_EXCEPTION);
    OwnedVariant result;
    EXPECT_EQ(AutomationCallMethod(&object, L"Run", &result, 0, nullptr), DISP_E_EXCEPTION);
    EXPECT_EQ(AutomationCallLongMethod(&object, L"Run", nullptr, 2, [](AutomationArgs&) {}), DISP_E_EXCEPTION);
}

TEST(AutomationCalls, NoTargetIsAnErrorNotACrash) {
    OwnedVariant result;
    EXPECT_EQ(AutomationGetProperty(nullptr, L"Name", &result), E_POINTER);
    EXPECT_EQ(AutomationCallLongMethod(nullptr, L"Open", nullptr, 2, [](AutomationArgs&) {}), E_POINTER);
}

TEST(AutomationCalls, ObjectCountsOnlyAsANonNullDispatch) {
    ScriptedDispatch target;
    ScriptedDispatch object;
    object.GiveObject(L"Good", &target);
    object.GiveObject(L"Null", nullptr);
    object.GiveNumber(L"Number", 1);
    object.GiveType(L"Unknown", VT_UNKNOWN);
    object.Fail(L"Failing", E_FAIL);
    {
        const auto found = GetObjectProperty(&object, L"Good");
        EXPECT_EQ(found.Get(), &target);
        EXPECT_EQ(target.References(), 2U);
    }
    EXPECT_EQ(target.References(), 1U);
    for (const wchar_t* name : {L"Null", L"Number", L"Unknown", L"Failing", L"Missing"}) {
        EXPECT_FALSE(GetObjectProperty(&object, name)) << name;
    }
}

TEST(AutomationCalls, TextCountsOnlyAsANonNullBstrAndKeepsItsLength) {
    ScriptedDispatch object;
    object.GiveText(L"Good", std::wstring(L"a\0b", 3));
    object.GiveText(L"Empty", L"");
    object.GiveType(L"Null", VT_BSTR);
    object.GiveNumber(L"Number", 1);
    EXPECT_EQ(GetTextProperty(&object, L"Good"), std::wstring(L"a\0b", 3));
    EXPECT_EQ(GetTextProperty(&object, L"Empty"), L"");
    for (const wchar_t* name : {L"Null", L"Number", L"Missing"}) {
        EXPECT_FALSE(GetTextProperty(&object, name)) << name;
    }
}

TEST(AutomationCalls, NumberCountsOnlyAsI4) {
    ScriptedDispatch object;
    object.GiveNumber(L"Good", -5);
    object.GiveType(L"Short", VT_I2);
    object.GiveType(L"Unsigned", VT_UI4);
    object.GiveText(L"Text", L"7");
    EXPECT_EQ(GetNumberProperty(&object, L"Good"), -5);
    for (const wchar_t* name : {L"Short", L"Unsigned", L"Text", L"Missing"}) {
        EXPECT_FALSE(GetNumberProperty(&object, name)) << name;
    }
}
