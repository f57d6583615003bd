// Registration of a Word for tests.
#include "tests/support/WordClass.h"

#include <objbase.h>

#include <stdexcept>
#include <utility>

#include "src/base/Barrier.h"
#include "standins/word/Registration.h"

namespace {

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

WordProgId::WordProgId() : previousClass_(RegisteredClass()) { RegisterClass(wordClassText); }

WordProgId::~WordProgId() {
    Remove();
    if (!previousClass_.empty()) RegisterClass(previousClass_);
}

void WordProgId::Remove() {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, progIdClassKey);
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, progIdKey);  // unless it has more
}

WordClass::WordClass(Create create) : create_(std::move(create)) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (FAILED(CoRegisterClassObject(wordClassId, this, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &registration_))) {
        throw std::runtime_error("Word's class cannot be registered");
    }
}

WordClass::~WordClass() {
    Revoke();
    CoUninitialize();
}

void WordClass::Revoke() {
    if (registration_) CoRevokeClassObject(registration_);
    registration_ = 0;
}

HRESULT WordClass::QueryInterface(REFIID riid, void** ppv) {
    *ppv = nullptr;
    if (riid != IID_IUnknown && riid != IID_IClassFactory) return E_NOINTERFACE;
    *ppv = static_cast<IClassFactory*>(this);
    return S_OK;
}

HRESULT WordClass::CreateInstance(IUnknown* outer, REFIID riid, void** ppv) {
    *ppv = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    return Barrier([&]() -> HRESULT { return create_(riid, ppv); });
}
