// Scripted automation objects.
#include "tests/support/ScriptedDispatch.h"

#include <oleauto.h>

#include <ostream>

#include "src/base/Handles.h"
#include "standins/common/Text.h"

WireValue WireOf(const VARIANT& value) {
    WireValue wire;
    wire.type = value.vt;
    switch (value.vt) {
        case VT_I4: wire.number = value.lVal; break;
        case VT_BOOL: wire.number = value.boolVal; break;
        case VT_ERROR: wire.number = value.scode; break;
        case VT_BSTR:
            wire.isNull = !value.bstrVal;
            wire.text.assign(value.bstrVal ? value.bstrVal : L"", SysStringLen(value.bstrVal));
            break;
        case VT_DISPATCH:
            wire.isNull = !value.pdispVal;
            wire.object = value.pdispVal;
            break;
        default: break;
    }
    return wire;
}

WireValue WireNumber(LONG number) { return {VT_I4, number, {}, false, nullptr}; }
WireValue WireBool(VARIANT_BOOL value) { return {VT_BOOL, value, {}, false, nullptr}; }
WireValue WireText(const std::wstring& text) { return {VT_BSTR, 0, text, false, nullptr}; }
WireValue WireOmitted() { return {VT_ERROR, DISP_E_PARAMNOTFOUND, {}, false, nullptr}; }
WireValue WireNullObject() { return {VT_DISPATCH, 0, {}, true, nullptr}; }

std::ostream& operator<<(std::ostream& out, const WireValue& value) {
    return out << "{type " << value.type << ", number " << value.number << ", text \"" << Utf8(value.text) << "\""
               << (value.isNull ? ", null" : "") << "}";
}

void ScriptedDispatch::On(const std::wstring& name, Action action) {
    for (Member& member : members_) {
        if (member.name == name) {
            member.action = std::move(action);
            return;
        }
    }
    members_.push_back({name, std::move(action)});
}

void ScriptedDispatch::GiveNothing(const std::wstring& name) {
    On(name, [](VARIANT*) { return S_OK; });
}

void ScriptedDispatch::GiveText(const std::wstring& name, const std::wstring& text) {
    On(name, [text](VARIANT* result) {
        result->vt = VT_BSTR;
        result->bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
        return S_OK;
    });
}

void ScriptedDispatch::GiveNumber(const std::wstring& name, LONG number) {
    On(name, [number](VARIANT* result) {
        result->vt = VT_I4;
        result->lVal = number;
        return S_OK;
    });
}

void ScriptedDispatch::GiveObject(const std::wstring& name, IDispatch* object) {
    On(name, [object](VARIANT* result) {
        *result = ObjectArgument(object);
        if (object) object->AddRef();
        return S_OK;
    });
}

void ScriptedDispatch::GiveType(const std::wstring& name, VARTYPE type) {
    On(name, [type](VARIANT* result) {
        *result = {};
        result->vt = type;
        return S_OK;
    });
}

void ScriptedDispatch::Fail(const std::wstring& name, HRESULT hr) {
    On(name, [hr](VARIANT*) { return hr; });
}

HRESULT ScriptedDispatch::QueryInterface(REFIID riid, void** ppv) {
    *ppv = nullptr;
    if (riid != IID_IUnknown && riid != IID_IDispatch) return E_NOINTERFACE;
    *ppv = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
}

namespace {
constexpr DISPID firstDispid = 100;
}

HRESULT ScriptedDispatch::GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid, DISPID* dispids) {
    lookups.push_back({names[0], riid, count, lcid});
    for (size_t i = 0; i < members_.size(); ++i) {
        if (members_[i].name == names[0]) {
            *dispids = firstDispid + static_cast<DISPID>(i);
            return S_OK;
        }
    }
    *dispids = DISPID_UNKNOWN;
    return DISP_E_UNKNOWNNAME;
}

HRESULT ScriptedDispatch::Invoke(DISPID dispid, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params, VARIANT* result,
                                 EXCEPINFO* exceptionInfo, UINT* wrongArgument) {
    const auto index = static_cast<size_t>(dispid - firstDispid);
    if (index >= members_.size()) return DISP_E_MEMBERNOTFOUND;
    Invocation invocation = {
        members_[index].name,    riid, lcid, flags, {}, {}, result != nullptr, exceptionInfo != nullptr,
        wrongArgument != nullptr};
    for (UINT i = 0; i < params->cArgs; ++i) invocation.wire.push_back(WireOf(params->rgvarg[i]));
    for (UINT i = 0; i < params->cNamedArgs; ++i) invocation.named.push_back(params->rgdispidNamedArgs[i]);
    invocations.push_back(invocation);
    if (onInvoke) onInvoke(invocation);
    OwnedVariant dropped;
    const Action action = members_[index].action;  // it may give the member another one
    return action(result ? result : &dropped);
}

std::vector<std::wstring> ScriptedDispatch::LookedUp() const {
    std::vector<std::wstring> names;
    for (const Lookup& lookup : lookups) names.push_back(lookup.name);
    return names;
}

std::vector<std::wstring> ScriptedDispatch::Invoked() const {
    std::vector<std::wstring> names;
    for (const Invocation& invocation : invocations) names.push_back(invocation.name);
    return names;
}

HRESULT ScriptedControl::QueryInterface(REFIID riid, void** ppv) {
    *ppv = nullptr;
    if (riid != IID_IUnknown && riid != IID_IDispatch) return E_NOINTERFACE;
    *ppv = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
}

HRESULT ScriptedControl::Invoke(DISPID dispid, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params, VARIANT* result,
                                EXCEPINFO* exceptionInfo, UINT* wrongArgument) {
    last = {L"Id", riid, lcid, flags, {}, {}, result != nullptr, exceptionInfo != nullptr, wrongArgument != nullptr};
    if (dispid != 1 || flags != DISPATCH_PROPERTYGET || params->cArgs != 0) return DISP_E_MEMBERNOTFOUND;
    if (FAILED(idResult)) return idResult;
    result->vt = idType == VT_NULL ? static_cast<VARTYPE>(VT_BSTR) : idType;
    result->bstrVal = idType == VT_BSTR ? SysAllocStringLen(id_.data(), static_cast<UINT>(id_.size())) : nullptr;
    return S_OK;
}
