// The class of Word.Application within the test process: a client that asks COM for a local server of it gets what the
// test makes.
#pragma once

#include <windows.h>
#include <unknwn.h>

#include <functional>
#include <string>

// Word's ProgID in the registry, from construction to destruction; another Word's registration comes back then.
class WordProgId {
public:
    WordProgId();
    WordProgId(const WordProgId&) = delete;
    WordProgId& operator=(const WordProgId&) = delete;
    ~WordProgId();

    void Remove();

private:
    const std::wstring previousClass_;
};

class WordClass final : public IClassFactory {
public:
    using Create = std::function<HRESULT(REFIID riid, void** ppv)>;

    // COM is initialised for the thread, and the class registered with it and in the registry, from construction to
    // destruction.
    explicit WordClass(Create create);
    WordClass(const WordClass&) = delete;
    WordClass& operator=(const WordClass&) = delete;
    ~WordClass();

    void RemoveProgId() { progId_.Remove(); }  // as where no Word is installed
    void Revoke();                             // as where it does not start

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

private:
    Create create_;
    WordProgId progId_;
    DWORD registration_ = 0;
};
