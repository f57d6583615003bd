// The scripted Word.
#include "tests/support/ScriptedWord.h"

#include <gtest/gtest.h>

#include "tests/support/Files.h"

namespace {

constexpr CLSID wordClass = {0x000209FF, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
constexpr wchar_t wordClassText[] = L"{000209FF-0000-0000-C000-000000000046}";
constexpr wchar_t progIdKey[] = L"Software\\Classes\\Word.Application";
constexpr wchar_t progIdClassKey[] = L"Software\\Classes\\Word.Application\\CLSID";

std::wstring RegisteredClass() {
    wchar_t text[64] = L"";
    DWORD size = sizeof text;
    RegGetValueW(HKEY_LOCAL_MACHINE, progIdClassKey, nullptr, RRF_RT_REG_SZ, nullptr, text, &size);
    return text;
}

void RegisterClass(const std::wstring& text) {
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, progIdClassKey, nullptr, REG_SZ, text.c_str(),
                    static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

}  // namespace

ScriptedWord::ScriptedWord(Calls& calls) : calls_(calls), previousClass_(RegisteredClass()) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    RegisterClass(wordClassText);
    EXPECT_EQ(CoRegisterClassObject(wordClass, this, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &registration_), S_OK);

    NoteCalls(application, L"word", calls);
    NoteCalls(documents, L"documents", calls);
    NoteCalls(document, L"document", calls);
    application.GiveNothing(L"Visible");
    application.GiveNothing(L"DisplayAlerts");
    application.GiveObject(L"Documents", &documents);
    application.GiveNothing(L"Quit");
    documents.GiveObject(L"Open", &document);
    document.On(L"ExportAsFixedFormat", [this](VARIANT*) {
        const std::wstring opened = documents.invocations.back().wire.back().text;
        const std::wstring target = document.invocations.back().wire.back().text;
        return WriteFileText(target, "PDF of " + ReadFileText(opened)) ? S_OK : E_FAIL;
    });
}

ScriptedWord::~ScriptedWord() {
    EXPECT_EQ(application.References(), 1U);
    EXPECT_EQ(documents.References(), 1U);
    EXPECT_EQ(document.References(), 1U);
    RevokeClass();
    RemoveProgId();
    if (!previousClass_.empty()) RegisterClass(previousClass_);
    CoUninitialize();
}

void ScriptedWord::RemoveProgId() {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, progIdClassKey);
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, progIdKey);  // unless it has more
}

void ScriptedWord::RevokeClass() {
    if (registration_) CoRevokeClassObject(registration_);
    registration_ = 0;
}

HRESULT ScriptedWord::QueryInterface(REFIID riid, void** ppv) {
    *ppv = nullptr;
    if (riid != IID_IUnknown && riid != IID_IClassFactory) return E_NOINTERFACE;
    *ppv = static_cast<IClassFactory*>(this);
    return S_OK;
}

HRESULT ScriptedWord::CreateInstance(IUnknown*, REFIID riid, void** ppv) {
    asked.push_back(riid);
    calls_.push_back(L"new Word");
    *ppv = nullptr;
    if (FAILED(createResult)) return createResult;
    *ppv = static_cast<IDispatch*>(&application);
    application.AddRef();
    return S_OK;
}
