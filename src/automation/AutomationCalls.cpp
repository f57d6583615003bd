// Late-bound calls and the reading of their results.
#include "src/automation/AutomationCalls.h"

#include <algorithm>
#include <memory>
#include <new>

using Microsoft::WRL::ComPtr;

HRESULT LookUpMember(IDispatch* disp, std::wstring_view name, DISPID* dispid) {
    *dispid = DISPID_UNKNOWN;
    if (!disp) return E_POINTER;
    std::wstring writable(name);  // GetIDsOfNames takes a writable name
    LPOLESTR names = writable.data();
    return disp->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, dispid);
}

HRESULT InvokeMember(IDispatch* disp, DISPID dispid, WORD flags, DISPPARAMS* params, VARIANT* result) {
    return disp->Invoke(dispid, IID_NULL, LOCALE_USER_DEFAULT, flags, params, result, nullptr, nullptr);
}

namespace {

HRESULT Call(IDispatch* disp, std::wstring_view name, WORD flags, DISPPARAMS* params, VARIANT* result) {
    DISPID dispid = DISPID_UNKNOWN;
    const HRESULT found = LookUpMember(disp, name, &dispid);
    if (FAILED(found)) return found;
    return InvokeMember(disp, dispid, flags, params, result);
}

}  // namespace

HRESULT AutomationGetProperty(IDispatch* disp, std::wstring_view name, VARIANT* result) {
    DISPPARAMS params = {};
    return Call(disp, name, DISPATCH_PROPERTYGET, &params, result);
}

HRESULT AutomationPutProperty(IDispatch* disp, std::wstring_view name, UINT count, VARIANT* args) {
    DISPID named = DISPID_PROPERTYPUT;
    DISPPARAMS params = {args, &named, count, 1};
    return Call(disp, name, DISPATCH_PROPERTYPUT, &params, nullptr);
}

HRESULT AutomationCallMethod(IDispatch* disp, std::wstring_view name, VARIANT* result, UINT count,
                             const VARIANT* args) {
    DISPID dispid = DISPID_UNKNOWN;
    const HRESULT found = LookUpMember(disp, name, &dispid);
    if (FAILED(found)) return found;
    // Borrowed copies: what they hold stays the caller's. A call without arguments needs no memory.
    const std::unique_ptr<VARIANT[]> reversed(count > 0 ? new (std::nothrow) VARIANT[count] : nullptr);
    if (count > 0 && !reversed) return E_OUTOFMEMORY;
    std::reverse_copy(args, args + count, reversed.get());
    DISPPARAMS params = {reversed.get(), nullptr, count, 0};
    return InvokeMember(disp, dispid, DISPATCH_METHOD, &params, result);
}

HRESULT AutomationCallMethod1(IDispatch* disp, std::wstring_view name, VARIANT* result, VARIANT arg) {
    DISPPARAMS params = {&arg, nullptr, 1, 0};
    return Call(disp, name, DISPATCH_METHOD, &params, result);
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
