// The add-in object: the one COM object that a host loads.
#pragma once

#include <windows.h>

#include <memory>
#include <vector>

#include "src/addin/OfficeInterfaces.h"
#include "src/addin/StoredRibbon.h"
#include "src/base/AddinState.h"
#include "src/ui/RegistryWatcher.h"

class ZOfficeAddin final : public _IDTExtensibility2, public IRibbonExtensibility {
public:
    ZOfficeAddin() = default;
    ZOfficeAddin(const ZOfficeAddin&) = delete;
    ZOfficeAddin& operator=(const ZOfficeAddin&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid, ITypeInfo** typeInfo) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID lcid,
                                            DISPID* dispids) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID dispid, REFIID riid, LCID lcid, WORD flags, DISPPARAMS* params,
                                     VARIANT* result, EXCEPINFO* exceptionInfo, UINT* wrongArgument) override;

    HRESULT STDMETHODCALLTYPE OnConnection(IDispatch* application, ext_ConnectMode mode, IDispatch* addin,
                                           SAFEARRAY** custom) override;
    HRESULT STDMETHODCALLTYPE OnDisconnection(ext_DisconnectMode mode, SAFEARRAY** custom) override;
    HRESULT STDMETHODCALLTYPE OnAddInsUpdate(SAFEARRAY** custom) override;
    HRESULT STDMETHODCALLTYPE OnStartupComplete(SAFEARRAY** custom) override;
    HRESULT STDMETHODCALLTYPE OnBeginShutdown(SAFEARRAY** custom) override;

    // Slots 12 and 13 of the primary table belong to these two, so they stand before GetCustomUI: an override of the
    // second base takes the next slot of the primary table where it is declared. Destroy deletes the object; it is an
    // ordinary virtual function because a virtual destructor takes one slot with some compilers and two with others.
    virtual void STDMETHODCALLTYPE Destroy();
    virtual HRESULT STDMETHODCALLTYPE Reserved();  // no effect, S_OK

    HRESULT STDMETHODCALLTYPE GetCustomUI(BSTR ribbonId, BSTR* markup) override;

private:
    ~ZOfficeAddin() = default;

    // Stops the watchers, in the order in which they were started, and then lets go of ribbon and application.
    void Disconnect();

    ULONG references_ = 1;
    bool disconnecting_ = false;

public:
    AddinState state;
    StoredRibbon ribbon;
    std::vector<std::unique_ptr<RegistryWatcher>> watchers;
    bool commandRunning = false;  // a click that comes in meanwhile does nothing
};

// Which host has this application: it is known by the collection that it offers.
Host DetectHost(IDispatch* application);
