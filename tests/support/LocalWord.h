// Word's local server, within the test process: a client that asks COM for Word.Application gets this one.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include "tests/support/FaultyDispatch.h"
#include "tests/support/WordClass.h"

// Registered with COM and in the registry from construction to destruction. Each Word that is made opens documents and
// exports them: a file that says it is a PDF.
class LocalWord {
public:
    explicit LocalWord(CallFaults& faults);
    LocalWord(const LocalWord&) = delete;
    LocalWord& operator=(const LocalWord&) = delete;

    void Restart() { started = quit = 0; }
    void Revoke() { class_.Revoke(); }  // no new one can be started

    long started = 0;  // since Restart
    long quit = 0;     // how many of them were told to quit

private:
    Microsoft::WRL::ComPtr<IDispatch> Start();

    CallFaults& faults_;
    WordClass class_;
};
