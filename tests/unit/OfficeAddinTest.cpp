// The add-in object: faces, names, hosts, connection, disconnection and its end.
#include "src/addin/OfficeAddin.h"

#include <gtest/gtest.h>

#include "tests/support/AddinObject.h"
#include "tests/support/ScriptedDispatch.h"
#include "tests/support/ScriptedRibbon.h"

namespace {

void* const poison = reinterpret_cast<void*>(static_cast<uintptr_t>(0xdeadbeef));

ULONG CountOf(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

}  // namespace

TEST(OfficeAddin, QueryGivesThePrimaryFaceForEverythingButTheRibbon) {
    const AddinObject addin;
    IUnknown* primary = static_cast<_IDTExtensibility2*>(addin.Get());
    for (const IID* iid : {&IID_IUnknown, &IID_IDispatch, &IID_IDTExtensibility2}) {
        void* face = poison;
        EXPECT_EQ(addin->QueryInterface(*iid, &face), S_OK);
        EXPECT_EQ(face, primary);
        addin->Release();
    }
    void* face = poison;
    EXPECT_EQ(addin->QueryInterface(IID_IRibbonUI, &face), E_NOINTERFACE);
    EXPECT_EQ(face, nullptr);
    EXPECT_EQ(addin->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(CountOf(primary), 1U);
}

TEST(OfficeAddin, RibbonFaceDiffersAndSharesTheCount) {
    const AddinObject addin;
    IUnknown* primary = static_cast<_IDTExtensibility2*>(addin.Get());
    IRibbonExtensibility* ribbonFace = nullptr;
    EXPECT_EQ(addin->QueryInterface(IID_IRibbonExtensibility, reinterpret_cast<void**>(&ribbonFace)), S_OK);
    EXPECT_NE(static_cast<void*>(ribbonFace), static_cast<void*>(primary));
    EXPECT_EQ(CountOf(primary), 2U);
    EXPECT_EQ(ribbonFace->AddRef(), 3U);
    EXPECT_EQ(primary->Release(), 2U);
    // The ribbon face answers the primary face's operations too.
    void* back = nullptr;
    EXPECT_EQ(ribbonFace->QueryInterface(IID_IUnknown, &back), S_OK);
    EXPECT_EQ(back, primary);
    primary->Release();
    UINT count = 7;
    EXPECT_EQ(ribbonFace->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 0U);
    wchar_t name[] = L"OnButtonClick";
    LPOLESTR names = name;
    DISPID dispid = 0;
    EXPECT_EQ(ribbonFace->GetIDsOfNames(IID_NULL, &names, 1, 0, &dispid), S_OK);
    EXPECT_EQ(dispid, 1002);
    EXPECT_EQ(ribbonFace->Release(), 1U);
}

TEST(OfficeAddin, ThereIsNoTypeInformation) {
    const AddinObject addin;
    UINT count = 0xdeadbeef;
    EXPECT_EQ(addin->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(addin->GetTypeInfoCount(nullptr), E_POINTER);
    auto* info = static_cast<ITypeInfo*>(poison);
    EXPECT_EQ(addin->GetTypeInfo(0, 0, &info), E_NOTIMPL);
    EXPECT_EQ(info, nullptr);
    EXPECT_EQ(addin->GetTypeInfo(0, 0, nullptr), E_POINTER);
}

TEST(OfficeAddin, CallbackNamesResolveToTheirDispids) {
    const AddinObject addin;
    const struct {
        const wchar_t* name;
        DISPID dispid;
    } rows[] = {{L"OnRibbonLoaded", 1001},   {L"OnButtonClick", 1002},     {L"OnLoadImage", 1003},
                {L"GetCheckBoxState", 1004}, {L"OnCheckBoxChanged", 1005}, {L"onbuttonclick", -1},
                {L"OnButtonClick ", -1},     {L"OnButtonClic", -1},        {L"", -1}};
    for (const auto& row : rows) {
        std::wstring name = row.name;
        LPOLESTR names = name.data();
        auto dispid = static_cast<DISPID>(0xdeadbeef);
        EXPECT_EQ(addin->GetIDsOfNames(IID_NULL, &names, 1, 0, &dispid), row.dispid > 0 ? S_OK : DISP_E_UNKNOWNNAME);
        EXPECT_EQ(dispid, row.dispid);
    }
}

TEST(OfficeAddin, UnknownNameDoesNotKeepTheOthersFromBeingResolved) {
    const AddinObject addin;
    wchar_t known[] = L"OnButtonClick";
    wchar_t unknown[] = L"Nothing";
    wchar_t last[] = L"OnLoadImage";
    LPOLESTR names[] = {known, unknown, nullptr, last};
    DISPID dispids[] = {7, 7, 7, 7};
    EXPECT_EQ(addin->GetIDsOfNames(IID_NULL, names, 4, 0, dispids), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(dispids[0], 1002);
    EXPECT_EQ(dispids[1], DISPID_UNKNOWN);
    EXPECT_EQ(dispids[2], DISPID_UNKNOWN);
    EXPECT_EQ(dispids[3], 1003);
}

TEST(OfficeAddin, NameLookupChecksPointersBeforeTheInterface) {
    const AddinObject addin;
    wchar_t name[] = L"OnButtonClick";
    LPOLESTR names[] = {name};
    DISPID dispid = 7;
    EXPECT_EQ(addin->GetIDsOfNames(IID_IUnknown, nullptr, 1, 0, &dispid), E_POINTER);
    EXPECT_EQ(addin->GetIDsOfNames(IID_IUnknown, names, 1, 0, nullptr), E_POINTER);
    EXPECT_EQ(addin->GetIDsOfNames(IID_IUnknown, names, 1, 0, &dispid), DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(dispid, 7);
    EXPECT_EQ(addin->GetIDsOfNames(IID_NULL, names, 0, 0, &dispid), S_OK);
    EXPECT_EQ(dispid, 7);
}

TEST(OfficeAddin, UnknownDispidIsNotFoundAndTheInterfaceIsCheckedFirst) {
    const AddinObject addin;
    DISPPARAMS params = {};
    for (const DISPID dispid : {0, 1, 1000, 1006, DISPID_UNKNOWN}) {
        EXPECT_EQ(addin->Invoke(dispid, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr),
                  DISP_E_MEMBERNOTFOUND)
            << dispid;
        EXPECT_EQ(addin->Invoke(dispid, IID_IUnknown, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr),
                  DISP_E_UNKNOWNINTERFACE)
            << dispid;
    }
}

TEST(OfficeAddin, InvokeIgnoresLocaleAndFlags) {
    const AddinObject addin;
    for (const WORD flags : {WORD{0}, WORD{DISPATCH_PROPERTYPUT}, WORD{DISPATCH_PROPERTYGET | DISPATCH_METHOD}}) {
        EXPECT_EQ(addin->Invoke(1001, IID_NULL, 0x407, flags, nullptr, nullptr, nullptr, nullptr), E_INVALIDARG);
    }
}

TEST(OfficeAddin, HostIsKnownByItsCollection) {
    const struct {
        std::vector<const wchar_t*> properties;
        Host host;
    } rows[] = {
        {{L"Documents"}, HostWord},
        {{L"Workbooks"}, HostExcel},
        {{L"Presentations"}, HostPowerPoint},
        {{L"Explorers"}, HostOutlook},
        {{L"Documents", L"Presentations"}, HostPowerPoint},
        {{L"Documents", L"Workbooks"}, HostExcel},
        {{L"Explorers", L"Documents"}, HostWord},
        {{L"documents"}, HostUnknown},
        {{}, HostUnknown},
    };
    for (const auto& row : rows) {
        ScriptedDispatch application;
        for (const wchar_t* property : row.properties) application.GiveNumber(property, 1);
        EXPECT_EQ(DetectHost(&application), row.host);
    }
}

TEST(OfficeAddin, CollectionThatCannotBeReadDoesNotCount) {
    ScriptedDispatch application;
    application.Fail(L"Presentations", DISP_E_EXCEPTION);
    application.GiveNothing(L"Documents");
    EXPECT_EQ(DetectHost(&application), HostWord);
    EXPECT_EQ(application.LookedUp(), (std::vector<std::wstring>{L"Presentations", L"Workbooks", L"Documents"}));
    EXPECT_EQ(application.invocations.at(0).flags, DISPATCH_PROPERTYGET);
}

TEST(OfficeAddin, ProbedCollectionIsReleased) {
    ScriptedDispatch collection;
    ScriptedDispatch application;
    application.GiveObject(L"Documents", &collection);
    EXPECT_EQ(DetectHost(&application), HostWord);
    EXPECT_EQ(collection.References(), 1U);
}

TEST(OfficeAddin, ConnectionHoldsTheApplicationUntilDisconnection) {
    const AddinObject addin;
    ScriptedDispatch application;
    application.GiveNothing(L"Documents");
    EXPECT_EQ(addin->OnConnection(&application, ext_cm_Startup, nullptr, nullptr), S_OK);
    EXPECT_EQ(addin->state.host, HostWord);
    EXPECT_EQ(application.References(), 2U);
    EXPECT_EQ(addin->OnDisconnection(ext_dm_HostShutdown, nullptr), S_OK);
    EXPECT_EQ(application.References(), 1U);
    EXPECT_FALSE(addin->state.application);
}

TEST(OfficeAddin, ConnectionWithoutAnApplicationFails) {
    const AddinObject addin;
    EXPECT_EQ(addin->OnConnection(nullptr, ext_cm_Startup, nullptr, nullptr), E_FAIL);
    EXPECT_EQ(addin->state.host, HostUnknown);
}

TEST(OfficeAddin, ConnectionToAnUnknownHostFailsAndHoldsTheApplicationUntilDisconnection) {
    const AddinObject addin;
    ScriptedDispatch application;
    EXPECT_EQ(addin->OnConnection(&application, ext_cm_Startup, nullptr, nullptr), E_FAIL);
    EXPECT_EQ(addin->state.host, HostUnknown);
    EXPECT_EQ(application.References(), 2U);
    addin->OnDisconnection(ext_dm_HostShutdown, nullptr);
    EXPECT_EQ(application.References(), 1U);
}

TEST(OfficeAddin, SecondConnectionLetsGoOfTheFirstApplication) {
    const AddinObject addin;
    ScriptedDispatch first;
    ScriptedDispatch second;
    first.GiveNothing(L"Documents");
    second.GiveNothing(L"Workbooks");
    addin->OnConnection(&first, ext_cm_Startup, nullptr, nullptr);
    addin->OnConnection(&second, ext_cm_Startup, nullptr, nullptr);
    EXPECT_EQ(addin->state.host, HostExcel);
    EXPECT_EQ(first.References(), 1U);
    EXPECT_EQ(second.References(), 2U);
    addin->OnDisconnection(ext_dm_HostShutdown, nullptr);
}

TEST(OfficeAddin, SecondDisconnectionReleasesNothing) {
    const AddinObject addin;
    ScriptedDispatch application;
    ScriptedRibbon ribbon;
    application.GiveNothing(L"Documents");
    addin->OnConnection(&application, ext_cm_Startup, nullptr, nullptr);
    addin->ribbon.Store(&ribbon);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(addin->OnDisconnection(ext_dm_UserClosed, nullptr), S_OK);
        EXPECT_EQ(application.References(), 1U);
        EXPECT_EQ(ribbon.References(), 1U);
    }
}

TEST(OfficeAddin, ObjectThatDiesConnectedReleasesWhatItHolds) {
    ScriptedDispatch application;
    ScriptedRibbon ribbon;
    application.GiveNothing(L"Documents");
    {
        const AddinObject addin;
        addin->OnConnection(&application, ext_cm_Startup, nullptr, nullptr);
        addin->ribbon.Store(&ribbon);
    }
    EXPECT_EQ(application.References(), 1U);
    EXPECT_EQ(ribbon.References(), 1U);
}

TEST(OfficeAddin, OtherEventsDoNothing) {
    const AddinObject addin;
    EXPECT_EQ(addin->OnAddInsUpdate(nullptr), S_OK);
    EXPECT_EQ(addin->OnStartupComplete(nullptr), S_OK);
    EXPECT_EQ(addin->OnBeginShutdown(nullptr), S_OK);
}

TEST(OfficeAddin, Slot13AnswersOkAndSlot12DeletesTheObject) {
    ScriptedDispatch application;
    application.GiveNothing(L"Documents");
    auto* addin = new ZOfficeAddin;
    addin->OnConnection(&application, ext_cm_Startup, nullptr, nullptr);
    _IDTExtensibility2* primary = addin;
    void** table = *reinterpret_cast<void***>(primary);
    using NoArguments = HRESULT(STDMETHODCALLTYPE*)(void*);
    EXPECT_EQ(reinterpret_cast<NoArguments>(table[10])(primary), S_OK);  // OnStartupComplete, where it should be
    EXPECT_EQ(reinterpret_cast<NoArguments>(table[13])(primary), S_OK);
    EXPECT_EQ(application.References(), 2U);
    using Delete = void(STDMETHODCALLTYPE*)(void*);
    reinterpret_cast<Delete>(table[12])(primary);
    EXPECT_EQ(application.References(), 1U);  // the object died and let go
}

TEST(OfficeAddin, InterfacesHaveTheirPublishedIdsAndSlots) {
    const struct {
        const wchar_t* text;
        const IID& iid;
    } rows[] = {{L"{B65AD801-ABAF-11D0-BB8B-00A0C90F2744}", IID_IDTExtensibility2},
                {L"{000C0396-0000-0000-C000-000000000046}", IID_IRibbonExtensibility},
                {L"{000C03A7-0000-0000-C000-000000000046}", IID_IRibbonUI}};
    for (const auto& row : rows) {
        IID iid = {};
        EXPECT_EQ(IIDFromString(row.text, &iid), S_OK);
        EXPECT_TRUE(IsEqualIID(iid, row.iid));
    }

    const AddinObject addin;
    _IDTExtensibility2* primary = addin.Get();
    void** table = *reinterpret_cast<void***>(primary);
    using Connect = HRESULT(STDMETHODCALLTYPE*)(void*, IDispatch*, int, IDispatch*, SAFEARRAY**);
    using Disconnect = HRESULT(STDMETHODCALLTYPE*)(void*, int, SAFEARRAY**);
    using Event = HRESULT(STDMETHODCALLTYPE*)(void*, SAFEARRAY**);
    ScriptedDispatch application;
    application.GiveNothing(L"Documents");
    EXPECT_EQ(reinterpret_cast<Connect>(table[7])(primary, &application, 0, nullptr, nullptr), S_OK);
    EXPECT_EQ(application.References(), 2U);
    for (const int slot : {9, 10, 11}) EXPECT_EQ(reinterpret_cast<Event>(table[slot])(primary, nullptr), S_OK);
    EXPECT_EQ(application.References(), 2U);
    EXPECT_EQ(reinterpret_cast<Disconnect>(table[8])(primary, 0, nullptr), S_OK);
    EXPECT_EQ(application.References(), 1U);
}

TEST(OfficeAddin, RibbonFacesSeventhSlotIsGetCustomUi) {
    const AddinObject addin;
    IRibbonExtensibility* ribbonFace = addin.Get();
    void** table = *reinterpret_cast<void***>(ribbonFace);
    using GetCustomUi = HRESULT(STDMETHODCALLTYPE*)(void*, BSTR, BSTR*);
    BSTR markup = nullptr;
    EXPECT_EQ(reinterpret_cast<GetCustomUi>(table[7])(ribbonFace, nullptr, &markup), S_OK);
    EXPECT_EQ(std::wstring(markup).substr(0, 9), L"<customUI");
    SysFreeString(markup);
}

TEST(OfficeAddin, MarkupIsTheSameForEveryRibbon) {
    const AddinObject addin;
    BSTR id = SysAllocString(L"Microsoft.Outlook.Explorer");
    BSTR one = nullptr;
    BSTR other = nullptr;
    EXPECT_EQ(addin->GetCustomUI(nullptr, &one), S_OK);
    EXPECT_EQ(addin->GetCustomUI(id, &other), S_OK);
    EXPECT_STREQ(one, other);
    EXPECT_EQ(addin->GetCustomUI(id, nullptr), E_POINTER);
    SysFreeString(one);
    SysFreeString(other);
    SysFreeString(id);
}

TEST(OfficeAddin, MarkupFollowsTheHost) {
    const AddinObject addin;
    BSTR markup = nullptr;
    addin->state.host = HostOutlook;
    addin->GetCustomUI(nullptr, &markup);
    EXPECT_NE(wcsstr(markup, L"Menu_ID_Open"), nullptr);
    SysFreeString(markup);
    addin->state.host = HostUnknown;
    addin->GetCustomUI(nullptr, &markup);
    EXPECT_EQ(wcsstr(markup, L"Menu_ID_Open"), nullptr);
    SysFreeString(markup);
}

TEST(OfficeAddin, SettingsStartAtTheirDefaults) {
    const AddinObject addin;
    const ExportSettings& settings = addin->state.settings;
    EXPECT_EQ(settings.exportFormat, 17);
    EXPECT_TRUE(settings.openAfterExport);
    EXPECT_EQ(settings.optimizeFor, 0);
    EXPECT_EQ(settings.exportRange, 0);
    EXPECT_TRUE(settings.includeDocProps);
    EXPECT_EQ(settings.createBookmarks, 1);
    EXPECT_TRUE(settings.bitmapMissingFonts);
    EXPECT_FALSE(settings.pdfA);
    EXPECT_EQ(addin->state.host, HostUnknown);
}
