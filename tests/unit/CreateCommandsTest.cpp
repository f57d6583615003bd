// The commands that turn mails into PDFs, with real files, a real companion and a real message box.
#include "src/outlook/CreateCommands.h"

#include <filesystem>
#include <functional>

#include "standins/common/Text.h"
#include "tests/support/OutlookCommandTest.h"

namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::wstring>;

class CreateCommands : public OutlookCommandTest {
protected:
    CreateCommands() {
        // What the engine merges into is there afterwards.
        engine_.onCall = [this](std::string_view function) {
            if (function == "PDFMerge_Save" && !mergedPath_.empty()) WriteFileText(mergedPath_, "merged");
        };
    }

    std::wstring Quoted(const std::wstring& name) const { return L"\"" + folder_.Path(name) + L"\" "; }
    bool FromSelection() { return CreatePdfFromSelection(state_, &outlook_.application, folder_.Path()); }
    bool FromFolder(bool merge) { return CreatePdfFromFolder(state_, &outlook_.application, folder_.Path(), merge); }

    // The PDFs that were merged, in their order, and the path that they were merged into; nothing for no merge.
    Paths Merged() const {
        Paths merged, opened;
        for (const std::wstring& call : engine_.calls) {
            if (call.starts_with(L"PDF_LoadDocument")) opened.push_back(InBrackets(call));
            if (call.starts_with(L"PDFMerge_AddDocument")) merged.push_back(opened.back());
            if (call.starts_with(L"PDFMerge_Save")) merged.push_back(InBrackets(call));
        }
        return merged;
    }

    const CompanionProbe companion_;
    std::wstring mergedPath_;
};

// Three mails, received at 09:00, 08:00 and 10:00.
class CreateOfThree : public CreateCommands {
protected:
    CreateOfThree() {
        outlook_.AddMail(L"Nine").ReceivedAt(2024, 1, 2, 9);
        outlook_.AddMail(L"Eight").ReceivedAt(2024, 1, 2, 8);
        outlook_.AddMail(L"Ten").ReceivedAt(2024, 1, 2, 10);
    }

    const std::wstring nine_ = key1 + L"\\Nine.pdf";
    const std::wstring eight_ = key2 + L"\\Eight.pdf";
    const std::wstring ten_ = key3 + L"\\Ten.pdf";
};

void ExpectMessage(const DialogRobot& robot) {
    ExpectOneWarning(robot, L"There are no emails that can be created as PDFs");
}

}  // namespace

TEST_F(CreateOfThree, PdfsOfTheSelectionKeepItsOrder) {
    EXPECT_TRUE(FromSelection());
    EXPECT_EQ(companion_.WaitForParameters(), L" " + Quoted(nine_) + Quoted(eight_) + Quoted(ten_));
    EXPECT_EQ((Calls{calls_.begin(), calls_.begin() + 4}),
              (Calls{L"application.ActiveExplorer", L"explorer.Selection", L"selection.Count", L"selection.Item(1)"}));
}

TEST_F(CreateOfThree, PdfsOfTheFolderAreOldestFirst) {
    EXPECT_TRUE(FromFolder(false));
    EXPECT_EQ(companion_.WaitForParameters(), L" " + Quoted(eight_) + Quoted(nine_) + Quoted(ten_));
    EXPECT_EQ((Calls{calls_.begin(), calls_.begin() + 5}),
              (Calls{L"application.ActiveExplorer", L"explorer.CurrentFolder", L"folder.Items", L"items.Count",
                     L"items.Item(1)"}));
    EXPECT_EQ(outlook_.folder.LookedUp(), Names{L"Items"}) << "neither key nor name are needed";
    EXPECT_EQ(Merged(), Paths{});
}

