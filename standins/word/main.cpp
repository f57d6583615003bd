// Word's stand-in as a program of its own: the local server that COM starts for the class "Word.Application", one
// process for each object. It ends when Word is told to quit, when the last object is released, and when nothing has
// been asked of it for a while: a client that died releases nothing, and no process may stay behind.
#include <windows.h>
#include <objbase.h>
#include <shellapi.h>

#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "src/base/Barrier.h"
#include "src/base/Handles.h"
#include "standins/common/Counted.h"
#include "standins/common/Results.h"
#include "standins/common/Text.h"
#include "standins/office/AutomatedWord.h"
#include "standins/word/Registration.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr wchar_t usage[] =
    L"usage: word-server.exe /RegServer | /UnregServer | -Embedding [--idle SECONDS]\n"
    L"  /RegServer      makes this program the server of Word.Application\n"
    L"  /UnregServer    takes that back\n"
    L"  -Embedding      serves one object; COM starts it so\n"
    L"  --idle SECONDS  how long it waits for the next call before it ends (60)";

class WordFactory final : public Counted<IClassFactory> {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
        if (!ppv) return E_POINTER;
        *ppv = riid == IID_IUnknown || riid == IID_IClassFactory ? this : nullptr;
        if (!*ppv) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override {
        if (!ppv) return E_POINTER;
        *ppv = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        return Barrier([&]() -> HRESULT {
            const ComPtr<IDispatch> word = MakeAutomatedWord([] { PostQuitMessage(0); });
            return word->QueryInterface(riid, ppv);
        });
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }  // a process serves one object anyway
};

// The class while this process offers it.
class ClassObject {
public:
    ClassObject() {
        const ComPtr<IClassFactory> factory = Adopt<IClassFactory>(new WordFactory);
        Expect(CoRegisterClassObject(wordClassId, factory.Get(), CLSCTX_LOCAL_SERVER, REGCLS_SINGLEUSE, &cookie_),
               L"offering the class");
    }
    ClassObject(const ClassObject&) = delete;
    ClassObject& operator=(const ClassObject&) = delete;
    ~ClassObject() { CoRevokeClassObject(cookie_); }

private:
    DWORD cookie_ = 0;
};

constexpr DWORD lastCallsMilliseconds = 200;
constexpr DWORD endMilliseconds = 3000;

// Calls from other processes come in as messages. Returns after so long without one. Who told Word to quit still has
// its last objects to release, and its last answers to get, so the end is only a short wait away then.
void ServeCalls(DWORD idleMilliseconds) {
    while (MsgWaitForMultipleObjectsEx(0, nullptr, idleMilliseconds, QS_ALLINPUT, MWMO_INPUTAVAILABLE) ==
           WAIT_OBJECT_0) {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message == WM_QUIT) idleMilliseconds = lastCallsMilliseconds;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
}

// Ends the process in a while if it has not ended by itself: shutting COM down can hang when a client was cut off in
// the middle of a call.
void EndInAnyCase() {
    std::thread([] {
        Sleep(endMilliseconds);
        TerminateProcess(GetCurrentProcess(), 0);
    }).detach();
}

void Serve(DWORD idleMilliseconds) {
    Expect(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), L"starting COM");
    {
        const ClassObject offered;
        ServeCalls(idleMilliseconds);
        EndInAnyCase();
    }
    CoUninitialize();
}

int Run(const std::vector<std::wstring>& arguments) {
    DWORD idleSeconds = 60;
    std::wstring job;
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == L"--idle" && i + 1 < arguments.size()) {
            idleSeconds = wcstoul(arguments[++i].c_str(), nullptr, 10);
        } else {
            job = arguments[i];
        }
    }
    if (job == L"/RegServer") {
        Expect(RegisterWord(), L"the registration");
    } else if (job == L"/UnregServer") {
        Expect(UnregisterWord(), L"taking back the registration");
    } else if (job == L"-Embedding" || job == L"/Embedding") {
        Serve(idleSeconds * 1000);
    } else {
        PrintLine(usage);
        return 2;
    }
    return 0;
}

}  // namespace

int main() {
    int count = 0;
    LocalMemory<wchar_t*> arguments;
    *arguments.Receive() = CommandLineToArgvW(GetCommandLineW(), &count);
    try {
        return Run({arguments.Get() + 1, arguments.Get() + count});
    } catch (const std::exception& error) {
        PrintError(Wide(error.what()));
        return 1;
    }
}
