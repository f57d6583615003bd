// The scripted Word.
#include "tests/support/ScriptedWord.h"

#include <gtest/gtest.h>

#include "tests/support/Files.h"

ScriptedWord::ScriptedWord(Calls& calls)
    : calls_(calls), class_([this](REFIID riid, void** ppv) { return Create(riid, ppv); }) {
    NoteCalls(application, L"word", calls);
    NoteCalls(documents, L"documents", calls);
    NoteCalls(document, L"document", calls);
    application.GiveNothing(L"Visible");
    application.GiveNothing(L"DisplayAlerts");
    application.GiveObject(L"Documents", &documents);
    application.GiveNothing(L"Quit");
    documents.GiveObject(L"Open", &document);
    document.On(L"ExportAsFixedFormat", [this](VARIANT*) {
        const std::wstring opened = documents.invocations.back().wire.back().text;
        const std::wstring target = document.invocations.back().wire.back().text;
        return WriteFileText(target, "PDF of " + ReadFileText(opened)) ? S_OK : E_FAIL;
    });
}

ScriptedWord::~ScriptedWord() {
    EXPECT_EQ(application.References(), 1U);
    EXPECT_EQ(documents.References(), 1U);
    EXPECT_EQ(document.References(), 1U);
}

HRESULT ScriptedWord::Create(REFIID riid, void** ppv) {
    asked.push_back(riid);
    calls_.push_back(L"new Word");
    if (FAILED(createResult)) return createResult;
    *ppv = static_cast<IDispatch*>(&application);
    application.AddRef();
    return S_OK;
}
