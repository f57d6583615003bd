// The class factory that makes add-in objects.
#pragma once

#include <windows.h>
#include <unknwn.h>

class ZOfficeAddinClassFactory final : public IClassFactory {
public:
    ZOfficeAddinClassFactory();
    ZOfficeAddinClassFactory(const ZOfficeAddinClassFactory&) = delete;
    ZOfficeAddinClassFactory& operator=(const ZOfficeAddinClassFactory&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override;

    // Deletes the object. Slot 5 of the table belongs to this operation. It is an ordinary virtual function because
    // a virtual destructor takes one slot with some compilers and two with others.
    virtual void STDMETHODCALLTYPE Destroy();

private:
    ~ZOfficeAddinClassFactory();

    ULONG references_ = 1;
};
