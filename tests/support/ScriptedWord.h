// Word within the test program: the class of its ProgID is registered here, so that a local server of that class is
// these scripted objects.
#pragma once

#include <windows.h>
#include <unknwn.h>

#include <string>
#include <vector>

#include "tests/support/ScriptedDispatch.h"
#include "tests/support/ScriptedOutlook.h"
#include "tests/support/WordClass.h"

// Registered from construction to destruction; every Word that is made is this one. The export of a document writes
// "PDF of " and the document's content.
class ScriptedWord {
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

    void RemoveProgId() { class_.RemoveProgId(); }  // as where no Word is installed
    void RevokeClass() { class_.Revoke(); }         // as where it does not start

private:
    HRESULT Create(REFIID riid, void** ppv);

    Calls& calls_;
    WordClass class_;
};
