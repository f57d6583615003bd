// An add-in that does nothing: what load_cost sets beside ours. It answers what a host asks and no more.
#include <windows.h>
#include <objbase.h>

#include "src/addin/OfficeInterfaces.h"
#include "standins/common/Counted.h"

namespace {

class EmptyAddin final : public Counted<_IDTExtensibility2, IRibbonExtensibility> {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
        *ppv = nullptr;
        if (riid == IID_IUnknown || riid == IID_IDispatch || riid == IID_IDTExtensibility2) {
            *ppv = static_cast<_IDTExtensibility2*>(this);
        } else if (riid == IID_IRibbonExtensibility) {
            *ppv = static_cast<IRibbonExtensibility*>(this);
        } else {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID* dispid) override {
        *dispid = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE OnConnection(IDispatch*, ext_ConnectMode, IDispatch*, SAFEARRAY**) override {
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE OnDisconnection(ext_DisconnectMode, SAFEARRAY**) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnAddInsUpdate(SAFEARRAY**) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnStartupComplete(SAFEARRAY**) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnBeginShutdown(SAFEARRAY**) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetCustomUI(BSTR, BSTR* markup) override {
        *markup = SysAllocString(L"<customUI/>");
        return S_OK;
    }
};

class EmptyFactory final : public Counted<IClassFactory> {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
        *ppv = nullptr;
        if (riid != IID_IUnknown && riid != IID_IClassFactory) return E_NOINTERFACE;
        *ppv = static_cast<IClassFactory*>(this);
        AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID riid, void** ppv) override {
        auto* addin = new EmptyAddin;
        const HRESULT result = addin->QueryInterface(riid, ppv);
        addin->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace

STDAPI DllGetClassObject(REFCLSID, REFIID riid, LPVOID* ppv) {
    auto* factory = new EmptyFactory;
    const HRESULT result = factory->QueryInterface(riid, ppv);
    factory->Release();
    return result;
}

STDAPI DllCanUnloadNow() { return S_OK; }
