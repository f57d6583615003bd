// Objects that count calls and let one go wrong.
#include "tests/support/FaultyDispatch.h"

#include <oleauto.h>

#include <utility>

#include "src/base/Barrier.h"
#include "src/base/Handles.h"
#include "standins/common/Counted.h"
#include "standins/office/DynamicObject.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr DISPID nobodysNumber = 0x7FFFFFF0;

class FaultyDispatch final : public Counted<IDispatch> {
public:
    FaultyDispatch(ComPtr<IDispatch> inner, CallFaults& faults, const std::wstring& name)
        : inner_(std::move(inner)), faults_(faults) {
        LiveObjects::Add(this, L"wrapped " + name, &references_);
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
        *ppv = nullptr;
        ComPtr<IUnknown> same;
        const HRESULT known = inner_->QueryInterface(riid, reinterpret_cast<void**>(same.GetAddressOf()));
        if (FAILED(known)) return known;
        *ppv = static_cast<IDispatch*>(this);
        AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid,
                                            DISPID* dispids) override {
        const HostScope scope(faults_);
        return Barrier([&]() -> HRESULT {
            member_ = names[0];
            const Fault fault = faults_.Begin(member_, true);
            const HRESULT found = inner_->GetIDsOfNames(riid, names, count, lcid, dispids);
            if (fault == Fault::None) return found;
            dispids[0] = DISPID_UNKNOWN;
            if (fault != Fault::WrongType && fault != Fault::WrongNull) return DISP_E_UNKNOWNNAME;
            dispids[0] = nobodysNumber;
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID dispid, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params,
                                     VARIANT* result, EXCEPINFO* exceptionInfo, UINT* wrongArgument) override {
        const HostScope scope(faults_);
        return Barrier([&]() -> HRESULT {
            const std::wstring member = member_;
            const Fault fault = faults_.Begin(member, false);
            if (fault == Fault::Refused || fault == Fault::RefusedFromHere) return E_FAIL;
            OwnedVariant value;
            const HRESULT called =
                inner_->Invoke(dispid, riid, lcid, flags, params, &value, exceptionInfo, wrongArgument);
            if (fault == Fault::DoneButFailed) return E_FAIL;
            if (FAILED(called) || !result) return called;
            faults_.NoteResult(value.vt);
            Give(value, member, fault, result);
            return called;
        });
    }

private:
    ~FaultyDispatch() override { LiveObjects::Remove(this); }

    void Give(VARIANT& value, const std::wstring& member, Fault fault, VARIANT* result) {
        const bool isNullable = value.vt == VT_DISPATCH || value.vt == VT_BSTR;
        if (fault == Fault::WrongNull && isNullable) {
            *result = value;  // the type alone
            result->pdispVal = nullptr;
        } else if (fault != Fault::None && value.vt == VT_DISPATCH) {
            GiveText(result, L"no object");
        } else if (fault != Fault::None) {
            GiveObject(result, Wrapped(MakeObject(L"wrong"), L"wrong").Get());
        } else if (value.vt == VT_DISPATCH && value.pdispVal) {
            GiveObject(result, Wrapped(value.pdispVal, member).Get());
        } else {
            *result = value;
            VariantInit(&value);  // moved out
        }
    }

    ComPtr<IDispatch> Wrapped(const ComPtr<IDispatch>& object, const std::wstring& name) {
        return Adopt<IDispatch>(new FaultyDispatch(object, faults_, name));
    }

    const ComPtr<IDispatch> inner_;
    CallFaults& faults_;
    std::wstring member_;  // what was looked up last; an invocation follows at once
};

}  // namespace

void CallFaults::Restart() {
    calls.clear();
    count_ = 0;
}

Fault CallFaults::Begin(const std::wstring& member, bool isLookUp) {
    const size_t number = count_++;
    if (recording) calls.push_back({member, isLookUp, VT_EMPTY});
    const bool breaks = number == failingCall || (fault == Fault::RefusedFromHere && number > failingCall);
    if (fault == Fault::None || !breaks) return Fault::None;
    if (onBroken) onBroken(member);
    return fault;
}

void CallFaults::NoteResult(VARTYPE type) {
    if (recording) calls.back().resultType = type;
}

ComPtr<IDispatch> Wrap(const ComPtr<IDispatch>& inner, CallFaults& faults) {
    return Adopt<IDispatch>(new FaultyDispatch(inner, faults, L"root"));
}
