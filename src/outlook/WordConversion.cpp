// Word as a local server, driven by name.
#include "src/outlook/WordConversion.h"

#include <windows.h>
#include <objbase.h>
#include <wrl/client.h>

#include "src/automation/AutomationCalls.h"
#include "src/base/Barrier.h"
#include "src/export/ExportToPdf.h"

using Microsoft::WRL::ComPtr;

namespace {

// Word's `_Application` interface, as published with its type library; everything on it is called by name.
constexpr IID wordApplicationIid = {0x00020970, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

// Documents.Open (learn.microsoft.com, "Documents.Open method (Word)").
constexpr UINT openArguments = 16;
constexpr UINT openFileName = 1;
constexpr UINT openVisible = 12;

// A Word that was started for one document. It quits at the end, whatever happened to the document.
class HiddenWord {
public:
    HiddenWord() {
        CLSID clsid = {};
        if (FAILED(CLSIDFromProgID(L"Word.Application", &clsid))) return;
        CoCreateInstance(clsid, nullptr, CLSCTX_LOCAL_SERVER, wordApplicationIid,
                         reinterpret_cast<void**>(application_.GetAddressOf()));
    }
    HiddenWord(const HiddenWord&) = delete;
    HiddenWord& operator=(const HiddenWord&) = delete;
    ~HiddenWord() {
        if (!application_) return;
        Barrier([this] { return AutomationCallMethod(Get(), L"Quit", nullptr, 0, nullptr); });
    }

    IDispatch* Get() const { return application_.Get(); }

    // Neither shows itself nor asks anything. A false Word reads as showing no alerts.
    bool Hide() {
        for (const wchar_t* const property : {L"Visible", L"DisplayAlerts"}) {
            VARIANT no = MakeVariantBool(VARIANT_FALSE);
            if (FAILED(AutomationPutProperty(Get(), property, 1, &no))) return false;
        }
        return true;
    }

private:
    ComPtr<IDispatch> application_;
};

ComPtr<IDispatch> OpenHidden(IDispatch* documents, const std::wstring& path) {
    OwnedVariant result;
    if (FAILED(AutomationCallLongMethod(documents, L"Open", &result, openArguments, [&](AutomationArgs& pack) {
            pack.Argument(openFileName) = MakeVariantString(path.c_str());
            pack.Argument(openVisible) = MakeVariantBool(VARIANT_FALSE);
        }))) {
        return nullptr;
    }
    return TakeObject(result);
}

}  // namespace

bool ConvertWithWord(const AddinState& addin, const std::wstring& documentPath, const std::wstring& pdfPath) {
    HiddenWord word;
    if (!word.Get() || !word.Hide()) return false;
    const ComPtr<IDispatch> documents = GetObjectProperty(word.Get(), L"Documents");
    const ComPtr<IDispatch> document = OpenHidden(documents.Get(), documentPath);
    return ExportAsPdf(addin, document.Get(), pdfPath);
}
