// Word's local server, within the test process: a client that asks COM for Word.Application gets this one.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <functional>
#include <string>
#include <vector>

#include "src/base/Handles.h"
#include "tests/support/FaultyDispatch.h"

// Registered with COM and in the registry from construction to destruction. Each Word that is made opens documents and
// exports them: a file that says it is a PDF.
class LocalWord {
public:
    explicit LocalWord(CallFaults& faults);
    LocalWord(const LocalWord&) = delete;
    LocalWord& operator=(const LocalWord&) = delete;
    ~LocalWord();

    void Restart() { started = quit = 0; }

    long started = 0;  // since Restart
    long quit = 0;     // how many of them were told to quit

private:
    class Factory final : public IClassFactory {
    public:
        explicit Factory(LocalWord& word) : word_(word) {}
        Factory(const Factory&) = delete;
        Factory& operator=(const Factory&) = delete;

        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
        ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
        ULONG STDMETHODCALLTYPE Release() override { return 1; }
        HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override;
        HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

    private:
        LocalWord& word_;
    };

    Microsoft::WRL::ComPtr<IDispatch> Start();

    CallFaults& faults_;
    Factory factory_;
    DWORD registration_ = 0;
    std::vector<std::wstring> keys_;  // made here
};
