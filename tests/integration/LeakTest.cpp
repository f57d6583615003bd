// What the add-in allocates it frees, on good paths and on every path that a failed allocation opens. This program
// counts its C++ allocations, lets one of them fail, and counts COM's allocations and its own kernel handles.
#include <gtest/gtest.h>
#include <objbase.h>

#include <system_error>

#include "src/addin/ClassFactory.h"
#include "src/addin/OfficeAddin.h"
#include "src/base/Handles.h"
#include "src/base/Module.h"
#include "src/export/Companion.h"
#include "src/export/ExportToPdf.h"
#include "src/export/OwnerWindow.h"
#include "src/ui/RegistryWatcher.h"
#include "src/ui/RibbonImages.h"
#include "tests/support/ComAllocations.h"
#include "tests/support/CountedAllocations.h"
#include "tests/support/FailingThreads.h"
#include "tests/support/OpenHandles.h"
#include "tests/support/Registry.h"
#include "tests/support/ScriptedRibbon.h"

namespace {

// Word in one object that allocates nothing through C++: application, document, window and control at once.
class EverythingObject final : public IDispatch {
public:
    EverythingObject() = default;
    EverythingObject(const EverythingObject&) = delete;
    EverythingObject& operator=(const EverythingObject&) = delete;

    const wchar_t* id = L"";
    ULONG references = 1;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** ppv) override {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* dispids) override {
        constexpr const wchar_t* known[] = {L"Documents",      L"ActiveWindow", L"hwnd",
                                            L"ActiveDocument", L"FullName",     L"ExportAsFixedFormat"};
        for (size_t i = 0; i < std::size(known); ++i) {
            if (wcscmp(known[i], names[0]) == 0) {
                *dispids = static_cast<DISPID>(10 + i);
                return S_OK;
            }
        }
        return DISP_E_UNKNOWNNAME;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID dispid, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                                     UINT*) override {
        switch (dispid) {
            case 1:
            case 14:
            case 15:
                result->vt = VT_BSTR;
                result->bstrVal = SysAllocString(dispid == 1 ? id : L"C:\\Work\\Plan.docx");
                return S_OK;
            case 12:
                result->vt = VT_I4;
                result->lVal = 0;
                return S_OK;
            default:
                result->vt = VT_DISPATCH;
                result->pdispVal = this;
                AddRef();
                return S_OK;
        }
    }
};

// Through the class factory, whose barrier answers a failed allocation of the object.
HRESULT CreateAddin(REFIID iid, void** object) {
    IClassFactory* factory = nullptr;
    try {
        factory = new ZOfficeAddinClassFactory;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;  // DllGetClassObject's barrier answers this
    }
    const HRESULT created = factory->CreateInstance(nullptr, iid, object);
    factory->Release();
    return created;
}

