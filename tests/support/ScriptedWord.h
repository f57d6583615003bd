// Word within the test program: the class of its ProgID is registered here, so that a local server of that class is
// these scripted objects.
#pragma once

#include <windows.h>
#include <objbase.h>
#include <unknwn.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/support/ScriptedDispatch.h"
#include "tests/support/ScriptedOutlook.h"

// Registered from construction to destruction; every Word that is made is this one. The export of a document writes
// "PDF of " and the document's content.
class ScriptedWord final : public IClassFactory {
public:
    explicit ScriptedWord(Calls& calls);
    ScriptedWord(const ScriptedWord&) = delete;
    ScriptedWord& operator=(const ScriptedWord&) = delete;
    ~ScriptedWord();

    ScriptedDispatch application;
    ScriptedDispatch documents;
    ScriptedDispatch document;

    HRESULT createResult = S_OK;
    std::vector<IID> asked;  // for these interfaces, one for each Word

    void RemoveProgId();  // as where no Word is installed
    void RevokeClass();   // as where it does not start

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

private:
    Calls& calls_;
    std::wstring previousClass_;  // of another Word in this prefix
    DWORD registration_ = 0;
};
