// The add-in object: its faces, the routing of callbacks, connection and disconnection.
#include "src/addin/OfficeAddin.h"

#include <utility>

#include "src/addin/RibbonCallbacks.h"
#include "src/addin/RibbonMarkup.h"
#include "src/automation/AutomationCalls.h"
#include "src/base/Barrier.h"
#include "src/base/Handles.h"
#include "src/base/Module.h"

using Microsoft::WRL::ComPtr;

namespace {

struct HostCollection {
    const wchar_t* property;
    Host host;
};

// The order decides where an application offers more than one: PowerPoint and Excel before Word, Outlook last.
constexpr HostCollection hostCollections[] = {
    {L"Presentations", HostPowerPoint},
    {L"Workbooks", HostExcel},
    {L"Documents", HostWord},
    {L"Explorers", HostOutlook},
};

}  // namespace

Host DetectHost(IDispatch* application) {
    for (const HostCollection& collection : hostCollections) {
        if (HasReadableProperty(application, collection.property)) return collection.host;
    }
    return HostUnknown;
}

HRESULT ZOfficeAddin::QueryInterface(REFIID riid, void** ppv) {
    return Barrier([&]() -> HRESULT {
        if (!ppv) return E_POINTER;
        if (riid == IID_IUnknown || riid == IID_IDispatch || riid == IID_IDTExtensibility2) {
            *ppv = static_cast<_IDTExtensibility2*>(this);
        } else if (riid == IID_IRibbonExtensibility) {
            *ppv = static_cast<IRibbonExtensibility*>(this);
        } else {
            *ppv = nullptr;
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    });
}

ULONG ZOfficeAddin::AddRef() { return InterlockedIncrement(&references_); }

ULONG ZOfficeAddin::Release() {
    const ULONG left = InterlockedDecrement(&references_);
    if (left == 0) Destroy();
    return left;
}

HRESULT ZOfficeAddin::GetTypeInfoCount(UINT* pctinfo) {
    return Barrier([&]() -> HRESULT {
        if (!pctinfo) return E_POINTER;
        *pctinfo = 0;
        return S_OK;
    });
}

HRESULT ZOfficeAddin::GetTypeInfo(UINT, LCID, ITypeInfo** typeInfo) {
    return Barrier([&]() -> HRESULT {
        if (!typeInfo) return E_POINTER;
        *typeInfo = nullptr;
        return E_NOTIMPL;
    });
}

HRESULT ZOfficeAddin::GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID, DISPID* dispids) {
    return Barrier([&]() -> HRESULT {
        if (!names || !dispids) return E_POINTER;
        if (riid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        HRESULT result = S_OK;
        for (UINT i = 0; i < count; ++i) {
            const RibbonCallback* callback = FindRibbonCallback(names[i]);
            dispids[i] = callback ? callback->dispid : DISPID_UNKNOWN;
            if (!callback) result = DISP_E_UNKNOWNNAME;
        }
        return result;
    });
}

HRESULT ZOfficeAddin::Invoke(DISPID dispid, REFIID riid, LCID, WORD, DISPPARAMS* params, VARIANT* result, EXCEPINFO*,
                             UINT*) {
    return Barrier([&]() -> HRESULT {
        if (riid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        const RibbonCallback* callback = FindRibbonCallback(dispid);
        if (!callback) return DISP_E_MEMBERNOTFOUND;
        // A callback may pump messages, and the host may let go of the object meanwhile.
        const ComPtr<_IDTExtensibility2> self(this);
        return callback->run(*this, params, result);
    });
}

HRESULT ZOfficeAddin::OnConnection(IDispatch* application, ext_ConnectMode, IDispatch*, SAFEARRAY**) {
    return Barrier([&]() -> HRESULT {
        if (!application) return E_FAIL;
        state.application = application;
        state.host = DetectHost(application);
        if (state.host == HostUnknown) return E_FAIL;  // the application stays held until disconnection
        PinModule();
        return S_OK;
    });
}

HRESULT ZOfficeAddin::OnDisconnection(ext_DisconnectMode, SAFEARRAY**) {
    return Barrier([&]() -> HRESULT {
        const ComPtr<_IDTExtensibility2> self(this);  // the host may let go of the object meanwhile
        Disconnect();
        return S_OK;
    });
}

void ZOfficeAddin::Disconnect() {
    // The host may call while a watcher ends: the ribbon stays until all have, those that come in then among them.
    if (std::exchange(disconnecting_, true)) return;
    while (!watchers.empty()) {
        auto stopping = std::exchange(watchers, {});
        for (auto& watcher : stopping) watcher.reset();
    }
    ribbon.Release();
    state.application.Reset();
    disconnecting_ = false;
}

HRESULT ZOfficeAddin::OnAddInsUpdate(SAFEARRAY**) { return S_OK; }

HRESULT ZOfficeAddin::OnStartupComplete(SAFEARRAY**) { return S_OK; }

HRESULT ZOfficeAddin::OnBeginShutdown(SAFEARRAY**) { return S_OK; }

void ZOfficeAddin::Destroy() {
    // What is released in the destructor may call back and take and drop a reference: that must not delete again.
    constexpr ULONG dying = 1UL << 30;
    references_ = dying;
    Disconnect();
    delete this;
}

HRESULT ZOfficeAddin::Reserved() { return S_OK; }

HRESULT ZOfficeAddin::GetCustomUI(BSTR, BSTR* markup) {
    return Barrier([&]() -> HRESULT {
        if (!markup) return E_POINTER;
        *markup = nullptr;
        *markup = SysAllocString(BuildRibbonMarkup(state.host).c_str());
        return *markup ? S_OK : E_OUTOFMEMORY;
    });
}
