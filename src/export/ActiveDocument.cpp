#include "src/export/ActiveDocument.h"

#include <stdexcept>

#include "src/automation/AutomationCalls.h"

using Microsoft::WRL::ComPtr;

namespace {

struct ActiveDocumentProperty {
    Host host;
    const wchar_t* name;
};

constexpr ActiveDocumentProperty properties[] = {
    {HostWord, L"ActiveDocument"},
    {HostExcel, L"ActiveWorkbook"},
    {HostPowerPoint, L"ActivePresentation"},
};

const wchar_t* PropertyOf(Host host) {
    for (const ActiveDocumentProperty& property : properties) {
        if (property.host == host) return property.name;
    }
    throw std::out_of_range("invalid unordered_map<K, T> key");
}

}  // namespace

ComPtr<IDispatch> GetActiveDocument(const AddinState& addin, IDispatch* application) {
    const wchar_t* property = PropertyOf(addin.host);
    return application ? GetObjectProperty(application, property) : nullptr;
}

std::wstring GetActiveDocumentFullName(const AddinState& addin) {
    if (!addin.application) return {};
    const ComPtr<IDispatch> document = GetActiveDocument(addin, addin.application.Get());
    if (!document) return {};
    return GetTextProperty(document.Get(), L"FullName").value_or(std::wstring());
}
