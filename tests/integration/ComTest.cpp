// The registered add-in, created by its ProgID as a host creates it.
#include <gtest/gtest.h>

#include "src/addin/OfficeInterfaces.h"
#include "standins/office/AddinSession.h"
#include "standins/office/DialogRobot.h"
#include "tests/support/CompanionProbe.h"
#include "tests/support/Library.h"
#include "tests/support/ScriptedDispatch.h"

using Microsoft::WRL::ComPtr;

namespace {

class Com : public testing::Test {
protected:
    Com() {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        EXPECT_EQ(RunAndWait(L"regsvr32.exe /s \"" + LibraryPath() + L"\""), 0U);
    }
    ~Com() override { RunAndWait(L"regsvr32.exe /s /u \"" + LibraryPath() + L"\""); }

    static bool IsLoaded() { return GetModuleHandleW(L"zavoofficeaddin.dll") != nullptr; }
};

}  // namespace

TEST_F(Com, EveryHostFindsTheAddin) {
    for (const wchar_t* host : {L"Word", L"Excel", L"PowerPoint", L"Outlook"}) {
        EXPECT_EQ(FindStartupAddins(host), std::vector<std::wstring>{L"ZAVO.OfficeAddin"}) << host;
    }
}

TEST_F(Com, LibraryThatWasNeverConnectedIsUnloaded) {
    {
        CLSID clsid = {};
        ASSERT_EQ(CLSIDFromProgID(L"ZAVO.OfficeAddin", &clsid), S_OK);
        ComPtr<_IDTExtensibility2> addin;
        ASSERT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDTExtensibility2,
                                   reinterpret_cast<void**>(addin.GetAddressOf())),
                  S_OK);
        EXPECT_TRUE(IsLoaded());
    }
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_FALSE(IsLoaded());
}

TEST_F(Com, LibraryThatWasConnectedStaysLoaded) {
    ScriptedDispatch application;
    application.GiveNothing(L"Documents");
    { const AddinSession session(L"ZAVO.OfficeAddin", &application, L"Microsoft.Word.Document"); }
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_TRUE(IsLoaded());
    EXPECT_EQ(application.References(), 1U);
}

TEST_F(Com, EveryCallbackOfTheMarkupIsKnown) {
    for (const wchar_t* collection : {L"Documents", L"Workbooks", L"Presentations", L"Explorers"}) {
        ScriptedDispatch application;
        application.GiveNothing(collection);
        AddinSession session(L"ZAVO.OfficeAddin", &application, L"Microsoft.Word.Document");
        int buttons = 0;
        const std::function<void(const std::vector<RibbonElement>&)> walk = [&](const auto& elements) {
            for (const RibbonElement& element : elements) {
                if (!element.getPressed.empty()) {
                    EXPECT_EQ(session.GetPressed(element).result, S_OK);
                    EXPECT_EQ(session.SetPressed(element, false).result, S_OK);
                    EXPECT_FALSE(session.GetPressed(element).pressed);
                }
                if (element.kind == L"button") ++buttons;
                walk(element.children);
            }
        };
        walk(session.GetRibbon().tabs);
        EXPECT_GE(buttons, 2);
    }
}

TEST_F(Com, ClickExportsWithTheTickedOptions) {
    const TemporaryFolder folder;
    const CompanionProbe companion;
    ScriptedDispatch document;
    document.GiveText(L"FullName", folder.Path(L"Plan.docx"));
    document.GiveNothing(L"ExportAsFixedFormat");
    ScriptedDispatch application;
    application.GiveNothing(L"Documents");
    application.GiveObject(L"ActiveDocument", &document);
    {
        AddinSession session(L"ZAVO.OfficeAddin", &application, L"Microsoft.Word.Document");
        const auto element = [&](const wchar_t* id) -> const RibbonElement& {
            return *FindElement(session.GetRibbon(), id);
        };
        session.SetPressed(element(L"CheckBox_ID_CreateBookmarks"), false);
        session.SetPressed(element(L"CheckBox_ID_PDFA"), true);
        const DialogRobot robot({});
        EXPECT_EQ(session.Click(element(L"BUTTON_ID_CREATE")).result, S_OK);
    }
    ASSERT_FALSE(document.invocations.empty());
    const Invocation& call = document.invocations.back();
    ASSERT_EQ(call.name, L"ExportAsFixedFormat");
    ASSERT_EQ(call.wire.size(), 14U);
    EXPECT_EQ(call.wire[14 - 1], WireText(folder.Path(L"Plan.pdf")));
    EXPECT_EQ(call.wire[14 - 11], WireNumber(0));  // bookmarks
    EXPECT_EQ(call.wire[14 - 14], WireBool(1));    // PDF/A
    EXPECT_EQ(companion.WaitForParameters(), L" \"" + folder.Path(L"Plan.pdf") + L"\" ");
    EXPECT_EQ(application.References(), 1U);
    EXPECT_EQ(document.References(), 1U);
}

TEST_F(Com, NewObjectStartsWithTheDefaultsAgain) {
    ScriptedDispatch application;
    application.GiveNothing(L"Documents");
    for (int start = 0; start < 2; ++start) {
        AddinSession session(L"ZAVO.OfficeAddin", &application, L"Microsoft.Word.Document");
        const RibbonElement& checkBox = *FindElement(session.GetRibbon(), L"CheckBox_ID_PDFA");
        EXPECT_FALSE(session.GetPressed(checkBox).pressed);
        session.SetPressed(checkBox, true);
        EXPECT_TRUE(session.GetPressed(checkBox).pressed);
    }
}

TEST_F(Com, HostThatIsUnknownIsRefused) {
    ScriptedDispatch application;
    EXPECT_THROW(AddinSession(L"ZAVO.OfficeAddin", &application, L""), std::runtime_error);
    EXPECT_EQ(application.References(), 1U);
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_FALSE(IsLoaded());  // nothing keeps a library that was refused
}
