// An add-in's session.
#include "standins/office/AddinSession.h"

#include <objbase.h>
#include <oleauto.h>

#include <algorithm>
#include <stdexcept>

#include "src/base/Handles.h"
#include "standins/common/Text.h"
#include "standins/office/DynamicObject.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr IID ribbonControlIid = {0x000C0395, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

// The ribbon that the add-in gets in its ribbon-loaded callback.
class RibbonUi final : public DynamicObject<IRibbonUI> {
public:
    explicit RibbonUi(std::function<void()> onInvalidate)
        : DynamicObject<IRibbonUI>(L"RibbonUI", {IID_IRibbonUI}), onInvalidate_(std::move(onInvalidate)) {}

    HRESULT STDMETHODCALLTYPE Invalidate() override {
        onInvalidate_();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE InvalidateControl(BSTR) override { return S_OK; }

private:
    const std::function<void()> onInvalidate_;
};

// The control that a callback is called for. Id is its first member, so it has DISPID 1.
ComPtr<IDispatch> MakeControl(const std::wstring& id) {
    const auto control = Adopt(new DynamicObject<>(L"RibbonControl " + id, {ribbonControlIid}));
    control->members.AddProperty(L"Id", [id](VARIANT* result) { return GiveText(result, id); });
    control->members.AddProperty(L"Context", [](VARIANT* result) { return GiveObject(result, nullptr); });
    control->members.AddProperty(L"Tag", [](VARIANT* result) { return GiveText(result, L""); });
    return control;
}

void Check(HRESULT result, const wchar_t* what) {
    if (FAILED(result)) throw std::runtime_error(Utf8(what + (L": " + HexText(result))));
}

}  // namespace

std::vector<std::wstring> FindStartupAddins(const std::wstring& host) {
    constexpr DWORD loadAtStartup = 2;
    std::vector<std::wstring> found;
    const std::wstring path = L"SOFTWARE\\Microsoft\\Office\\" + host + L"\\Addins";
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        RegistryKey addins;
        if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, addins.Receive()) != ERROR_SUCCESS) continue;
        wchar_t name[256];
        for (DWORD i = 0;; ++i) {
            DWORD length = ARRAYSIZE(name);
            if (RegEnumKeyExW(addins.Get(), i, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
                break;
            DWORD behavior = 0;
            DWORD size = sizeof behavior;
            if (RegGetValueW(addins.Get(), name, L"LoadBehavior", RRF_RT_REG_DWORD, nullptr, &behavior, &size) ==
                    ERROR_SUCCESS &&
                (behavior & loadAtStartup) && std::find(found.begin(), found.end(), name) == found.end()) {
                found.emplace_back(name);
            }
        }
    }
    return found;
}

AddinSession::AddinSession(const std::wstring& progId, IDispatch* application, const std::wstring& ribbonId,
                           std::function<void()> onInvalidate)
    : AddinSession(progId, std::move(onInvalidate)) {
    Connect(application, ribbonId);  // throws into a whole object, which then disconnects
}

AddinSession::AddinSession(const std::wstring& progId, std::function<void()> onInvalidate)
    : onInvalidate_(std::move(onInvalidate)) {
    CLSID clsid = {};
    Check(CLSIDFromProgID(progId.c_str(), &clsid), L"the add-in's class is not registered");
    Check(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDTExtensibility2,
                           reinterpret_cast<void**>(addin_.GetAddressOf())),
          L"the add-in cannot be created");
}

void AddinSession::Connect(IDispatch* application, const std::wstring& ribbonId) {
    const auto addinEntry = MakeObject(L"COMAddIn");
    SAFEARRAY* custom = nullptr;
    Check(addin_->OnConnection(application, ext_cm_Startup, addinEntry.Get(), &custom),
          L"the add-in refused the connection");
    addin_->OnAddInsUpdate(&custom);

    ComPtr<IRibbonExtensibility> extensibility;
    Check(addin_->QueryInterface(IID_IRibbonExtensibility, reinterpret_cast<void**>(extensibility.GetAddressOf())),
          L"the add-in has no ribbon");
    Check(addin_->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(callbacks_.GetAddressOf())),
          L"the add-in has no callbacks");
    const Bstr id(ribbonId);
    Bstr markup;
    Check(extensibility->GetCustomUI(id.Get(), markup.Receive()), L"the add-in gave no ribbon markup");
    markup_.assign(markup.Get(), SysStringLen(markup.Get()));
    ribbon_ = ParseRibbon(markup_);

    if (!ribbon_.onLoad.empty()) {
        const ComPtr<IRibbonUI> ribbonUi = Adopt(new RibbonUi(onInvalidate_));
        VARIANT argument = ObjectArgument(ribbonUi.Get());
        Check(Call(ribbon_.onLoad, &argument, 1).result, L"the add-in refused the ribbon");
    }
    addin_->OnStartupComplete(&custom);
}

AddinSession::~AddinSession() {
    SAFEARRAY* custom = nullptr;
    addin_->OnBeginShutdown(&custom);
    addin_->OnDisconnection(ext_dm_HostShutdown, &custom);
    callbacks_.Reset();
    if (addin_.Reset() != 0) PrintError(L"never released: the add-in object");
}

CallbackResult AddinSession::Call(const std::wstring& callback, VARIANT* arguments, UINT count) {
    CallbackResult answer;
    std::wstring name = callback;
    LPOLESTR names = name.data();
    DISPID dispid = DISPID_UNKNOWN;
    answer.result = callbacks_->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &dispid);
    if (FAILED(answer.result)) return answer;
    DISPPARAMS params = {arguments, nullptr, count, 0};
    OwnedVariant result;
    answer.result =
        callbacks_->Invoke(dispid, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, &result, nullptr, nullptr);
    if (result.vt == VT_DISPATCH && result.pdispVal) {
        result.pdispVal->QueryInterface(IID_IPicture, reinterpret_cast<void**>(answer.picture.GetAddressOf()));
    }
    answer.pressed = result.vt == VT_BOOL && result.boolVal != VARIANT_FALSE;
    return answer;
}

CallbackResult AddinSession::CallFor(const RibbonElement& element, const std::wstring& callback) {
    const ComPtr<IDispatch> control = MakeControl(element.id);
    VARIANT argument = ObjectArgument(control.Get());
    return Call(callback, &argument, 1);
}

CallbackResult AddinSession::Click(const RibbonElement& button) { return CallFor(button, button.onAction); }

CallbackResult AddinSession::GetPressed(const RibbonElement& checkBox) {
    return CallFor(checkBox, checkBox.getPressed);
}

CallbackResult AddinSession::LoadImage(const RibbonElement& element) { return CallFor(element, element.getImage); }

CallbackResult AddinSession::SetPressed(const RibbonElement& checkBox, bool pressed) {
    const ComPtr<IDispatch> control = MakeControl(checkBox.id);
    VARIANT arguments[2];
    VariantInit(&arguments[0]);
    arguments[0].vt = VT_BOOL;
    arguments[0].boolVal = pressed ? VARIANT_TRUE : VARIANT_FALSE;
    arguments[1] = ObjectArgument(control.Get());
    return Call(checkBox.onAction, arguments, 2);
}
