// The ribbon's callbacks: argument checks, then the table that the identifier is looked up in. A callback's arguments
// arrive last one first.
#include "src/addin/RibbonCallbacks.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "src/addin/Commands.h"
#include "src/automation/RibbonControl.h"
#include "src/base/Barrier.h"
#include "src/base/ControlIds.h"
#include "src/ui/RibbonImages.h"
#include "src/ui/Theme.h"

using Microsoft::WRL::ComPtr;

namespace {

struct Option {
    std::wstring_view controlId;
    bool (*get)(const ExportSettings&);
    void (*set)(ExportSettings&, bool);
};

template <auto Field>
constexpr Option OptionOf(std::wstring_view controlId) {
    return {controlId, [](const ExportSettings& settings) { return settings.*Field != 0; },
            [](ExportSettings& settings, bool checked) { settings.*Field = checked; }};
}

constexpr Option options[] = {
    OptionOf<&ExportSettings::openAfterExport>(CheckBox_ID_OpenAfterExport),
    OptionOf<&ExportSettings::pdfA>(CheckBox_ID_PDFA),
    OptionOf<&ExportSettings::createBookmarks>(CheckBox_ID_CreateBookmarks),
    OptionOf<&ExportSettings::includeDocProps>(CheckBox_ID_IncludeDocProps),
};

const Option* FindOption(std::wstring_view controlId) {
    const auto* found = std::find_if(std::begin(options), std::end(options),
                                     [controlId](const Option& option) { return option.controlId == controlId; });
    return found == std::end(options) ? nullptr : found;
}

// A change of either theme makes the ribbon ask for its pictures again, and each request reads the themes afresh. Where
// Office stores no theme its key is empty, and the values at the root itself are watched.
void WatchThemes(ZOfficeAddin& addin) {
    GetOfficeUiTheme();  // finds the key
    const struct {
        std::wstring key;
        const wchar_t* value;
    } themes[] = {{OfficeCommonKeyPath(), officeThemeValue}, {windowsThemeKey, windowsThemeValue}};
    for (const auto& theme : themes) {
        addin.watchers.push_back(
            std::make_unique<RegistryWatcher>(RegistryValueSpec(HKEY_CURRENT_USER, theme.key, theme.value, REG_DWORD),
                                              [&ribbon = addin.ribbon] { ribbon.Invalidate(); }));
        addin.watchers.back()->Start();  // a key that cannot be opened is not watched
    }
}

// Keeps the ribbon that the host hands over and watches the themes for it. E_INVALIDARG for no object; the error of a
// failed query for IRibbonUI.
HRESULT OnRibbonLoaded(ZOfficeAddin& addin, const DISPPARAMS* params, VARIANT*) {
    if (!params || params->cArgs == 0) return E_INVALIDARG;
    const VARIANT& argument = params->rgvarg[0];
    if (argument.vt != VT_DISPATCH || !argument.pdispVal) return E_INVALIDARG;
    ComPtr<IRibbonUI> ribbon;
    const HRESULT result =
        argument.pdispVal->QueryInterface(IID_IRibbonUI, reinterpret_cast<void**>(ribbon.GetAddressOf()));
    if (FAILED(result) || !ribbon) return result;
    addin.ribbon.Store(std::move(ribbon));
    WatchThemes(addin);
    return result;
}

// Runs the command of the clicked button. S_OK whatever the command did, and for an identifier without a command;
// E_INVALIDARG for no argument, DISP_E_TYPEMISMATCH for a control without a readable identifier.
HRESULT OnButtonClick(ZOfficeAddin& addin, const DISPPARAMS* params, VARIANT*) {
    if (!params || params->cArgs == 0) return E_INVALIDARG;
    const std::wstring controlId = GetControlId(params->rgvarg[0]);
    if (controlId.empty()) return DISP_E_TYPEMISMATCH;
    // A command pumps messages in its dialogs and in calls to another process; a second click can come in there.
    if (std::exchange(addin.commandRunning, true)) return S_OK;
    // A command reports its own failures, so whatever it throws the click itself went well.
    Barrier([&]() -> HRESULT {
        RunCommand(addin.state, controlId);
        return S_OK;
    });
    addin.commandRunning = false;
    return S_OK;
}

// VT_BOOL in `result`: whether the check box's option is set. False and E_NOTIMPL for another identifier.
HRESULT GetCheckBoxState(ZOfficeAddin& addin, const DISPPARAMS* params, VARIANT* result) {
    if (!params || params->cArgs == 0 || !result) return E_INVALIDARG;
    VariantInit(result);
    const std::wstring controlId = GetControlId(params->rgvarg[0]);
    if (controlId.empty()) return DISP_E_TYPEMISMATCH;
    const Option* option = FindOption(controlId);
    result->vt = VT_BOOL;
    result->boolVal = option && option->get(addin.state.settings) ? VARIANT_TRUE : VARIANT_FALSE;
    return option ? S_OK : E_NOTIMPL;
}

// Stores the check box's new state. E_NOTIMPL for another identifier.
HRESULT OnCheckBoxChanged(ZOfficeAddin& addin, const DISPPARAMS* params, VARIANT*) {
    if (!params || params->cArgs < 2) return E_INVALIDARG;
    const std::wstring controlId = GetControlId(params->rgvarg[1]);
    if (controlId.empty()) return DISP_E_TYPEMISMATCH;
    const Option* option = FindOption(controlId);
    if (!option) return E_NOTIMPL;
    // The type tag is not looked at, on purpose: the host's boolean is taken from the 16 bits where it stands.
    option->set(addin.state.settings, params->rgvarg[0].boolVal == VARIANT_TRUE);
    return S_OK;
}

constexpr RibbonCallback callbacks[] = {
    {OnRibbonLoadedName, 1001, OnRibbonLoaded},
    {OnButtonClickName, 1002, OnButtonClick},
    {OnLoadImageName, 1003,
     [](ZOfficeAddin& addin, const DISPPARAMS* params, VARIANT* result) {
         return OnLoadImage(addin.state, params, result);
     }},
    {GetCheckBoxStateName, 1004, GetCheckBoxState},
    {OnCheckBoxChangedName, 1005, OnCheckBoxChanged},
};

const RibbonCallback* Find(const auto& isWanted) {
    const auto* found = std::find_if(std::begin(callbacks), std::end(callbacks), isWanted);
    return found == std::end(callbacks) ? nullptr : found;
}

}  // namespace

const RibbonCallback* FindRibbonCallback(const wchar_t* name) {
    return Find([name](const RibbonCallback& callback) { return name && callback.name == name; });
}

const RibbonCallback* FindRibbonCallback(DISPID dispid) {
    return Find([dispid](const RibbonCallback& callback) { return callback.dispid == dispid; });
}
