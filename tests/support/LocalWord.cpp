// Word in the test process.
#include "tests/support/LocalWord.h"

#include <filesystem>
#include <fstream>

#include "src/base/Handles.h"
#include "standins/office/AutomatedWord.h"
#include "standins/office/DocumentExport.h"
#include "standins/office/DynamicObject.h"

using Microsoft::WRL::ComPtr;

namespace {

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

LocalWord::LocalWord(CallFaults& faults)
    : faults_(faults), class_([this](REFIID riid, void** ppv) {
          const HostScope scope(faults_);
          return Start()->QueryInterface(riid, ppv);
      }) {}

ComPtr<IDispatch> LocalWord::Start() {
    const auto application = Adopt(new DynamicObject<>(L"Word", {wordApplicationIid}));
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