// Everything that a session does but for the save dialog, which is the system's. Every answer must be an HRESULT.
void RunSession(EverythingObject& word) {
    _IDTExtensibility2* face = nullptr;
    const HRESULT created = CreateAddin(IID_IDTExtensibility2, reinterpret_cast<void**>(&face));
    EXPECT_TRUE(created == S_OK || created == E_OUTOFMEMORY);
    if (FAILED(created)) return;
    auto* addin = static_cast<ZOfficeAddin*>(face);
    addin->OnConnection(&word, ext_cm_Startup, nullptr, nullptr);
    BSTR markup = nullptr;
    const HRESULT given = addin->GetCustomUI(nullptr, &markup);
    EXPECT_EQ(markup != nullptr, given == S_OK);
    SysFreeString(markup);
    wchar_t name[] = L"GetCheckBoxState";
    LPOLESTR names = name;
    DISPID dispid = 0;
    addin->GetIDsOfNames(IID_NULL, &names, 1, 0, &dispid);
    for (const wchar_t* id : {L"CheckBox_ID_PDFA", L"BUTTON_ID_CREATE", L"Menu_ID_Open"}) {
        word.id = id;
        VARIANT arguments[2] = {};
        arguments[0].vt = VT_BOOL;
        arguments[1].vt = VT_DISPATCH;
        arguments[1].pdispVal = &word;
        DISPPARAMS both = {arguments, nullptr, 2, 0};
        DISPPARAMS control = {&arguments[1], nullptr, 1, 0};
        VARIANT result = {};
        addin->Invoke(1004, IID_NULL, 0, 0, &control, &result, nullptr, nullptr);
        addin->Invoke(1005, IID_NULL, 0, 0, &both, nullptr, nullptr, nullptr);
        if (id[0] == L'M') addin->Invoke(1002, IID_NULL, 0, 0, &control, nullptr, nullptr, nullptr);
    }
    ScriptedRibbon ribbon;
    VARIANT ribbonArgument = {};
    ribbonArgument.vt = VT_DISPATCH;
    ribbonArgument.pdispVal = &ribbon;
    DISPPARAMS loaded = {&ribbonArgument, nullptr, 1, 0};
    addin->Invoke(1001, IID_NULL, 0, 0, &loaded, nullptr, nullptr, nullptr);
    word.id = L"Button_ID_OpenFromMail";
    VARIANT controlArgument = {};
    controlArgument.vt = VT_DISPATCH;
    controlArgument.pdispVal = &word;
    DISPPARAMS imageOf = {&controlArgument, nullptr, 1, 0};
    OwnedVariant picture;
    addin->Invoke(1003, IID_NULL, 0, 0, &imageOf, &picture, nullptr, nullptr);
    try {
        GetOwnerWindow(addin->state);
        ExportAsPdf(addin->state, &word, L"C:\\Out\\a.pdf");
        FindCompanionExecutable();
    } catch (const std::bad_alloc&) {
        // A click's barrier stands above these.
    }
    addin->OnDisconnection(ext_dm_HostShutdown, nullptr);
    EXPECT_EQ(addin->Release(), 0U);
    EXPECT_EQ(ribbon.References(), 1U);
}

}  // namespace

TEST(Leaks, SessionsLeaveNoMemoryReferenceOrHandleBehind) {
    ComAllocations com;
    EverythingObject word;
    RunSession(word);  // builds what is built once
    const long blocks = liveBlocks;
    const long comBlocks = com.Live();
    const size_t handles = OpenHandles();
    for (int i = 0; i < 100; ++i) RunSession(word);
    EXPECT_EQ(liveBlocks, blocks);
    EXPECT_EQ(com.Live(), comBlocks);
    EXPECT_LT(OpenHandles(), handles + 100);  // one handle more or less is Wine's
    EXPECT_EQ(word.references, 1U);
}

TEST(Leaks, TwoThousandImageRequestsKeepNothingButTheirIcons) {
    ComAllocations com;
    moduleState.handle = GetModuleHandleW(nullptr);
    EverythingObject word;
    word.id = L"Button_ID_OpenFromMail";
    AddinState addin;
    addin.host = HostWord;
    addin.application = &word;
    const auto request = [&] {
        VARIANT argument = {};
        argument.vt = VT_DISPATCH;
        argument.pdispVal = &word;
        DISPPARAMS params = {&argument, nullptr, 1, 0};
        OwnedVariant picture;
        EXPECT_EQ(OnLoadImage(addin, &params, &picture), S_OK);
    };
    for (int i = 0; i < 10; ++i) request();
    const long blocks = liveBlocks;
    const long comBlocks = com.Live();
    const size_t handles = OpenHandles();
    const ULONG references = word.references;
    for (int i = 0; i < 2000; ++i) request();
    EXPECT_EQ(liveBlocks, blocks);
    EXPECT_EQ(com.Live(), comBlocks);
    EXPECT_LT(OpenHandles(), handles + 100);  // keys; icons are not kernel handles
    EXPECT_EQ(word.references, references);
    addin.application.Reset();
    EXPECT_EQ(word.references, 1U);
}

