// Which button runs which command, and the working folder that is there before it: below the real Documents folder.
#include "src/addin/Commands.h"

#include <filesystem>
#include <new>

#include "standins/common/Text.h"
#include "tests/support/AddinObject.h"
#include "tests/support/DocumentsFolder.h"
#include "tests/support/OutlookCommandTest.h"

namespace {

namespace fs = std::filesystem;

class Commands : public OutlookCommandTest {
protected:
    Commands() {
        state_.application = &outlook_.application;
        companion_.MakePortfolios(L"portfolio");
    }
    ~Commands() override { state_.application.Reset(); }

    // Two mails with a PDF each, the second one older.
    void AddMails() {
        outlook_.AddMail(L"One").Attach(L"a.pdf", "A");
        outlook_.AddMail(L"Two").Attach(L"b.pdf", "B");
        outlook_.Mail(2).ReceivedAt(2001, 1, 1);
    }

    // The last parameters of the companion, with the working folders' names in the place of their paths.
    std::wstring Shown(size_t start) const {
        std::wstring parameters = companion_.WaitForStarts(start).at(start - 1);
        for (size_t at; (at = parameters.find(pdfs_.Path() + L"\\")) != std::wstring::npos;) {
            parameters.erase(at, pdfs_.Path().size() + 1);
        }
        return parameters;
    }

    const CompanionProbe companion_;
    const OutlookPdfs pdfs_;
};

// Clicks as the host does.
HRESULT Click(ZOfficeAddin* addin, const wchar_t* id) {
    ScriptedControl control(id);
    VARIANT argument = ObjectArgument(&control);
    DISPPARAMS params = {&argument, nullptr, 1, 0};
    return addin->Invoke(1002, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr);
}

const wchar_t* const outlookButtons[] = {L"Button_ID_OpenFromMail",        L"Button_ID_OpenFromFolder",
                                         L"Button_ID_CreateByMail",        L"Button_ID_CreateByFolder",
                                         L"Button_ID_CreateMergeByFolder", L"Button_ID_CreatePortfolioByMail"};

}  // namespace

TEST_F(Commands, EachOutlookButtonRunsItsOwnInItsWorkingFolder) {
    AddMails();
    const std::wstring one = L"\"Create\\" + key1 + L"\\One.pdf\" ", two = L"\"Create\\" + key2 + L"\\Two.pdf\" ";
    const std::wstring opened = L" \"Open\\" + key1 + L"\\a.pdf\" \"Open\\" + key2 + L"\\b.pdf\" ";
    const struct {
        const wchar_t* id;
        const wchar_t* source;
        std::wstring shown;
    } rows[] = {
        {L"Button_ID_OpenFromMail", L"explorer.Selection", opened},
        {L"Button_ID_OpenFromFolder", L"explorer.CurrentFolder", opened},
        {L"Button_ID_CreateByMail", L"explorer.Selection", L" " + one + two},
        {L"Button_ID_CreateByFolder", L"explorer.CurrentFolder", L" " + two + one},
        {L"Button_ID_CreateMergeByFolder", L"explorer.CurrentFolder", L" \"Create\\" + keyOfInbox + L"\\Inbox.pdf\" "},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        calls_.clear();
        RunCommand(state_, rows[i].id);
        ASSERT_GE(calls_.size(), 2U) << Utf8(rows[i].id);
        EXPECT_EQ(calls_[0], L"application.ActiveExplorer") << Utf8(rows[i].id);
        EXPECT_EQ(calls_[1], rows[i].source) << Utf8(rows[i].id);
        EXPECT_EQ(Shown(i + 1), rows[i].shown) << Utf8(rows[i].id);
    }
    calls_.clear();
    RunCommand(state_, L"Button_ID_CreatePortfolioByMail");
    EXPECT_EQ(calls_.at(1), L"explorer.Selection");
    EXPECT_EQ(Shown(6), L" \"Create\\Portfolio.pdf ZAVO_Q1JFQVRFX0VNUFRZX1BPUlRGT0xJTw\"");
    EXPECT_EQ(Shown(7), L" \"Create\\Portfolio.pdf\" ");
}

TEST_F(Commands, WorkingFolderIsThereBeforeTheCommandRunsAlsoWithoutAMail) {
    for (const wchar_t* id : outlookButtons) {
        fs::remove_all(pdfs_.Path());
        const bool open = std::wstring(id).find(L"Open") != std::wstring::npos;
        bool isThere = false;
        outlook_.application.On(L"ActiveExplorer", [&](VARIANT* result) {
            isThere = fs::is_directory(pdfs_.Path(open ? L"Open" : L"Create"));
            return GiveObject(result, &outlook_.explorer);
        });
        const DialogRobot robot({});
        RunCommand(state_, id);
        EXPECT_TRUE(isThere) << Utf8(id);
        EXPECT_FALSE(fs::exists(pdfs_.Path(open ? L"Create" : L"Open"))) << Utf8(id);
        EXPECT_EQ(robot.Seen().size(), id == outlookButtons[5] ? 0U : 1U) << Utf8(id);
    }
}

