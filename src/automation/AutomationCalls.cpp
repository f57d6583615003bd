#include "src/automation/AutomationCalls.h"

#include <algorithm>
#include <memory>
#include <new>

#include "src/base/Handles.h"

using Microsoft::WRL::ComPtr;

HRESULT InvokeMember(IDispatch* disp, DISPID dispid, WORD flags, DISPPARAMS& params, VARIANT* result) {
    return disp->Invoke(dispid, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, result, nullptr, nullptr);
}

namespace {

// Looks the member up. `give` then makes its arguments and hands them to the function that it gets, which invokes it.
template <typename Give>
HRESULT Call(IDispatch* disp, std::wstring_view name, WORD flags, VARIANT* result, const Give& give) {
    if (!disp) return E_POINTER;
    std::wstring writable(name);  // GetIDsOfNames takes a writable name
    LPOLESTR names = writable.data();
    DISPID dispid = DISPID_UNKNOWN;
    const HRESULT found = disp->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &dispid);
    if (FAILED(found)) return found;
    return give([&](DISPPARAMS params) { return InvokeMember(disp, dispid, flags, params, result); });
}

}  // namespace

HRESULT AutomationGetProperty(IDispatch* disp, std::wstring_view name, VARIANT* result) {
    return Call(disp, name, DISPATCH_PROPERTYGET, result, [](const auto& invoke) { return invoke({}); });
}

HRESULT AutomationPutProperty(IDispatch* disp, std::wstring_view name, UINT count, VARIANT* args) {
    return Call(disp, name, DISPATCH_PROPERTYPUT, nullptr, [&](const auto& invoke) {
        DISPID named = DISPID_PROPERTYPUT;
        return invoke({args, &named, count, 1});
    });
}

HRESULT AutomationCallMethod(IDispatch* disp, std::wstring_view name, VARIANT* result, UINT count,
                             const VARIANT* args) {
    return Call(disp, name, DISPATCH_METHOD, result, [&](const auto& invoke) -> HRESULT {
        // Borrowed copies: what they hold stays the caller's. A call without arguments needs no memory.
        const std::unique_ptr<VARIANT[]> reversed(count > 0 ? new (std::nothrow) VARIANT[count] : nullptr);
        if (count > 0 && !reversed) return E_OUTOFMEMORY;
        std::reverse_copy(args, args + count, reversed.get());
        return invoke({reversed.get(), nullptr, count, 0});
    });
}

HRESULT AutomationCallMethod1(IDispatch* disp, std::wstring_view name, VARIANT* result, VARIANT arg) {
    return Call(disp, name, DISPATCH_METHOD, result, [&](const auto& invoke) { return invoke({&arg, nullptr, 1, 0}); });
}

HRESULT AutomationCallLongMethod(IDispatch* disp, std::wstring_view name, VARIANT* result, UINT count,
                                 const std::function<void(AutomationArgs&)>& fill) {
    OwnedVariant dropped;
    return Call(disp, name, DISPATCH_METHOD, result ? result : &dropped, [&](const auto& invoke) -> HRESULT {
        const AutomationArgsHandle args = MakeAutomationArgs(count);
        if (!args) return E_OUTOFMEMORY;
        fill(*args);
        return invoke(args->params);
    });
}

ComPtr<IDispatch> TakeObject(VARIANT& result) {
    if (result.vt != VT_DISPATCH || !result.pdispVal) return nullptr;
    IDispatch* object = result.pdispVal;
    VariantInit(&result);  // the reference moves on
    return Adopt(object);
}

std::optional<std::wstring> TextOf(const VARIANT& result) {
    if (result.vt != VT_BSTR || !result.bstrVal) return std::nullopt;
    return std::wstring(result.bstrVal, SysStringLen(result.bstrVal));
}

std::optional<LONG> NumberOf(const VARIANT& result) {
    if (result.vt != VT_I4) return std::nullopt;
    return result.lVal;
}

ComPtr<IDispatch> GetObjectProperty(IDispatch* disp, std::wstring_view name) {
    OwnedVariant result;
    if (FAILED(AutomationGetProperty(disp, name, &result))) return nullptr;
    return TakeObject(result);
}

std::optional<std::wstring> GetTextProperty(IDispatch* disp, std::wstring_view name) {
    OwnedVariant result;
    if (FAILED(AutomationGetProperty(disp, name, &result))) return std::nullopt;
    return TextOf(result);
}

std::optional<LONG> GetNumberProperty(IDispatch* disp, std::wstring_view name) {
    OwnedVariant result;
    if (FAILED(AutomationGetProperty(disp, name, &result))) return std::nullopt;
    return NumberOf(result);
}

bool HasReadableProperty(IDispatch* disp, std::wstring_view name) {
    OwnedVariant result;
    return SUCCEEDED(AutomationGetProperty(disp, name, &result));
}
