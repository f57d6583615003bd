// The library's four exported functions.
#include <windows.h>
#include <objbase.h>
#include <olectl.h>

#include "src/addin/ClassFactory.h"
#include "src/addin/Identity.h"
#include "src/addin/Registration.h"
#include "src/base/Barrier.h"
#include "src/base/Module.h"

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, LPVOID* ppv) {
    return Barrier([&]() -> HRESULT {
        if (!ppv) return E_INVALIDARG;
        *ppv = nullptr;
        if (rclsid != addinClassId) return CLASS_E_CLASSNOTAVAILABLE;
        auto* factory = new ZOfficeAddinClassFactory;
        const HRESULT result = factory->QueryInterface(riid, ppv);
        // A factory that lacks the interface is not released, on purpose: from then on the library stays loaded.
        if (FAILED(result)) return result;
        factory->Release();
        return result;
    });
}

STDAPI DllCanUnloadNow() {
    return Barrier([]() -> HRESULT {
        if (moduleState.objectCount != 0) return S_FALSE;
        return moduleState.lockCount != 0 ? S_FALSE : S_OK;
    });
}

STDAPI DllRegisterServer() {
    return Barrier([] { return RegisterAddin(moduleState.handle); });
}

STDAPI DllUnregisterServer() {
    return Barrier([] { return UnregisterAddin(); });
}
