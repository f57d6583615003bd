// The ribbon's callbacks through the object's own Invoke.
#include "src/addin/RibbonCallbacks.h"

#include <gtest/gtest.h>

#include "src/automation/AutomationArgs.h"
#include "standins/office/DialogRobot.h"
#include "tests/support/AddinObject.h"
#include "tests/support/ScriptedDispatch.h"
#include "tests/support/ScriptedRibbon.h"

namespace {

// Calls go through the object's own Invoke, as the host's do.
class RibbonCallbacks : public testing::Test {
protected:
    HRESULT Invoke(DISPID dispid, std::vector<VARIANT> wire, VARIANT* result = nullptr) {
        DISPPARAMS params = {wire.data(), nullptr, static_cast<UINT>(wire.size()), 0};
        return addin_->Invoke(dispid, IID_NULL, 0, DISPATCH_METHOD, &params, result, nullptr, nullptr);
    }
    HRESULT InvokeWithoutParameters(DISPID dispid) {
        VARIANT result = {};
        return addin_->Invoke(dispid, IID_NULL, 0, DISPATCH_METHOD, nullptr, &result, nullptr, nullptr);
    }
    HRESULT Click(const wchar_t* id) {
        ScriptedControl control(id);
        return Invoke(1002, {ObjectArgument(&control)});
    }
    HRESULT State(const wchar_t* id, VARIANT* result) {
        ScriptedControl control(id);
        return Invoke(1004, {ObjectArgument(&control)}, result);
    }
    HRESULT Change(const wchar_t* id, VARIANT state) {
        ScriptedControl control(id);
        return Invoke(1005, {state, ObjectArgument(&control)});
    }
    bool IsChecked(const wchar_t* id) {
        VARIANT result;
        result.vt = 0xBEEF;
        EXPECT_EQ(State(id, &result), S_OK) << id;
        EXPECT_EQ(result.vt, VT_BOOL);
        EXPECT_TRUE(result.boolVal == VARIANT_TRUE || result.boolVal == VARIANT_FALSE);
        return result.boolVal == VARIANT_TRUE;
    }

    const AddinObject addin_;
};

constexpr const wchar_t* checkBoxes[] = {L"CheckBox_ID_OpenAfterExport", L"CheckBox_ID_PDFA",
                                         L"CheckBox_ID_CreateBookmarks", L"CheckBox_ID_IncludeDocProps"};

}  // namespace

TEST_F(RibbonCallbacks, RibbonIsKeptUntilDisconnection) {
    ScriptedRibbon ribbon;
    EXPECT_EQ(Invoke(1001, {ObjectArgument(&ribbon)}), S_OK);
    EXPECT_EQ(ribbon.References(), 2U);
    addin_->OnDisconnection(ext_dm_HostShutdown, nullptr);
    EXPECT_EQ(ribbon.References(), 1U);
}

TEST_F(RibbonCallbacks, RibbonLoadedWithoutAnObjectIsInvalid) {
    EXPECT_EQ(InvokeWithoutParameters(1001), E_INVALIDARG);
    EXPECT_EQ(Invoke(1001, {}), E_INVALIDARG);
    EXPECT_EQ(Invoke(1001, {ObjectArgument(nullptr)}), E_INVALIDARG);
    VARIANT text = {};
    text.vt = VT_BSTR;
    EXPECT_EQ(Invoke(1001, {text}), E_INVALIDARG);
}

TEST_F(RibbonCallbacks, RibbonLoadedAnswersTheQuerysError) {
    ScriptedRibbon ribbon;
    ribbon.queryResult = E_NOINTERFACE;
    EXPECT_EQ(Invoke(1001, {ObjectArgument(&ribbon)}), E_NOINTERFACE);
    EXPECT_EQ(ribbon.References(), 1U);
}

TEST_F(RibbonCallbacks, RibbonLoadedWithANullRibbonStoresNothing) {
    ScriptedRibbon first;
    Invoke(1001, {ObjectArgument(&first)});
    ScriptedRibbon ribbon;
    ribbon.queryGivesNull = true;
    EXPECT_EQ(Invoke(1001, {ObjectArgument(&ribbon)}), S_OK);
    EXPECT_EQ(first.References(), 2U);
    addin_->OnDisconnection(ext_dm_HostShutdown, nullptr);
    EXPECT_EQ(first.References(), 1U);
}

