// Word in the test process.
#include "tests/support/LocalWord.h"

#include <objbase.h>

#include <filesystem>
#include <fstream>

#include "src/base/Barrier.h"
#include "standins/office/DocumentExport.h"
#include "standins/office/DynamicObject.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr CLSID wordClass = {0x000209FF, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
constexpr IID wordInterface = {0x00020970, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
constexpr wchar_t wordClassText[] = L"{000209FF-0000-0000-C000-000000000046}";

constexpr UINT openArguments = 16;
constexpr UINT exportArguments = 14;

ComPtr<IDispatch> MakeDocument(const std::wstring& path) {
    const auto document = MakeObject(L"Document");
    document->members.AddMethod(L"ExportAsFixedFormat", [path](const Arguments& arguments, VARIANT*) {
        if (arguments.Count() != exportArguments) throw static_cast<HRESULT>(DISP_E_BADPARAMCOUNT);
        std::ofstream pdf(std::filesystem::path(Required(arguments.Text(1))), std::ios::binary);
        pdf << "%PDF of " << std::filesystem::path(path).filename().string();
        if (!pdf) throw AutomationError{commandFailed, L"The PDF could not be written"};
        return S_OK;
    });
    return document;
}

ComPtr<IDispatch> MakeDocuments() {
    const auto documents = MakeObject(L"Documents");
    documents->members.AddMethod(L"Open", [](const Arguments& arguments, VARIANT* result) {
        if (arguments.Count() != openArguments) throw static_cast<HRESULT>(DISP_E_BADPARAMCOUNT);
        const std::wstring path = Required(arguments.Text(1));
        if (!std::filesystem::is_regular_file(path)) throw AutomationError{commandFailed, L"There is no such document"};
        return GiveObject(result, MakeDocument(path).Get());
    });
    return documents;
}

}  // namespace

LocalWord::LocalWord(CallFaults& faults) : faults_(faults), factory_(*this) {
    const struct {
        std::wstring path;
        std::wstring value;
    } wanted[] = {
        {L"Software\\Classes\\Word.Application", L""},
        {L"Software\\Classes\\Word.Application\\CLSID", wordClassText},
        {std::wstring(L"Software\\Classes\\CLSID\\") + wordClassText, L""},
    };
    for (const auto& [path, value] : wanted) {
        RegistryKey key;
        DWORD disposition = 0;
        if (RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, key.Receive(),
                            &disposition) != ERROR_SUCCESS ||
            disposition != REG_CREATED_NEW_KEY) {
            continue;
        }
        keys_.insert(keys_.begin(), path);  // a key goes before the one that it is in
        RegSetValueExW(key.Get(), nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                       static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    }
    CoRegisterClassObject(wordClass, &factory_, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE, &registration_);
}

LocalWord::~LocalWord() {
    CoRevokeClassObject(registration_);
    for (const std::wstring& key : keys_) RegDeleteKeyW(HKEY_LOCAL_MACHINE, key.c_str());
}

ComPtr<IDispatch> LocalWord::Start() {
    const auto application = Adopt(new DynamicObject<>(L"Word", {wordInterface}));
    Members& members = application->members;
    for (const wchar_t* const name : {L"Visible", L"DisplayAlerts"}) {
        members.AddProperty(name, nullptr, [](const VARIANT& value) {
            return value.vt == VT_BOOL && value.boolVal == VARIANT_FALSE ? S_OK : DISP_E_TYPEMISMATCH;
        });
    }
    members.AddProperty(L"Documents", [](VARIANT* result) { return GiveObject(result, MakeDocuments().Get()); });
    members.AddMethod(L"Quit", [this](const Arguments& arguments, VARIANT*) {
        if (arguments.Count() != 0) throw static_cast<HRESULT>(DISP_E_BADPARAMCOUNT);
        ++quit;
        return S_OK;
    });
    ++started;
    return Wrap(application, faults_);
}

HRESULT LocalWord::Factory::QueryInterface(REFIID riid, void** ppv) {
    *ppv = riid == IID_IUnknown || riid == IID_IClassFactory ? this : nullptr;
    return *ppv ? S_OK : E_NOINTERFACE;
}

HRESULT LocalWord::Factory::CreateInstance(IUnknown* outer, REFIID riid, void** ppv) {
    *ppv = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    const HostScope scope(word_.faults_);
    return Barrier([&]() -> HRESULT { return word_.Start()->QueryInterface(riid, ppv); });
}
