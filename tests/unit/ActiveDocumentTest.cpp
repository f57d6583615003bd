// Finding the active document, and its name, in each host.
#include "src/export/ActiveDocument.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/AddinObject.h"
#include "tests/support/ScriptedDispatch.h"

TEST(ActiveDocument, EachHostHasItsProperty) {
    const struct {
        Host host;
        const wchar_t* property;
    } rows[] = {{HostWord, L"ActiveDocument"}, {HostExcel, L"ActiveWorkbook"}, {HostPowerPoint, L"ActivePresentation"}};
    for (const auto& row : rows) {
        ScriptedDispatch document;
        ScriptedDispatch application;
        application.GiveObject(row.property, &document);
        document.GiveText(L"FullName", L"C:\\a.b");
        {
            const AddinState state = StateOf(row.host, &application);
            EXPECT_EQ(GetActiveDocument(state, &application).Get(), &document);
            EXPECT_EQ(GetActiveDocumentFullName(state), L"C:\\a.b");
        }
        EXPECT_EQ(application.References(), 1U);
        EXPECT_EQ(document.References(), 1U);
    }
}

TEST(ActiveDocument, HostWithoutThePropertyThrowsBeforeAnythingIsAsked) {
    for (const Host host : {HostOutlook, HostUnknown}) {
        ScriptedDispatch application;
        const AddinState state = StateOf(host, &application);
        try {
            GetActiveDocument(state, &application);
            FAIL() << "nothing thrown";
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "invalid unordered_map<K, T> key");
        }
        EXPECT_THROW(GetActiveDocument(state, nullptr), std::out_of_range);
        EXPECT_TRUE(application.lookups.empty());
    }
}

TEST(ActiveDocument, NoApplicationGivesNothing) {
    const AddinState state = StateOf(HostWord, nullptr);
    EXPECT_FALSE(GetActiveDocument(state, nullptr));
    EXPECT_EQ(GetActiveDocumentFullName(state), L"");
    EXPECT_EQ(GetActiveDocumentFullName(StateOf(HostOutlook, nullptr)), L"");
}

TEST(ActiveDocument, MissingDocumentOrNameGivesAnEmptyName) {
    ScriptedDispatch noDocument;
    noDocument.Fail(L"ActiveDocument", DISP_E_EXCEPTION);
    EXPECT_EQ(GetActiveDocumentFullName(StateOf(HostWord, &noDocument)), L"");
    for (const VARTYPE type : {VARTYPE{VT_BSTR}, VARTYPE{VT_I4}}) {
        ScriptedDispatch document;
        document.GiveType(L"FullName", type);
        ScriptedDispatch application;
        application.GiveObject(L"ActiveDocument", &document);
        EXPECT_EQ(GetActiveDocumentFullName(StateOf(HostWord, &application)), L"");
        EXPECT_EQ(document.References(), 1U);
    }
}
