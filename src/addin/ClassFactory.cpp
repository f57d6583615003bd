// The class factory. It counts itself, not the objects that it makes: those are kept safe by the pinned module.
#include "src/addin/ClassFactory.h"

#include "src/addin/OfficeAddin.h"
#include "src/base/Barrier.h"
#include "src/base/Module.h"

ZOfficeAddinClassFactory::ZOfficeAddinClassFactory() { InterlockedIncrement(&moduleState.objectCount); }

ZOfficeAddinClassFactory::~ZOfficeAddinClassFactory() { InterlockedDecrement(&moduleState.objectCount); }

HRESULT ZOfficeAddinClassFactory::QueryInterface(REFIID riid, void** ppv) {
    return Barrier([&]() -> HRESULT {
        if (!ppv) return E_POINTER;
        if (riid == IID_IUnknown || riid == IID_IClassFactory) {
            *ppv = static_cast<IClassFactory*>(this);
            AddRef();
            return S_OK;
        }
        *ppv = nullptr;
        return E_NOINTERFACE;
    });
}

ULONG ZOfficeAddinClassFactory::AddRef() { return InterlockedIncrement(&references_); }

ULONG ZOfficeAddinClassFactory::Release() {
    const ULONG left = InterlockedDecrement(&references_);
    if (left == 0) Destroy();
    return left;
}

HRESULT ZOfficeAddinClassFactory::CreateInstance(IUnknown* outer, REFIID riid, void** ppv) {
    return Barrier([&]() -> HRESULT {
        if (ppv) *ppv = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        auto* addin = new ZOfficeAddin;
        const HRESULT result = addin->QueryInterface(riid, ppv);
        if (SUCCEEDED(result)) addin->Release();  // an object that lacks the interface is not released, on purpose
        return result;
    });
}

HRESULT ZOfficeAddinClassFactory::LockServer(BOOL lock) {
    return Barrier([&]() -> HRESULT {
        if (lock) {
            InterlockedIncrement(&moduleState.lockCount);
        } else {
            InterlockedDecrement(&moduleState.lockCount);
        }
        return S_OK;
    });
}

void ZOfficeAddinClassFactory::Destroy() { delete this; }