TEST_F(CreateOfThree, MergeIsOldestFirstAndNamedAfterTheFolder) {
    mergedPath_ = Path(keyOfInbox + L"\\Inbox.pdf");
    EXPECT_TRUE(FromFolder(true));
    EXPECT_EQ(Merged(), (Paths{Path(eight_), Path(nine_), Path(ten_), mergedPath_}));
    EXPECT_EQ(companion_.WaitForParameters(), L" " + Quoted(keyOfInbox + L"\\Inbox.pdf"));
    // One folder object from the first step on, whose Explorer is asked once.
    EXPECT_EQ(outlook_.explorer.LookedUp(), Names{L"CurrentFolder"});
    EXPECT_EQ(outlook_.folder.LookedUp(), (Names{L"Items", L"EntryID", L"Name"}));
}

TEST_F(CreateOfThree, SecondMergeOpensTheFirstOneAgain) {
    mergedPath_ = Path(keyOfInbox + L"\\Inbox.pdf");
    const std::wstring parameters = L" " + Quoted(keyOfInbox + L"\\Inbox.pdf");
    EXPECT_TRUE(FromFolder(true));
    EXPECT_EQ(companion_.WaitForStarts(1), Paths{parameters});
    WriteFileText(mergedPath_, "the first");
    engine_.Restart();
    outlook_.AddMail(L"Later");
    EXPECT_TRUE(FromFolder(true));
    EXPECT_EQ(Merged(), Paths{});
    EXPECT_EQ(ReadFileText(mergedPath_), "the first");
    EXPECT_EQ(companion_.WaitForStarts(2), (Paths{parameters, parameters}));

    fs::remove(mergedPath_);
    EXPECT_TRUE(FromFolder(true));
    EXPECT_EQ(Merged().size(), 5U) << "deleted, it is made anew, of all four";
    EXPECT_EQ(ReadFileText(mergedPath_), "merged");
    EXPECT_EQ(word_.asked.size(), 4U) << "of the PDFs that are there";
}

TEST_F(CreateOfThree, FailedMergeStillHandsItsPathOn) {
    EXPECT_TRUE(FromFolder(true));
    EXPECT_FALSE(fs::exists(Path(keyOfInbox + L"\\Inbox.pdf")));
    EXPECT_EQ(companion_.WaitForParameters(), L" " + Quoted(keyOfInbox + L"\\Inbox.pdf"));
}

TEST_F(CreateOfThree, FailedMergeLeavesNothingThatWouldBeTakenForTheMergedPdf) {
    mergedPath_ = Path(keyOfInbox + L"\\Inbox.pdf");
    engine_.onCall = [this, save = engine_.onCall](std::string_view function) {
        save(function);
        if (function == "PDFMerge_Save") engine_.failingCall = engine_.CallCount();
    };
    EXPECT_TRUE(FromFolder(true));
    EXPECT_FALSE(fs::exists(mergedPath_));
    EXPECT_EQ(companion_.WaitForParameters(), L" " + Quoted(keyOfInbox + L"\\Inbox.pdf"));
}

TEST_F(CreateOfThree, FoldersOfOneNameHaveMergedPdfsOfTheirOwn) {
    mergedPath_ = Path(keyOfInbox + L"\\Inbox.pdf");
    EXPECT_TRUE(FromFolder(true));
    outlook_.folder.GiveText(L"EntryID", L"entry4");
    engine_.Restart();
    mergedPath_ = Path(key4 + L"\\Inbox.pdf");
    EXPECT_TRUE(FromFolder(true));
    EXPECT_EQ(Merged().back(), mergedPath_);
    EXPECT_TRUE(fs::exists(Path(keyOfInbox + L"\\Inbox.pdf")));
    EXPECT_TRUE(fs::exists(mergedPath_));
}

TEST_F(CreateOfThree, FolderNameThatNoFileCanHaveMakesNoMergeButItsPathIsHandedOn) {
    size_t starts = 0;
    for (const std::wstring name : {L"..\\..\\evil", L"a/b", L"x:y", L"CON", L"what?", L"a|b", L"a\tb"}) {
        SCOPED_TRACE(Utf8(name));
        outlook_.folder.GiveText(L"Name", name);
        EXPECT_TRUE(FromFolder(true));
        EXPECT_EQ(engine_.CallCount(), 0);
        EXPECT_EQ(companion_.WaitForStarts(++starts).back(), L" " + Quoted(keyOfInbox + L"\\" + name + L".pdf"));
    }
    EXPECT_EQ(folder_.List().size(), 7U) << "the three PDFs, their folders and that of the merged PDF";
}

