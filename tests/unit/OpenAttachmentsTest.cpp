// The commands that open PDF attachments, with real files, a real companion and a real message box.
#include "src/outlook/OpenAttachments.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <new>

#include "tests/support/OutlookCommandTest.h"

namespace {

class OpenAttachments : public OutlookCommandTest {
protected:
    // As the companion gets it.
    std::wstring Quoted(const std::wstring& name) const { return L"\"" + folder_.Path(name) + L"\" "; }
    bool OpenSelection() { return OpenPdfAttachmentsFromSelection(state_, &outlook_.application, folder_.Path()); }
    bool OpenFolder() { return OpenPdfAttachmentsFromFolder(state_, &outlook_.application, folder_.Path()); }

    const CompanionProbe companion_;
};

void ExpectMessage(const DialogRobot& robot) {
    ExpectOneWarning(robot, L"There are no PDF attachments that can be opened");
}

}  // namespace

TEST_F(OpenAttachments, OfTheSelectionAreOpenedTogetherInTheOrderOfMailsAndAttachments) {
    outlook_.AddMail(L"One").Attach(L"b.pdf", "1b");
    outlook_.Mail(1).Attach(L"a.PDF", "1a");
    outlook_.Mail(1).Attach(L"c.Pdf", "1c");
    outlook_.Mail(1).Attach(L"d.docx", "1d");
    outlook_.AddMail(L"Two").Attach(L"b.pdf", "2b");
    EXPECT_TRUE(OpenSelection());
    const std::wstring one = key1 + L"\\", two = key2 + L"\\";
    EXPECT_EQ(companion_.WaitForParameters(),
              L" " + Quoted(one + L"b.pdf") + Quoted(one + L"a.PDF") + Quoted(two + L"b.pdf"));
    EXPECT_EQ(folder_.List(), (Listing{{key1, "folder"},
                                       {one + L"b.pdf", "1b"},
                                       {one + L"a.PDF", "1a"},
                                       {key2, "folder"},
                                       {two + L"b.pdf", "2b"}}));
}

TEST_F(OpenAttachments, OfTheFolderAreThoseOfAllItsItems) {
    outlook_.AddMail(L"One").Attach(L"a.pdf", "A");
    outlook_.selection.items.clear();
    EXPECT_TRUE(OpenFolder());
    EXPECT_EQ(companion_.WaitForParameters(), L" " + Quoted(key1 + L"\\a.pdf"));
    EXPECT_EQ((Calls{calls_.begin(), calls_.begin() + 4}),
              (Calls{L"application.ActiveExplorer", L"explorer.CurrentFolder", L"folder.Items", L"items.Count"}));
}

TEST_F(OpenAttachments, ItemBetweenTwoMailsThatIsNoneIsSkipped) {
    outlook_.AddMail(L"One").Attach(L"a.pdf", "A");
    outlook_.AddOther(L"IPM.Appointment").Attach(L"b.pdf", "B");
    outlook_.AddMail(L"Three").Attach(L"c.pdf", "C");
    EXPECT_TRUE(OpenSelection());
    EXPECT_EQ(companion_.WaitForParameters(), L" " + Quoted(key1 + L"\\a.pdf") + Quoted(key3 + L"\\c.pdf"));
    EXPECT_EQ((Calls{calls_.begin(), calls_.begin() + 4}),
              (Calls{L"application.ActiveExplorer", L"explorer.Selection", L"selection.Count", L"selection.Item(1)"}));
    EXPECT_FALSE(std::filesystem::exists(folder_.Path(key2)));
}

TEST_F(OpenAttachments, TwoOfOneNameInAMailAreOneFileThatIsOpenedTwice) {
    outlook_.AddMail(L"One").Attach(L"a.pdf", "first");
    outlook_.Mail(1).Attach(L"a.pdf", "second");
    EXPECT_TRUE(OpenSelection());
    const std::wstring path = key1 + L"\\a.pdf";
    EXPECT_EQ(companion_.WaitForParameters(), L" " + Quoted(path) + Quoted(path));
    EXPECT_EQ(ReadFileText(folder_.Path(path)), "second");
}

TEST_F(OpenAttachments, LaterRunWritesTheSamePathsAgainAndTheFilesStay) {
    folder_.MakeFile(L"earlier.pdf", "mine");
    outlook_.AddMail(L"One").Attach(L"a.pdf", "A");
    EXPECT_TRUE(OpenSelection());
    const Listing first = folder_.List();
    EXPECT_EQ(first.size(), 3U);
    EXPECT_TRUE(OpenSelection());
    EXPECT_EQ(folder_.List(), first);
}

