// What the save dialog proposes, and the real dialog with its questions.
#include "src/export/SaveDialog.h"

#include <gtest/gtest.h>

#include "standins/office/DialogRobot.h"
#include "tests/support/Files.h"
#include "tests/support/TestWindow.h"

TEST(SaveDialog, ProposesTheDocumentsFolderAndNameWithPdf) {
    EXPECT_EQ(ProposedPdfPath(L"C:\\Work\\Plan.final.docx"), L"C:\\Work\\Plan.final.pdf");
    EXPECT_EQ(ProposedPdfPath(L"C:/Work/sub/Plan.docx"), L"C:/Work/sub/Plan.pdf");
    EXPECT_EQ(ProposedPdfPath(L"Document1"), L"Document1.pdf");
    EXPECT_EQ(ProposedPdfPath(L""), L".pdf");
}

TEST(SaveDialog, OverlongNameIsShortenedAndKeepsFolderAndExtension) {
    const std::wstring folder = L"C:\\Work\\";
    const std::wstring proposed = ProposedPdfPath(folder + std::wstring(400, L'n') + L".docx");
    EXPECT_EQ(proposed.size(), 259U);
    EXPECT_EQ(proposed, folder + std::wstring(259 - 8 - 4, L'n') + L".pdf");
    // Exactly fitting: nothing is cut.
    EXPECT_EQ(ProposedPdfPath(folder + std::wstring(247, L'n') + L".docx").size(), 259U);
}

TEST(SaveDialog, ShorteningNeverSplitsASurrogatePair) {
    std::wstring name;
    while (name.size() < 300) name += L"\U0001F4C4";  // two units each
    for (const wchar_t* lead : {L"", L"a"}) {
        const std::wstring proposed = ProposedPdfPath(L"C:\\" + (lead + name) + L".docx");
        EXPECT_LE(proposed.size(), 259U);
        const wchar_t last = proposed[proposed.size() - 5];
        EXPECT_TRUE(IS_LOW_SURROGATE(last)) << std::hex << static_cast<unsigned>(last);
    }
}

TEST(SaveDialog, FolderThatDoesNotFitIsLeftOut) {
    const std::wstring folder = L"C:\\" + std::wstring(300, L'f') + L"\\";
    EXPECT_EQ(ProposedPdfPath(folder + L"Plan.docx"), L"Plan.pdf");
    EXPECT_EQ(ProposedPdfPath(folder + std::wstring(300, L'n') + L".docx"), std::wstring(255, L'n') + L".pdf");
}

TEST(SaveDialog, AcceptedProposalIsAnswered) {
    const TemporaryFolder folder;
    const DialogRobot robot({});
    EXPECT_EQ(AskPdfSavePath(nullptr, folder.Path(L"Plan.final.docx")), folder.Path(L"Plan.final.pdf"));
    ASSERT_EQ(robot.Seen().size(), 1U);
    EXPECT_EQ(robot.Seen()[0].text, L"Plan.final.pdf");
    EXPECT_TRUE(robot.Seen()[0].isSaveDialog);
}

TEST(SaveDialog, OffersPdfFilesOnlyAndNoReadOnlyBox) {
    const TemporaryFolder folder;
    folder.MakeFile(L"one.pdf");
    folder.MakeFile(L"two.PDF");
    folder.MakeFile(L"notes.txt");
    const DialogRobot robot({.cancel = true});
    AskPdfSavePath(nullptr, folder.Path(L"Plan.docx"));
    ASSERT_EQ(robot.Seen().size(), 1U);
    EXPECT_EQ(robot.Seen()[0].filters, std::vector<std::wstring>{L"PDF Files (*.pdf)"});
    EXPECT_FALSE(robot.Seen()[0].offersReadOnly);
    EXPECT_EQ(robot.Seen()[0].listedFiles, 2);
}

TEST(SaveDialog, TypedNameGetsTheExtension) {
    const TemporaryFolder folder;
    const DialogRobot robot({.path = folder.Path(L"other")});
    EXPECT_EQ(AskPdfSavePath(nullptr, folder.Path(L"Plan.docx")), folder.Path(L"other.pdf"));
}

TEST(SaveDialog, CancelledDialogGivesNothing) {
    const DialogRobot robot({.cancel = true});
    EXPECT_EQ(AskPdfSavePath(nullptr, L"C:\\Plan.docx"), L"");
    EXPECT_EQ(robot.Seen().size(), 1U);
}

TEST(SaveDialog, ExistingFileIsAskedAbout) {
    const TemporaryFolder folder;
    folder.MakeFile(L"Plan.pdf");
    {
        const DialogRobot robot({.overwrite = true});
        EXPECT_EQ(AskPdfSavePath(nullptr, folder.Path(L"Plan.docx")), folder.Path(L"Plan.pdf"));
        EXPECT_EQ(robot.Seen().size(), 2U);
    }
    const DialogRobot robot({.overwrite = false});
    EXPECT_EQ(AskPdfSavePath(nullptr, folder.Path(L"Plan.docx")), L"");
}

TEST(SaveDialog, MissingFolderIsRefusedByTheDialog) {
    const TemporaryFolder folder;
    const DialogRobot robot({.path = folder.Path(L"no such folder\\a.pdf")});
    EXPECT_EQ(AskPdfSavePath(nullptr, folder.Path(L"Plan.docx")), L"");
}

TEST(SaveDialog, OpensAlsoForAnOverlongName) {
    const TemporaryFolder folder;
    const DialogRobot robot({.path = folder.Path(L"short.pdf")});
    EXPECT_EQ(AskPdfSavePath(nullptr, folder.Path(std::wstring(400, L'n') + L".docx")), folder.Path(L"short.pdf"));
    ASSERT_FALSE(robot.Seen().empty());
    EXPECT_TRUE(robot.Seen()[0].isSaveDialog);
}

TEST(SaveDialog, DialogBelongsToTheOwner) {
    const TestWindow owner;
    {
        const DialogRobot robot({.cancel = true});
        AskPdfSavePath(owner.Get(), L"C:\\Plan.docx");
        ASSERT_EQ(robot.Seen().size(), 1U);
        EXPECT_EQ(robot.Seen()[0].owner, owner.Get());
    }
}
