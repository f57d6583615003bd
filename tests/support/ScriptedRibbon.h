// A ribbon that counts its references, for tests.
#pragma once

#include <atomic>
#include <functional>

#include "src/addin/OfficeInterfaces.h"

// Lives on a test's stack. Starts with one reference, the test's own.
class ScriptedRibbon final : public IRibbonUI {
public:
    ScriptedRibbon() = default;
    ScriptedRibbon(const ScriptedRibbon&) = delete;
    ScriptedRibbon& operator=(const ScriptedRibbon&) = delete;

    HRESULT queryResult = S_OK;          // what a query for IRibbonUI answers
    bool queryGivesNull = false;         // whether a successful one gives null
    std::function<void()> onRelease;     // runs at every release
    std::function<void()> onInvalidate;  // runs within every call
    std::atomic<int> invalidations = 0;
    std::atomic<DWORD> invalidatingThread = 0;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
        *ppv = nullptr;
        if (riid != IID_IRibbonUI) return E_NOINTERFACE;
        if (FAILED(queryResult) || queryGivesNull) return queryResult;
        *ppv = static_cast<IRibbonUI*>(this);
        AddRef();
        return queryResult;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return InterlockedIncrement(&references_); }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = InterlockedDecrement(&references_);
        if (onRelease) onRelease();
        return left;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invalidate() override {
        ++invalidations;
        invalidatingThread = GetCurrentThreadId();
        if (onInvalidate) onInvalidate();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE InvalidateControl(BSTR) override { return S_OK; }

    ULONG References() const { return references_; }

private:
    ULONG references_ = 1;
};