TEST_F(CreateOfThree, QuotationMarkInTheFoldersNameStartsNoCompanionWithFurtherArguments) {
    outlook_.folder.GiveText(L"Name", L"a\" \"b");
    const DialogRobot robot({});
    EXPECT_TRUE(FromFolder(true));
    EXPECT_TRUE(robot.Seen().empty());
    EXPECT_EQ(engine_.CallCount(), 0);
    outlook_.folder.GiveText(L"Name", L"Inbox");
    EXPECT_TRUE(FromFolder(true));
    EXPECT_EQ(companion_.WaitForStarts(1), Paths{L" " + Quoted(keyOfInbox + L"\\Inbox.pdf")});
}

TEST_F(CreateOfThree, OddButPlainFolderNamesAreKeptAsTheyStand) {
    for (const std::wstring name : {L"..", L" ", L"\xD83D\xDE00",
                                    L"\x202E"
                                    L"fdp",
                                    L"\x65E5"}) {
        engine_.Restart();
        outlook_.folder.GiveText(L"Name", name);
        EXPECT_TRUE(FromFolder(true));
        EXPECT_EQ(Merged().at(3), Path(keyOfInbox + L"\\" + name + L".pdf"));
    }
}

TEST_F(CreateOfThree, FolderWithoutAReadableNameOrKeyIsNamedByNothing) {
    outlook_.folder.Fail(L"Name", E_FAIL);
    EXPECT_TRUE(FromFolder(true));
    EXPECT_EQ(Merged().back(), Path(keyOfInbox + L"\\.pdf"));
    engine_.Restart();
    outlook_.folder.GiveText(L"Name", L"Inbox");
    outlook_.folder.Fail(L"EntryID", E_FAIL);
    EXPECT_TRUE(FromFolder(true));
    EXPECT_EQ(Merged().back(), folder_.Path() + L"\\\\Inbox.pdf");
}

TEST_F(CreateOfThree, MergedPathOfTwoHundredSixtyCharactersMakesNoMerge) {
    const std::wstring longest(259 - Path(keyOfInbox + L"\\.pdf").size(), L'n');
    outlook_.folder.GiveText(L"Name", longest + L"n");
    EXPECT_TRUE(FromFolder(true));
    EXPECT_EQ(engine_.CallCount(), 0);
    outlook_.folder.GiveText(L"Name", longest);
    EXPECT_TRUE(FromFolder(true));
    EXPECT_EQ(Merged().at(3), Path(keyOfInbox + L"\\" + longest + L".pdf"));
}

TEST_F(CreateOfThree, MailThatFailsIsLeftOut) {
    outlook_.Mail(1).object.GiveText(L"Subject", L"RE: Nine");
    outlook_.Mail(3).object.Fail(L"SaveAs", E_FAIL);
    const std::wstring parameters = L" " + Quoted(eight_);
    const DialogRobot robot({});  // for the message about the first one
    EXPECT_TRUE(FromSelection());
    EXPECT_EQ(companion_.WaitForStarts(1), (Paths{parameters}));
    EXPECT_TRUE(FromFolder(false));
    EXPECT_EQ(companion_.WaitForStarts(2), (Paths{parameters, parameters}));
    // One is left, and nothing to merge it with.
    EXPECT_TRUE(FromFolder(true));
    EXPECT_EQ(companion_.WaitForStarts(3), (Paths{parameters, parameters, parameters}));
    EXPECT_EQ(engine_.CallCount(), 0);
    EXPECT_FALSE(fs::exists(Path(keyOfInbox)));
}