TEST_F(Commands, FilesOfEarlierRunsStayInTheWorkingFolder) {
    fs::create_directories(pdfs_.Path(L"Open"));
    WriteFileText(pdfs_.Path(L"Open\\earlier.pdf"), "mine");
    AddMails();
    RunCommand(state_, L"Button_ID_OpenFromMail");
    EXPECT_EQ(ReadFileText(pdfs_.Path(L"Open\\earlier.pdf")), "mine");
}

TEST_F(Commands, WorkingFolderThatCannotBeMadeIsSilentAndTheCommandRuns) {
    WriteFileText(pdfs_.Path(), "a file in its place");
    AddMails();
    for (const wchar_t* id : outlookButtons) {
        calls_.clear();
        const DialogRobot robot({});
        RunCommand(state_, id);
        EXPECT_FALSE(calls_.empty()) << Utf8(id);
        // The command has a message of its own where nothing was made; the portfolio fails before that.
        EXPECT_EQ(robot.Seen().size(), id == outlookButtons[5] ? 0U : 1U) << Utf8(id);
    }
    EXPECT_EQ(ReadFileText(pdfs_.Path()), "a file in its place");
}

TEST_F(Commands, NothingRunsWithoutADocumentsFolder) {
    const MovedDocuments documents(L"Q:\\nowhere");
    AddMails();
    for (const wchar_t* id : outlookButtons) RunCommand(state_, id);
    EXPECT_EQ(calls_, Calls{});
}

TEST_F(Commands, OtherIdentifiersMakeNoFolderAndRunNothing) {
    AddMails();
    for (const wchar_t* id : {L"Menu_ID_Open", L"Menu_ID_Create", L"CheckBox_ID_PDFA", L"", L"button_id_openfrommail",
                              L"Button_ID_OpenFromMail ", L"BUTTON_ID_CREATEBYMAIL", L"OnButtonClick"}) {
        RunCommand(state_, id);
        EXPECT_FALSE(fs::exists(pdfs_.Path())) << Utf8(id);
    }
    EXPECT_EQ(calls_, Calls{});
}

TEST_F(Commands, DocumentButtonsMakeNoWorkingFolder) {
    for (const wchar_t* id : {L"BUTTON_ID_CREATE", L"BUTTON_ID_CREATE_AND_SHARE"}) {
        ScriptedDispatch word;
        state_.host = HostWord;
        state_.application = &word;
        const DialogRobot robot({.cancel = true});
        RunCommand(state_, id);
        EXPECT_EQ(robot.Seen().size(), 1U) << "its save dialog";
        EXPECT_FALSE(fs::exists(pdfs_.Path())) << Utf8(id);
        state_.application.Reset();
        EXPECT_EQ(word.References(), 1U);
    }
}

TEST_F(Commands, MissingApplicationIsSilent) {
    state_.application.Reset();
    const DialogRobot robot({});
    for (const wchar_t* id : outlookButtons) RunCommand(state_, id);
    EXPECT_TRUE(robot.Seen().empty());
    EXPECT_TRUE(fs::is_directory(pdfs_.Path(L"Open")));
    EXPECT_TRUE(fs::is_directory(pdfs_.Path(L"Create")));
}

TEST_F(Commands, DisconnectionDuringACommandDoesNotPullTheApplicationAway) {
    AddMails();
    outlook_.application.On(L"ActiveExplorer", [&](VARIANT* result) {
        state_.application.Reset();
        EXPECT_EQ(outlook_.application.References(), 2U);
        return GiveObject(result, &outlook_.explorer);
    });
    RunCommand(state_, L"Button_ID_OpenFromMail");
    EXPECT_EQ(Shown(1), L" \"Open\\" + key1 + L"\\a.pdf\" \"Open\\" + key2 + L"\\b.pdf\" ");
    EXPECT_EQ(outlook_.application.References(), 1U);
}

TEST_F(Commands, ClickAnswersOkWhateverTheCommandDid) {
    AddMails();
    const AddinObject addin;
    addin->state.host = HostOutlook;
    addin->state.application = &outlook_.application;
    for (const wchar_t* id : outlookButtons) EXPECT_EQ(Click(addin.Get(), id), S_OK) << Utf8(id);
    EXPECT_EQ(addin->state.conversionCache.size(), 2U) << "it is the add-in's";
    outlook_.explorer.Fail(L"Selection", E_FAIL);
    outlook_.explorer.On(L"CurrentFolder", [](VARIANT*) -> HRESULT { throw std::bad_alloc(); });
    for (const wchar_t* id : outlookButtons) EXPECT_EQ(Click(addin.Get(), id), S_OK) << Utf8(id);
    addin->OnDisconnection(ext_dm_HostShutdown, nullptr);
}