TEST_F(RibbonCallbacks, FreshObjectHasTheDefaults) {
    EXPECT_TRUE(IsChecked(L"CheckBox_ID_OpenAfterExport"));
    EXPECT_FALSE(IsChecked(L"CheckBox_ID_PDFA"));
    EXPECT_TRUE(IsChecked(L"CheckBox_ID_CreateBookmarks"));
    EXPECT_TRUE(IsChecked(L"CheckBox_ID_IncludeDocProps"));
}

TEST_F(RibbonCallbacks, EachCheckBoxChangesItsOwnOptionOnly) {
    for (const wchar_t* changed : checkBoxes) {
        const bool before = IsChecked(changed);
        EXPECT_EQ(Change(changed, MakeVariantBool(before ? VARIANT_FALSE : VARIANT_TRUE)), S_OK);
        for (const wchar_t* id : checkBoxes) {
            const bool byDefault = wcscmp(id, L"CheckBox_ID_PDFA") != 0;
            EXPECT_EQ(IsChecked(id), id == changed ? !before : byDefault) << id;
        }
        EXPECT_EQ(Change(changed, MakeVariantBool(before ? VARIANT_TRUE : VARIANT_FALSE)), S_OK);
    }
}

TEST_F(RibbonCallbacks, ClearedBookmarksAreStoredAsZeroAndTickedOnesAsOne) {
    Change(L"CheckBox_ID_CreateBookmarks", MakeVariantBool(VARIANT_FALSE));
    EXPECT_FALSE(IsChecked(L"CheckBox_ID_CreateBookmarks"));
    EXPECT_EQ(addin_->state.settings.createBookmarks, 0);
    Change(L"CheckBox_ID_CreateBookmarks", MakeVariantBool(VARIANT_TRUE));
    EXPECT_EQ(addin_->state.settings.createBookmarks, 1);
}

TEST_F(RibbonCallbacks, StateOfOneIsNotCheckedBecauseTrueIsMinusOne) {
    EXPECT_EQ(Change(L"CheckBox_ID_OpenAfterExport", MakeVariantBool(1)), S_OK);
    EXPECT_FALSE(IsChecked(L"CheckBox_ID_OpenAfterExport"));
}

TEST_F(RibbonCallbacks, TypeOfTheNewStateIsNotLookedAt) {
    VARIANT state = {};
    state.vt = VT_I4;
    state.lVal = -1;  // its low 16 bits are VARIANT_TRUE
    EXPECT_EQ(Change(L"CheckBox_ID_PDFA", state), S_OK);
    EXPECT_TRUE(IsChecked(L"CheckBox_ID_PDFA"));
}

TEST_F(RibbonCallbacks, StateOfAButtonIsFalseAndNotImplemented) {
    VARIANT result;
    result.vt = 0xBEEF;
    result.boolVal = VARIANT_TRUE;
    EXPECT_EQ(State(L"BUTTON_ID_CREATE", &result), E_NOTIMPL);
    EXPECT_EQ(WireOf(result), WireBool(VARIANT_FALSE));
}

TEST_F(RibbonCallbacks, ChangeOfSomethingElseIsNotImplemented) {
    EXPECT_EQ(Change(L"BUTTON_ID_CREATE", MakeVariantBool(VARIANT_TRUE)), E_NOTIMPL);
    EXPECT_EQ(Change(L"checkbox_id_pdfa", MakeVariantBool(VARIANT_TRUE)), E_NOTIMPL);
    EXPECT_FALSE(IsChecked(L"CheckBox_ID_PDFA"));
}

TEST_F(RibbonCallbacks, MissingArgumentsAreInvalid) {
    VARIANT result = {};
    ScriptedControl control(L"CheckBox_ID_PDFA");
    for (const DISPID dispid : {1002, 1004, 1005}) {
        EXPECT_EQ(InvokeWithoutParameters(dispid), E_INVALIDARG) << dispid;
        EXPECT_EQ(Invoke(dispid, {}, &result), E_INVALIDARG) << dispid;
    }
    EXPECT_EQ(Invoke(1004, {ObjectArgument(&control)}, nullptr), E_INVALIDARG);
    EXPECT_EQ(Invoke(1005, {ObjectArgument(&control)}), E_INVALIDARG);
}