TEST_F(CreateOfThree, MailWithoutAReceivedTimeIsTheYoungest) {
    outlook_.Mail(2).object.Fail(L"ReceivedTime", E_FAIL);
    EXPECT_TRUE(FromFolder(true));
    EXPECT_EQ(Merged(), (Paths{Path(nine_), Path(ten_), Path(eight_), Path(keyOfInbox + L"\\Inbox.pdf")}));
}

TEST_F(CreateOfThree, SecondCommandTakesThePdfsOfTheFirst) {
    EXPECT_TRUE(FromSelection());
    EXPECT_TRUE(FromFolder(false));
    EXPECT_TRUE(FromFolder(true));
    EXPECT_EQ(word_.asked.size(), 3U);
    EXPECT_EQ(Merged().size(), 4U);
}

TEST_F(CreateCommands, MergeOfOneMailOpensItsPdf) {
    outlook_.AddMail(L"Hello");
    outlook_.AddOther(L"IPM.Appointment");
    EXPECT_TRUE(FromFolder(true));
    EXPECT_EQ(companion_.WaitForParameters(), L" " + Quoted(key1 + L"\\Hello.pdf"));
    EXPECT_EQ(engine_.CallCount(), 0);
    EXPECT_EQ(folder_.List().size(), 2U);
}

TEST_F(CreateCommands, NoMailShowsTheMessage) {
    const auto expectMessages = [&] {
        for (const auto& run : {std::function<bool()>([&] { return FromSelection(); }),
                                std::function<bool()>([&] { return FromFolder(false); }),
                                std::function<bool()>([&] { return FromFolder(true); })}) {
            const DialogRobot robot({});
            EXPECT_FALSE(run());
            ExpectMessage(robot);
        }
    };
    {
        SCOPED_TRACE("empty");
        expectMessages();
    }
    {
        SCOPED_TRACE("no mail");
        outlook_.AddOther(L"IPM.Contact");
        expectMessages();
    }
    {
        SCOPED_TRACE("every conversion fails");
        outlook_.AddMail(L"Hello");
        word_.createResult = E_FAIL;
        expectMessages();
    }
    EXPECT_FALSE(fs::exists(Path(keyOfInbox)));
}

TEST_F(CreateCommands, CountThatIsNoThirtyTwoBitNumberShowsTheMessage) {
    outlook_.AddMail(L"Hello");
    outlook_.selection.object.GiveText(L"Count", L"1");
    const DialogRobot robot({});
    EXPECT_FALSE(FromSelection());
    ExpectMessage(robot);
}

TEST_F(CreateCommands, CommandEndsSilentlyWhereOutlookDoesNotGiveTheItems) {
    outlook_.AddMail(L"Hello");
    const DialogRobot robot({});
    EXPECT_FALSE(CreatePdfFromSelection(state_, nullptr, folder_.Path()));
    EXPECT_FALSE(CreatePdfFromFolder(state_, nullptr, folder_.Path(), true));
    outlook_.folder.GiveNumber(L"Items", 1);
    EXPECT_FALSE(FromFolder(false));
    EXPECT_FALSE(FromFolder(true));
    outlook_.explorer.Fail(L"CurrentFolder", E_FAIL);
    outlook_.explorer.GiveObject(L"Selection", nullptr);
    EXPECT_FALSE(FromFolder(false));
    EXPECT_FALSE(FromFolder(true));
    EXPECT_FALSE(FromSelection());
    outlook_.application.GiveNothing(L"ActiveExplorer");
    EXPECT_FALSE(FromFolder(false));
    EXPECT_FALSE(FromSelection());
    EXPECT_TRUE(robot.Seen().empty());
    EXPECT_EQ(folder_.List(), Listing{});
}

TEST_F(CreateCommands, MissingCompanionIsSilent) {
    companion_.Uninstall();
    outlook_.AddMail(L"Hello");
    const DialogRobot robot({});
    EXPECT_TRUE(FromSelection());
    EXPECT_TRUE(FromFolder(false));
    EXPECT_TRUE(FromFolder(true));
    EXPECT_TRUE(robot.Seen().empty());
}