TEST_F(OpenAttachments, NothingToOpenShowsTheMessage) {
    const auto expectMessage = [&] {
        for (const bool folder : {false, true}) {
            const DialogRobot robot({});
            EXPECT_FALSE(folder ? OpenFolder() : OpenSelection());
            ExpectMessage(robot);
        }
    };
    {
        SCOPED_TRACE("nothing selected");
        expectMessage();
    }
    {
        SCOPED_TRACE("only a calendar item");
        outlook_.AddOther(L"IPM.Appointment").Attach(L"a.pdf", "A");
        expectMessage();
    }
    {
        SCOPED_TRACE("a mail without attachments, and one without PDFs");
        outlook_.AddMail(L"Two");
        outlook_.AddMail(L"Three").Attach(L"readme", "B");
        expectMessage();
    }
    {
        SCOPED_TRACE("a PDF that is not written");
        outlook_.Mail(2).Attach(L"c.pdf", "C").Fail(L"SaveAsFile", E_FAIL);
        expectMessage();
    }
}

TEST_F(OpenAttachments, CountThatIsNoThirtyTwoBitNumberShowsTheMessage) {
    outlook_.AddMail(L"One").Attach(L"a.pdf", "A");
    outlook_.selection.object.GiveText(L"Count", L"1");
    const DialogRobot robot({});
    EXPECT_FALSE(OpenSelection());
    ExpectMessage(robot);
    EXPECT_EQ(calls_.back(), L"selection.Count");
}

TEST_F(OpenAttachments, CommandEndsSilentlyWhereOutlookDoesNotGiveTheItems) {
    const DialogRobot robot({});
    EXPECT_FALSE(OpenPdfAttachmentsFromSelection(state_, nullptr, folder_.Path()));
    EXPECT_FALSE(OpenPdfAttachmentsFromFolder(state_, nullptr, folder_.Path()));
    outlook_.folder.GiveObject(L"Items", nullptr);
    EXPECT_FALSE(OpenFolder());
    outlook_.explorer.Fail(L"CurrentFolder", E_FAIL);
    outlook_.explorer.GiveNumber(L"Selection", 1);
    EXPECT_FALSE(OpenFolder());
    EXPECT_FALSE(OpenSelection());
    outlook_.application.GiveObject(L"ActiveExplorer", nullptr);
    EXPECT_FALSE(OpenFolder());
    EXPECT_FALSE(OpenSelection());
    EXPECT_TRUE(robot.Seen().empty());
}

TEST_F(OpenAttachments, MissingCompanionIsSilentAndTheFilesAreThere) {
    companion_.Uninstall();
    outlook_.AddMail(L"One").Attach(L"a.pdf", "A");
    const DialogRobot robot({});
    EXPECT_TRUE(OpenSelection());
    EXPECT_TRUE(robot.Seen().empty());
    EXPECT_EQ(folder_.List().size(), 2U);
}

TEST_F(OpenAttachments, MissingWorkingFolderIsMadeOnTheWay) {
    outlook_.AddMail(L"One").Attach(L"a.pdf", "A");
    EXPECT_TRUE(OpenPdfAttachmentsFromSelection(state_, &outlook_.application, folder_.Path(L"x\\y")));
    EXPECT_EQ(ReadFileText(folder_.Path(L"x\\y\\" + key1 + L"\\a.pdf")), "A");
}

TEST_F(OpenAttachments, WorkingFolderThatCannotBeMadeShowsTheMessage) {
    folder_.MakeFile(L"file", "mine");
    outlook_.AddMail(L"One").Attach(L"a.pdf", "A");
    const DialogRobot robot({});
    EXPECT_FALSE(OpenPdfAttachmentsFromSelection(state_, &outlook_.application, folder_.Path(L"file")));
    ExpectMessage(robot);
    EXPECT_EQ(folder_.List(), (Listing{{L"file", "mine"}}));
}

TEST_F(OpenAttachments, ExceptionForOneLeavesOnlyThatOut) {
    outlook_.AddMail(L"One").Attach(L"a.pdf", "A").On(L"FileName", [](VARIANT*) -> HRESULT { throw std::bad_alloc(); });
    outlook_.Mail(1).Attach(L"b.pdf", "B");
    outlook_.AddMail(L"Two").object.On(L"MessageClass", [](VARIANT*) -> HRESULT { throw std::bad_alloc(); });
    outlook_.AddMail(L"Three").Attach(L"c.pdf", "C");
    EXPECT_TRUE(OpenSelection());
    EXPECT_EQ(companion_.WaitForParameters(), L" " + Quoted(key1 + L"\\b.pdf") + Quoted(key3 + L"\\c.pdf"));
}
