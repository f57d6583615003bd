// Members by name, their invocation, and the count of live objects.
#include "standins/office/DynamicObject.h"

#include <oleauto.h>

#include <map>
#include <mutex>

#include "src/base/Barrier.h"
#include "src/base/Handles.h"

using Microsoft::WRL::ComPtr;

const VARIANT* Arguments::At(UINT position) const {
    if (position == 0 || position > params_->cArgs) return nullptr;
    const VARIANT* argument = &params_->rgvarg[params_->cArgs - position];
    return argument->vt == VT_ERROR && argument->scode == DISP_E_PARAMNOTFOUND ? nullptr : argument;
}

namespace {

// Throws an HRESULT, as documented for Arguments.
void Convert(OwnedVariant& converted, const VARIANT& value, VARTYPE type) {
    // The source is an input only; some headers declare it without const.
    const HRESULT result = VariantChangeType(&converted, const_cast<VARIANT*>(&value), 0, type);
    if (FAILED(result)) throw static_cast<HRESULT>(DISP_E_TYPEMISMATCH);
}

}  // namespace

std::optional<std::wstring> Arguments::Text(UINT position) const {
    const VARIANT* argument = At(position);
    if (!argument) return std::nullopt;
    OwnedVariant text;
    Convert(text, *argument, VT_BSTR);
    return std::wstring(text.bstrVal ? text.bstrVal : L"", SysStringLen(text.bstrVal));
}

std::optional<LONG> Arguments::Number(UINT position) const {
    const VARIANT* argument = At(position);
    if (!argument) return std::nullopt;
    OwnedVariant number;
    Convert(number, *argument, VT_I4);
    return number.lVal;
}

std::optional<bool> Arguments::Boolean(UINT position) const {
    const VARIANT* argument = At(position);
    if (!argument) return std::nullopt;
    // Office takes any value but zero for true; a conversion would keep a VT_BOOL of 1 as it is.
    OwnedVariant value;
    Convert(value, *argument, VT_BOOL);
    return value.boolVal != 0;
}

void Members::AddProperty(std::wstring name, Getter get, Setter set) {
    members_.push_back({std::move(name), std::move(get), std::move(set), nullptr});
}

void Members::AddMethod(std::wstring name, Method call) {
    members_.push_back({std::move(name), nullptr, nullptr, std::move(call)});
}

HRESULT Members::GetIDsOfNames(LPOLESTR* names, UINT count, DISPID* dispids) const {
    if (!names || !dispids || count == 0) return E_INVALIDARG;
    for (UINT i = 0; i < count; ++i) dispids[i] = DISPID_UNKNOWN;
    for (size_t i = 0; i < members_.size(); ++i) {
        if (_wcsicmp(members_[i].name.c_str(), names[0]) == 0) dispids[0] = static_cast<DISPID>(i + 1);
    }
    // Argument names are not known here.
    return dispids[0] == DISPID_UNKNOWN || count > 1 ? DISP_E_UNKNOWNNAME : S_OK;
}

HRESULT Members::Call(const Member& member, WORD flags, const DISPPARAMS& params, VARIANT* result) const {
    if ((flags & DISPATCH_METHOD) && member.call) {
        return params.cNamedArgs == 0 ? member.call(Arguments(&params), result) : DISP_E_NONAMEDARGS;
    }
    if ((flags & DISPATCH_PROPERTYGET) && member.get) {
        return params.cArgs == 0 ? member.get(result) : DISP_E_BADPARAMCOUNT;
    }
    if ((flags & DISPATCH_PROPERTYPUT) && member.set) {
        const bool named = params.cNamedArgs == 1 && params.rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
        return named && params.cArgs == 1 ? member.set(params.rgvarg[0]) : DISP_E_BADPARAMCOUNT;
    }
    return DISP_E_MEMBERNOTFOUND;
}

HRESULT Members::Invoke(DISPID dispid, WORD flags, DISPPARAMS* params, VARIANT* result,
                        EXCEPINFO* exceptionInfo) const {
    if (!params) return E_INVALIDARG;
    if (dispid < 1 || static_cast<size_t>(dispid) > members_.size()) return DISP_E_MEMBERNOTFOUND;
    return Barrier([&]() -> HRESULT {
        OwnedVariant value;
        try {
            const HRESULT called = Call(members_[static_cast<size_t>(dispid) - 1], flags, *params, &value);
            if (SUCCEEDED(called) && result) {
                *result = value;  // moves the value out
                VariantInit(&value);
            }
            return called;
        } catch (const AutomationError& error) {
            if (exceptionInfo) {
                *exceptionInfo = {};
                exceptionInfo->scode = error.code;
                exceptionInfo->bstrSource = SysAllocString(L"ZAVO Office stand-in");
                exceptionInfo->bstrDescription = SysAllocString(error.text.c_str());
            }
            return DISP_E_EXCEPTION;
        } catch (HRESULT error) {
            return error;
        }
    });
}

namespace {

struct LiveObject {
    std::wstring name;
    const ULONG* references;
};

std::mutex& LiveMutex() {
    static std::mutex mutex;
    return mutex;
}

std::map<const void*, LiveObject>& Live() {
    static std::map<const void*, LiveObject> objects;
    return objects;
}

}  // namespace

void LiveObjects::Add(const void* object, const std::wstring& name, const ULONG* references) {
    const std::lock_guard lock(LiveMutex());
    Live()[object] = {name, references};
}

void LiveObjects::Remove(const void* object) {
    const std::lock_guard lock(LiveMutex());
    Live().erase(object);
}

std::vector<std::wstring> LiveObjects::List() {
    const std::lock_guard lock(LiveMutex());
    std::vector<std::wstring> list;
    for (const auto& [object, live] : Live()) {
        list.push_back(live.name + L" (" + std::to_wstring(*live.references) + L")");
    }
    return list;
}

ComPtr<DynamicObject<>> MakeObject(const std::wstring& name) { return Adopt(new DynamicObject<>(name)); }

VARIANT ObjectArgument(IDispatch* object) {
    VARIANT argument;
    VariantInit(&argument);
    argument.vt = VT_DISPATCH;
    argument.pdispVal = object;
    return argument;
}

HRESULT GiveText(VARIANT* result, const std::wstring& text) {
    result->vt = VT_BSTR;
    result->bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return result->bstrVal ? S_OK : E_OUTOFMEMORY;
}

HRESULT GiveNumber(VARIANT* result, LONG number) {
    result->vt = VT_I4;
    result->lVal = number;
    return S_OK;
}

HRESULT GiveBoolean(VARIANT* result, bool value) {
    result->vt = VT_BOOL;
    result->boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

HRESULT GiveObject(VARIANT* result, IDispatch* object) {
    result->vt = VT_DISPATCH;
    result->pdispVal = object;
    if (object) object->AddRef();
    return S_OK;
}
