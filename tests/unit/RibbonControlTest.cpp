// Reading a ribbon control's identifier.
#include "src/automation/RibbonControl.h"

#include <gtest/gtest.h>

#include "tests/support/ScriptedDispatch.h"

TEST(RibbonControl, IdIsReadByItsDispid) {
    ScriptedControl control(L"BUTTON_ID_CREATE");
    EXPECT_EQ(GetControlId(ObjectArgument(&control)), L"BUTTON_ID_CREATE");
    EXPECT_EQ(control.last.flags, DISPATCH_PROPERTYGET);
    EXPECT_EQ(control.last.lcid, 1024U);
    EXPECT_TRUE(IsEqualIID(control.last.riid, IID_NULL));
    EXPECT_EQ(control.References(), 1U);
}

TEST(RibbonControl, IdIsEmptyInEveryOtherCase) {
    EXPECT_EQ(GetControlId(ObjectArgument(nullptr)), L"");
    VARIANT other = {};
    for (const int type : {VT_EMPTY, VT_BSTR, VT_I4, VT_UNKNOWN}) {
        other.vt = static_cast<VARTYPE>(type);
        EXPECT_EQ(GetControlId(other), L"") << type;
    }
    ScriptedControl failing(L"x");
    failing.idResult = E_FAIL;
    EXPECT_EQ(GetControlId(ObjectArgument(&failing)), L"");
    for (const int type : {VT_NULL, VT_EMPTY, VT_I4}) {
        ScriptedControl control(L"x");
        control.idType = static_cast<VARTYPE>(type);
        EXPECT_EQ(GetControlId(ObjectArgument(&control)), L"") << type;
    }
}
