// Automation objects whose members are given at run time: the stand-ins' object models are made of them.
//
// Members are called by name or by DISPID, the n-th member that was added having DISPID n. Every object is counted
// while it lives, so that a program can tell at its end which ones somebody forgot to release.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "standins/common/Counted.h"

// Thrown by a member; the caller gets DISP_E_EXCEPTION with this code and text.
struct AutomationError {
    HRESULT code;
    std::wstring text;
};

// A call's positional arguments in the order of the method's documentation, counted from 1. An argument that was left
// out, or given as omitted, reads as nothing; one that cannot be converted throws DISP_E_TYPEMISMATCH as an HRESULT.
class Arguments {
public:
    explicit Arguments(const DISPPARAMS* params) : params_(params) {}

    UINT Count() const { return params_->cArgs; }
    const VARIANT* At(UINT position) const;  // null when left out or omitted
    std::optional<std::wstring> Text(UINT position) const;
    std::optional<LONG> Number(UINT position) const;
    std::optional<bool> Boolean(UINT position) const;

private:
    const DISPPARAMS* params_;
};

// Members answer an HRESULT, fill `result`, which is never null and empty at first, or throw AutomationError.
using Getter = std::function<HRESULT(VARIANT* result)>;
using Setter = std::function<HRESULT(const VARIANT& value)>;
using Method = std::function<HRESULT(const Arguments& arguments, VARIANT* result)>;

// The members and the invocation, whatever interface the object shows.
class Members {
public:
    void AddProperty(std::wstring name, Getter get, Setter set = nullptr);
    void AddMethod(std::wstring name, Method call);

    HRESULT GetIDsOfNames(LPOLESTR* names, UINT count, DISPID* dispids) const;
    HRESULT Invoke(DISPID dispid, WORD flags, DISPPARAMS* params, VARIANT* result, EXCEPINFO* exceptionInfo) const;

private:
    struct Member {
        std::wstring name;
        Getter get;
        Setter set;
        Method call;
    };
    HRESULT Call(const Member& member, WORD flags, const DISPPARAMS& params, VARIANT* result) const;

    std::vector<Member> members_;
};

// The objects that are alive.
class LiveObjects {
public:
    static void Add(const void* object, const std::wstring& name, const ULONG* references);
    static void Remove(const void* object);
    static std::vector<std::wstring> List();  // "name (references)"
};

// An object that shows `Interface`, which is IDispatch or derives from it, under the ids in `iids` besides IUnknown and
// IDispatch. It starts with one reference.
template <typename Interface = IDispatch>
class DynamicObject : public Counted<Interface> {
public:
    explicit DynamicObject(const std::wstring& name, std::vector<IID> iids = {}) : iids_(std::move(iids)) {
        LiveObjects::Add(this, name, &this->references_);
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
        if (!ppv) return E_POINTER;
        *ppv = nullptr;
        bool known = riid == IID_IUnknown || riid == IID_IDispatch;
        for (const IID& iid : iids_) known = known || riid == iid;
        if (!known) return E_NOINTERFACE;
        *ppv = static_cast<Interface*>(this);
        this->AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** info) override {
        *info = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID, DISPID* dispids) override {
        if (riid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        return members.GetIDsOfNames(names, count, dispids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID dispid, REFIID riid, LCID, WORD flags, DISPPARAMS* params, VARIANT* result,
                                     EXCEPINFO* exceptionInfo, UINT*) override {
        if (riid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        const Microsoft::WRL::ComPtr<IDispatch> self(this);
        return members.Invoke(dispid, flags, params, result, exceptionInfo);
    }

    ULONG References() const { return this->references_; }

    Members members;

protected:
    ~DynamicObject() override { LiveObjects::Remove(this); }

private:
    std::vector<IID> iids_;
};

// A plain object with these members to come.
Microsoft::WRL::ComPtr<DynamicObject<>> MakeObject(const std::wstring& name);

// An argument that borrows the object: no reference is added.
VARIANT ObjectArgument(IDispatch* object);

// Values for `result`; each answers S_OK.
HRESULT GiveText(VARIANT* result, const std::wstring& text);
HRESULT GiveNumber(VARIANT* result, LONG number);
HRESULT GiveBoolean(VARIANT* result, bool value);
HRESULT GiveObject(VARIANT* result, IDispatch* object);  // adds a reference