TEST_F(RibbonCallbacks, ControlWithoutAReadableIdIsATypeMismatch) {
    VARIANT result = {};
    ScriptedControl control(L"BUTTON_ID_CREATE");
    control.idResult = E_FAIL;
    for (const VARIANT& argument : {ObjectArgument(&control), ObjectArgument(nullptr), MakeVariantBool(VARIANT_TRUE)}) {
        EXPECT_EQ(Invoke(1002, {argument}), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(Invoke(1004, {argument}, &result), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(Invoke(1005, {MakeVariantBool(VARIANT_TRUE), argument}), DISP_E_TYPEMISMATCH);
    }
    EXPECT_EQ(control.References(), 1U);
}

TEST_F(RibbonCallbacks, ClickWithoutACommandDoesNothing) {
    ScriptedDispatch application;
    addin_->state.application = &application;
    for (const wchar_t* id : {L"Menu_ID_Open", L"Menu_ID_Create", L"CheckBox_ID_PDFA", L"button_id_create", L"other"}) {
        EXPECT_EQ(Click(id), S_OK) << id;
    }
    EXPECT_TRUE(application.lookups.empty());
    addin_->OnDisconnection(ext_dm_HostShutdown, nullptr);
}

TEST_F(RibbonCallbacks, BothDocumentButtonsRunTheCommand) {
    for (const wchar_t* id : {L"BUTTON_ID_CREATE", L"BUTTON_ID_CREATE_AND_SHARE"}) {
        ScriptedDispatch application;
        addin_->state.host = HostWord;
        addin_->state.application = &application;
        const DialogRobot robot({.cancel = true});
        EXPECT_EQ(Click(id), S_OK);
        EXPECT_EQ(robot.Seen().size(), 1U) << id;
        EXPECT_EQ(application.LookedUp(), (std::vector<std::wstring>{L"ActiveWindow", L"ActiveDocument"}));
        addin_->OnDisconnection(ext_dm_HostShutdown, nullptr);
        EXPECT_EQ(application.References(), 1U);
    }
}

TEST_F(RibbonCallbacks, CommandThatThrowsStillAnswersOk) {
    ScriptedDispatch application;
    addin_->state.host = HostOutlook;  // which has no active document: the command throws
    addin_->state.application = &application;
    EXPECT_EQ(Click(L"BUTTON_ID_CREATE"), S_OK);
    EXPECT_FALSE(addin_->commandRunning);
    addin_->OnDisconnection(ext_dm_HostShutdown, nullptr);
    EXPECT_EQ(application.References(), 1U);
}

TEST_F(RibbonCallbacks, ClickDuringACommandDoesNothing) {
    ScriptedDispatch application;
    int innerClicks = 0;
    application.On(L"ActiveWindow", [&](VARIANT*) {
        ++innerClicks;
        // The second one too: a refused click does not open the way for the next.
        EXPECT_EQ(Click(L"BUTTON_ID_CREATE"), S_OK);
        EXPECT_EQ(Click(L"BUTTON_ID_CREATE"), S_OK);
        ScriptedControl unreadable(L"BUTTON_ID_CREATE");
        unreadable.idResult = E_FAIL;
        EXPECT_EQ(Invoke(1002, {ObjectArgument(&unreadable)}), DISP_E_TYPEMISMATCH);
        return E_FAIL;
    });
    addin_->state.host = HostWord;
    addin_->state.application = &application;
    const DialogRobot robot({.cancel = true});
    EXPECT_EQ(Click(L"BUTTON_ID_CREATE"), S_OK);
    EXPECT_EQ(innerClicks, 1);
    EXPECT_EQ(robot.Seen().size(), 1U);
    // The next click runs again.
    EXPECT_EQ(Click(L"BUTTON_ID_CREATE"), S_OK);
    EXPECT_EQ(innerClicks, 2);
    addin_->OnDisconnection(ext_dm_HostShutdown, nullptr);
}

TEST_F(RibbonCallbacks, ObjectSurvivesALastReleaseDuringItsOwnCommand) {
    auto* addin = new ZOfficeAddin;
    ScriptedDispatch application;
    application.On(L"ActiveWindow", [&](VARIANT*) {
        addin->OnDisconnection(ext_dm_HostShutdown, nullptr);
        EXPECT_EQ(addin->Release(), 1U);  // the call's own reference is left
        return E_FAIL;
    });
    addin->state.host = HostWord;
    addin->state.application = &application;
    const DialogRobot robot({.cancel = true});
    ScriptedControl control(L"BUTTON_ID_CREATE");
    VARIANT argument = ObjectArgument(&control);
    DISPPARAMS params = {&argument, nullptr, 1, 0};
    EXPECT_EQ(addin->Invoke(1002, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr), S_OK);
    EXPECT_EQ(application.References(), 1U);
}