TEST(Leaks, EveryFailedAllocationEndsInAnAnswerAndLeavesNothingBehind) {
    ComAllocations com;
    EverythingObject word;
    RunSession(word);
    const long blocks = liveBlocks;
    const long comBlocks = com.Live();
    int failures = 0;
    for (long n = 0;; ++n) {
        allocationsUntilFailure = n;
        RunSession(word);
        const bool failed = allocationsUntilFailure < 0;
        allocationsUntilFailure = -1;
        ASSERT_EQ(liveBlocks, blocks) << "allocation " << n;
        ASSERT_EQ(com.Live(), comBlocks) << "allocation " << n;
        ASSERT_EQ(word.references, 1U) << "allocation " << n;
        if (!failed) break;
        ++failures;
    }
    EXPECT_GT(failures, 20);
}

TEST(Leaks, TableOfTextsIsBuiltAgainAfterAFailedAllocation) {
    EverythingObject word;
    auto* addin = new ZOfficeAddin;
    BSTR markup = nullptr;
    allocationsUntilFailure = 30;
    EXPECT_EQ(addin->GetCustomUI(nullptr, &markup), E_OUTOFMEMORY);
    allocationsUntilFailure = -1;
    EXPECT_EQ(markup, nullptr);
    EXPECT_EQ(addin->GetCustomUI(nullptr, &markup), S_OK);
    SysFreeString(markup);
    addin->Release();
}

TEST(Leaks, MarkupWithoutMemoryForItsTextIsOutOfMemory) {
    ComAllocations com;
    auto* addin = new ZOfficeAddin;
    BSTR markup = reinterpret_cast<BSTR>(ULONG_PTR{0xdeadbeef});
    com.failing = true;
    EXPECT_EQ(addin->GetCustomUI(nullptr, &markup), E_OUTOFMEMORY);
    com.failing = false;
    EXPECT_EQ(markup, nullptr);
    addin->Release();
}

TEST(Leaks, ObjectThatLacksTheInterfaceIsKeptOnPurpose) {
    void* object = nullptr;
    EXPECT_EQ(CreateAddin(IID_IClassFactory, &object), E_NOINTERFACE);
    const long blocks = liveBlocks;
    EXPECT_EQ(CreateAddin(IID_IClassFactory, &object), E_NOINTERFACE);
    EXPECT_EQ(liveBlocks, blocks + 1);
}

TEST(Leaks, ReferenceTakenAndDroppedWhileTheObjectDiesDoesNotDeleteItAgain) {
    const long before = liveBlocks;
    {
        ScriptedRibbon ribbon;
        auto* addin = new ZOfficeAddin;
        int calls = 0;
        ribbon.onRelease = [&] {
            ++calls;
            addin->AddRef();
            addin->Release();
        };
        addin->ribbon.Store(&ribbon);
        calls = 0;
        addin->Release();
        EXPECT_EQ(calls, 1);
    }
    EXPECT_EQ(liveBlocks, before);
}

TEST(Leaks, WatcherThatGetsNoThreadStaysStoppedWithItsKeyClosed) {
    const DWORD number = 1;
    RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\ZavoLeak", L"value", REG_DWORD, &number, sizeof number);
    RegistryWatcher watcher({HKEY_CURRENT_USER, L"Software\\ZavoLeak", L"value", REG_DWORD}, [] {});
    EXPECT_TRUE(watcher.Start());  // makes what is made once
    watcher.Stop();
    const long blocks = liveBlocks;
    const size_t handles = OpenHandles();
    for (int i = 0; i < 20; ++i) {
        threadsFail = true;
        EXPECT_THROW(watcher.Start(), std::system_error);
        threadsFail = false;
    }
    EXPECT_EQ(liveBlocks, blocks);
    EXPECT_LT(OpenHandles(), handles + 20);
    allocationsUntilFailure = 0;
    EXPECT_TRUE(watcher.Start());  // needs no memory
    allocationsUntilFailure = -1;
    watcher.Stop();
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\ZavoLeak");
}
