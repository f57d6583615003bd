// The hidden Word, as it is called.
#include "src/outlook/WordConversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <new>

#include "tests/support/AddinObject.h"
#include "tests/support/Files.h"
#include "tests/support/ScriptedWord.h"

namespace {

constexpr IID wordApplicationIid = {0x00020970, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

class WordConversion : public testing::Test {
protected:
    bool Convert() { return ConvertWithWord(StateOf(HostOutlook, nullptr), document_, pdf_); }

    Calls calls_;
    ScriptedWord word_{calls_};
    const TemporaryFolder folder_;
    const std::wstring document_ = folder_.MakeFile(L"mail \x65E5.doc", "document");
    const std::wstring pdf_ = folder_.Path(L"mail \x65E5.pdf");
};

const Calls untilOpen = {L"new Word", L"word.Visible = false", L"word.DisplayAlerts = false", L"word.Documents"};

}  // namespace

TEST_F(WordConversion, OpensHiddenExportsAndQuits) {
    EXPECT_TRUE(Convert());
    Calls expected = untilOpen;
    expected.push_back(L"documents.Open(" + document_ + L", -, -, -, -, -, -, -, -, -, -, false, -, -, -, -)");
    expected.push_back(L"document.ExportAsFixedFormat(" + pdf_ +
                       L", 17, false, 0, 0, -, -, -, true, true, 1, true, true, false)");
    expected.push_back(L"word.Quit()");
    EXPECT_EQ(calls_, expected);
    EXPECT_EQ(ReadFileText(pdf_), "PDF of document");
}

TEST_F(WordConversion, AsksForWordsApplicationInterface) {
    EXPECT_TRUE(Convert());
    ASSERT_EQ(word_.asked.size(), 1U);
    EXPECT_TRUE(IsEqualIID(word_.asked[0], wordApplicationIid));
}

TEST_F(WordConversion, VisibleAndAlertsArePutToABooleanFalse) {
    EXPECT_TRUE(Convert());
    for (const size_t i : {0, 1}) {
        const Invocation& put = word_.application.invocations.at(i);
        EXPECT_EQ(put.name, i == 0 ? L"Visible" : L"DisplayAlerts");
        EXPECT_EQ(put.flags, DISPATCH_PROPERTYPUT);
        EXPECT_EQ(put.wire, std::vector{WireBool(VARIANT_FALSE)});
        EXPECT_EQ(put.named, std::vector<DISPID>{DISPID_PROPERTYPUT});
    }
}

TEST_F(WordConversion, OpenHasSixteenSlotsWithTheFileNameInTheLastAndVisibleInTheFifth) {
    EXPECT_TRUE(Convert());
    const Invocation& open = word_.documents.invocations.at(0);
    EXPECT_EQ(open.flags, DISPATCH_METHOD);
    std::vector<WireValue> expected(16, WireOmitted());
    expected[15] = WireText(document_);
    expected[4] = WireBool(VARIANT_FALSE);
    EXPECT_EQ(open.wire, expected);
    EXPECT_TRUE(open.named.empty());
}

TEST_F(WordConversion, QuitTakesNothingAndTheDocumentIsNotClosed) {
    EXPECT_TRUE(Convert());
    const Invocation& quit = word_.application.invocations.back();
    EXPECT_EQ(quit.name, L"Quit");
    EXPECT_EQ(quit.flags, DISPATCH_METHOD);
    EXPECT_TRUE(quit.wire.empty());
    EXPECT_EQ(word_.document.LookedUp(), std::vector<std::wstring>{L"ExportAsFixedFormat"});
    EXPECT_EQ(word_.documents.LookedUp(), std::vector<std::wstring>{L"Open"});
}

TEST_F(WordConversion, EachDocumentHasAWordOfItsOwn) {
    EXPECT_TRUE(Convert());
    EXPECT_TRUE(Convert());
    EXPECT_EQ(word_.asked.size(), 2U);
    EXPECT_EQ(std::count(calls_.begin(), calls_.end(), L"word.Quit()"), 2);
}

TEST_F(WordConversion, OptionsAreTheUsers) {
    AddinState state = StateOf(HostOutlook, nullptr);
    state.settings.pdfA = true;
    EXPECT_TRUE(ConvertWithWord(state, document_, pdf_));
    EXPECT_EQ(word_.document.invocations.at(0).wire.at(0), WireBool(1));
}

TEST_F(WordConversion, QuitRunsOnEveryPathOut) {
    struct Fault {
        const wchar_t* name;
        size_t callsBeforeQuit;
        std::function<void(ScriptedWord&)> make;
    };
    const auto unknown = [](ScriptedDispatch& object, const wchar_t* name) {
        object.On(name, [&object](VARIANT* result) {
            result->vt = VT_UNKNOWN;
            result->punkVal = &object;
            object.AddRef();
            return S_OK;
        });
    };
    const Fault faults[] = {
        {L"Visible fails", 2, [](ScriptedWord& word) { word.application.Fail(L"Visible", E_FAIL); }},
        {L"DisplayAlerts fails", 3, [](ScriptedWord& word) { word.application.Fail(L"DisplayAlerts", E_FAIL); }},
        {L"Documents fails", 4, [](ScriptedWord& word) { word.application.Fail(L"Documents", DISP_E_EXCEPTION); }},
        {L"Documents is null", 4, [](ScriptedWord& word) { word.application.GiveObject(L"Documents", nullptr); }},
        {L"Documents is a number", 4, [](ScriptedWord& word) { word.application.GiveNumber(L"Documents", 1); }},
        {L"Documents is no automation object", 4, [&](ScriptedWord& word) { unknown(word.application, L"Documents"); }},
        {L"Open fails", 5, [](ScriptedWord& word) { word.documents.Fail(L"Open", DISP_E_EXCEPTION); }},
        {L"Open gives nothing", 5, [](ScriptedWord& word) { word.documents.GiveNothing(L"Open"); }},
        {L"Open gives null", 5, [](ScriptedWord& word) { word.documents.GiveObject(L"Open", nullptr); }},
        {L"Open gives no automation object", 5, [&](ScriptedWord& word) { unknown(word.documents, L"Open"); }},
        {L"export fails", 6, [](ScriptedWord& word) { word.document.Fail(L"ExportAsFixedFormat", DISP_E_EXCEPTION); }},
    };
    word_.RevokeClass();  // for others to come
    for (const Fault& fault : faults) {
        SCOPED_TRACE(fault.name);
        Calls calls;
        ScriptedWord word(calls);
        fault.make(word);
        EXPECT_FALSE(Convert());
        ASSERT_EQ(calls.size(), fault.callsBeforeQuit + 1);
        EXPECT_EQ(calls.back(), L"word.Quit()");
    }
}

TEST_F(WordConversion, QuitRunsAlsoWhenSomethingIsThrown) {
    struct Place {
        ScriptedDispatch ScriptedWord::*object;
        const wchar_t* member;
    };
    word_.RevokeClass();  // for others to come
    for (const Place& place :
         {Place{&ScriptedWord::application, L"Visible"}, Place{&ScriptedWord::application, L"Documents"},
          Place{&ScriptedWord::documents, L"Open"}, Place{&ScriptedWord::document, L"ExportAsFixedFormat"}}) {
        Calls calls;
        ScriptedWord word(calls);
        (word.*place.object).On(place.member, [](VARIANT*) -> HRESULT { throw std::bad_alloc(); });
        EXPECT_THROW(Convert(), std::bad_alloc) << place.member;
        EXPECT_EQ(calls.back(), L"word.Quit()") << place.member;
    }
}

TEST_F(WordConversion, WhatQuitAnswersDoesNotMatter) {
    word_.application.Fail(L"Quit", RPC_E_DISCONNECTED);
    EXPECT_TRUE(Convert());
    word_.application.On(L"Quit", [](VARIANT*) -> HRESULT { throw std::bad_alloc(); });
    EXPECT_TRUE(Convert());
    EXPECT_EQ(std::count(calls_.begin(), calls_.end(), L"word.Quit()"), 2);
}

TEST_F(WordConversion, FailsWithoutWord) {
    word_.createResult = E_FAIL;
    EXPECT_FALSE(Convert());
    EXPECT_EQ(calls_, Calls{L"new Word"});
    word_.RevokeClass();
    EXPECT_FALSE(Convert());
    word_.RemoveProgId();
    EXPECT_FALSE(Convert());
    EXPECT_EQ(calls_, Calls{L"new Word"});
    EXPECT_EQ(folder_.List().size(), 1U);
}

TEST_F(WordConversion, DocumentThatIsNotThereIsWordsAffair) {
    word_.documents.Fail(L"Open", DISP_E_EXCEPTION);
    EXPECT_FALSE(ConvertWithWord(StateOf(HostOutlook, nullptr), folder_.Path(L"missing.doc"), pdf_));
    EXPECT_EQ(calls_.back(), L"word.Quit()");
}
