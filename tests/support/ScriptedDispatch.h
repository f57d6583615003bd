// An automation object that answers as a test tells it to and notes every call as it came over the wire.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <functional>
#include <iosfwd>
#include <map>
#include <string>
#include <vector>

#include "standins/office/DynamicObject.h"

// A VARIANT as it stood in a call, copied deeply enough to be compared later.
struct WireValue {
    VARTYPE type = VT_EMPTY;
    LONG number = 0;      // VT_I4, VT_BOOL (its 16 bits, signed), VT_ERROR
    std::wstring text;    // VT_BSTR
    bool isNull = false;  // VT_BSTR or VT_DISPATCH with a null pointer
    const void* object = nullptr;

    bool operator==(const WireValue&) const = default;
};

WireValue WireOf(const VARIANT& value);
WireValue WireNumber(LONG number);
WireValue WireBool(VARIANT_BOOL value);
WireValue WireText(const std::wstring& text);
WireValue WireOmitted();
WireValue WireNullObject();
std::ostream& operator<<(std::ostream& out, const WireValue& value);

struct Lookup {
    std::wstring name;
    IID riid;
    UINT count;
    LCID lcid;
};

struct Invocation {
    std::wstring name;
    IID riid;
    LCID lcid;
    WORD flags;
    std::vector<WireValue> wire;  // in the order of the wire: slot 0 first
    std::vector<DISPID> named;
    bool hasResult;
    bool hasExceptionInfo;
    bool hasWrongArgument;
};

// Lives on a test's stack: its references are counted but never delete it. Starts with one, the test's own.
class ScriptedDispatch final : public IDispatch {
public:
    using Action = std::function<HRESULT(VARIANT* result)>;

    ScriptedDispatch() = default;
    ScriptedDispatch(const ScriptedDispatch&) = delete;
    ScriptedDispatch& operator=(const ScriptedDispatch&) = delete;

    // What a member answers from now on. A name that was not given is unknown.
    void On(const std::wstring& name, Action action);
    void GiveNothing(const std::wstring& name);
    void GiveText(const std::wstring& name, const std::wstring& text);
    void GiveNumber(const std::wstring& name, LONG number);
    void GiveObject(const std::wstring& name, IDispatch* object);  // borrowed until it is asked for
    void GiveType(const std::wstring& name, VARTYPE type);         // a value of that type, all bits zero
    void Fail(const std::wstring& name, HRESULT result);           // known, but its invocation fails

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return InterlockedIncrement(&references_); }
    ULONG STDMETHODCALLTYPE Release() override { return InterlockedDecrement(&references_); }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid,
                                            DISPID* dispids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID dispid, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params,
                                     VARIANT* result, EXCEPINFO* exceptionInfo, UINT* wrongArgument) override;

    ULONG References() const { return references_; }
    std::vector<std::wstring> LookedUp() const;
    std::vector<std::wstring> Invoked() const;

    std::vector<Lookup> lookups;
    std::vector<Invocation> invocations;
    std::function<void(const Invocation& call)> onInvoke;  // runs at the start of each call

private:
    struct Member {
        std::wstring name;
        Action action;
    };
    std::vector<Member> members_;  // the n-th has DISPID 100 + n
    ULONG references_ = 1;
};

// A ribbon control with that identifier: `Id` has DISPID 1 and can only be read by it.
class ScriptedControl final : public IDispatch {
public:
    explicit ScriptedControl(std::wstring id) : id_(std::move(id)) {}
    ScriptedControl(const ScriptedControl&) = delete;
    ScriptedControl& operator=(const ScriptedControl&) = delete;

    HRESULT idResult = S_OK;  // what reading the identifier answers
    VARTYPE idType =
        VT_BSTR;  // VT_BSTR: the identifier; VT_NULL stands for a null BSTR; else an empty value of the type
    Invocation last = {};

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return InterlockedIncrement(&references_); }
    ULONG STDMETHODCALLTYPE Release() override { return InterlockedDecrement(&references_); }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID dispid, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params,
                                     VARIANT* result, EXCEPINFO* exceptionInfo, UINT* wrongArgument) override;

    ULONG References() const { return references_; }

private:
    std::wstring id_;
    ULONG references_ = 1;
};
