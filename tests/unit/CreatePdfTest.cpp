// The Create PDF command with a real dialog and a real companion, on a scripted host.
#include "src/export/CreatePdf.h"

#include <gtest/gtest.h>

#include "standins/office/DialogRobot.h"
#include "tests/support/CompanionProbe.h"
#include "tests/support/Files.h"
#include "tests/support/ScriptedDispatch.h"
#include "tests/support/TestWindow.h"

namespace {

using Names = std::vector<std::wstring>;

// Word with one document in the test's folder; its export writes a small file where it is told to.
class CreatePdfCommand : public testing::Test {
protected:
    CreatePdfCommand() {
        document_.GiveText(L"FullName", folder_.Path(L"Plan.docx"));
        document_.On(L"ExportAsFixedFormat", [this](VARIANT*) {
            folder_.MakeFile(L"Plan.pdf", "exported");
            return S_OK;
        });
        window_.GiveNumber(L"hwnd", 0);
        application_.GiveObject(L"ActiveWindow", &window_);
        application_.GiveObject(L"ActiveDocument", &document_);
        state_.host = HostWord;
        state_.application = &application_;
    }
    ~CreatePdfCommand() override {
        state_.application.Reset();
        EXPECT_EQ(application_.References(), 1U);
        EXPECT_EQ(document_.References(), 1U);
        EXPECT_EQ(window_.References(), 1U);
    }

    const TemporaryFolder folder_;
    const CompanionProbe companion_;
    ScriptedDispatch window_;
    ScriptedDispatch document_;
    ScriptedDispatch application_;
    AddinState state_;
};

}  // namespace

TEST_F(CreatePdfCommand, ExportsToTheChosenPathAndShowsThePdf) {
    const DialogRobot robot({});
    CreatePdf(state_, false);
    EXPECT_EQ(document_.Invoked(), (Names{L"FullName", L"ExportAsFixedFormat"}));
    EXPECT_EQ(document_.invocations.back().wire.back(), WireText(folder_.Path(L"Plan.pdf")));
    EXPECT_EQ(companion_.WaitForParameters(), L" \"" + folder_.Path(L"Plan.pdf") + L"\" ");
    // The document is asked for twice: for its name before the dialog, for the export after it.
    EXPECT_EQ(application_.Invoked(), (Names{L"ActiveWindow", L"ActiveDocument", L"ActiveDocument"}));
}

TEST_F(CreatePdfCommand, CancelledDialogEndsTheCommand) {
    const DialogRobot robot({.cancel = true});
    CreatePdf(state_, false);
    EXPECT_EQ(document_.Invoked(), Names{L"FullName"});
    EXPECT_EQ(application_.Invoked(), (Names{L"ActiveWindow", L"ActiveDocument"}));
    EXPECT_FALSE(companion_.WasStarted());
}

TEST_F(CreatePdfCommand, ClearedOptionExportsAndOpensNothingAlsoForCreateAndSend) {
    state_.settings.openAfterExport = false;
    for (const bool sendAfter : {false, true}) {
        const DialogRobot robot({.overwrite = true});
        CreatePdf(state_, sendAfter);
        EXPECT_EQ(document_.Invoked().back(), L"ExportAsFixedFormat");
        EXPECT_FALSE(companion_.WasStarted());
    }
}

TEST_F(CreatePdfCommand, MissingCompanionExportsAndOpensNothing) {
    companion_.Uninstall();
    const DialogRobot robot({});
    CreatePdf(state_, true);
    EXPECT_EQ(document_.Invoked().back(), L"ExportAsFixedFormat");
    EXPECT_FALSE(companion_.WasStarted());
    EXPECT_EQ(robot.Seen().size(), 1U);  // the save dialog and no message
}

TEST_F(CreatePdfCommand, FailedExportOpensSendsAndSaysNothing) {
    ScriptedDispatch failing;
    failing.GiveText(L"FullName", folder_.Path(L"Plan.docx"));
    failing.Fail(L"ExportAsFixedFormat", DISP_E_EXCEPTION);
    ScriptedDispatch application;
    application.GiveObject(L"ActiveDocument", &failing);
    state_.application = &application;
    SetEnvironmentVariableW(L"ZAVO_MAIL_LOG", folder_.Path(L"mail.log").c_str());
    for (const bool sendAfter : {false, true}) {
        const DialogRobot robot({});
        CreatePdf(state_, sendAfter);
        EXPECT_EQ(failing.Invoked().back(), L"ExportAsFixedFormat");
        EXPECT_FALSE(companion_.WasStarted());
        EXPECT_EQ(robot.Seen().size(), 1U);
        EXPECT_EQ(ReadFileText(folder_.Path(L"mail.log")), "");
    }
    state_.application.Reset();
    EXPECT_EQ(failing.References(), 1U);
    EXPECT_EQ(application.References(), 1U);
}

TEST_F(CreatePdfCommand, MissingDocumentStillAsksAndThenEnds) {
    ScriptedDispatch application;
    state_.application = &application;
    const DialogRobot robot({.path = folder_.Path(L"x.pdf")});
    CreatePdf(state_, false);
    ASSERT_EQ(robot.Seen().size(), 1U);
    EXPECT_EQ(application.LookedUp(), (Names{L"ActiveWindow", L"ActiveDocument", L"ActiveDocument"}));
    EXPECT_FALSE(companion_.WasStarted());
    state_.application.Reset();
}

TEST_F(CreatePdfCommand, DialogBelongsToTheHostsWindow) {
    const TestWindow owner;
    ScriptedDispatch window;
    window.GiveNumber(L"hwnd", owner.Number());
    ScriptedDispatch application;
    application.GiveObject(L"ActiveWindow", &window);
    state_.application = &application;
    {
        const DialogRobot robot({.cancel = true});
        CreatePdf(state_, false);
        ASSERT_EQ(robot.Seen().size(), 1U);
        EXPECT_EQ(robot.Seen()[0].owner, owner.Get());
    }
    state_.application.Reset();
}

TEST_F(CreatePdfCommand, ExcelExportsItsWorkbook) {
    ScriptedDispatch workbook;
    workbook.GiveText(L"FullName", folder_.Path(L"Sums.xlsx"));
    workbook.GiveNothing(L"ExportAsFixedFormat");
    ScriptedDispatch application;
    application.GiveObject(L"ActiveWorkbook", &workbook);
    state_.host = HostExcel;
    state_.application = &application;
    {
        const DialogRobot robot({});
        CreatePdf(state_, false);
    }
    ASSERT_EQ(workbook.invocations.back().wire.size(), 8U);
    EXPECT_EQ(workbook.invocations.back().wire[8 - 2], WireText(folder_.Path(L"Sums.pdf")));
    state_.application.Reset();
    EXPECT_EQ(workbook.References(), 1U);
}

TEST_F(CreatePdfCommand, PowerPointsDialogHasNoOwnerUnlessItsFrameIsInTheForeground) {
    ScriptedDispatch presentation;
    presentation.GiveText(L"FullName", folder_.Path(L"Talk.pptx"));
    ScriptedDispatch application;
    application.GiveObject(L"ActivePresentation", &presentation);
    state_.host = HostPowerPoint;
    state_.application = &application;
    {
        const DialogRobot robot({.cancel = true});
        CreatePdf(state_, false);
        ASSERT_EQ(robot.Seen().size(), 1U);
        EXPECT_EQ(robot.Seen()[0].owner, nullptr);
        EXPECT_EQ(robot.Seen()[0].text, L"Talk.pdf");
    }
    state_.application.Reset();
}

TEST_F(CreatePdfCommand, DisconnectionDuringACallLeavesTheCommandItsOwnApplication) {
    ULONG referencesAfterDisconnection = 0;
    ScriptedDispatch application;
    application.On(L"ActiveWindow", [&](VARIANT*) {
        state_.application.Reset();  // what a disconnection does
        referencesAfterDisconnection = application.References();
        return E_FAIL;
    });
    application.GiveObject(L"ActiveDocument", &document_);
    state_.application = &application;
    const DialogRobot robot({.path = folder_.Path(L"Plan.pdf")});
    CreatePdf(state_, false);
    EXPECT_EQ(referencesAfterDisconnection, 2U);  // the test's and the command's
    EXPECT_EQ(application.References(), 1U);
    EXPECT_EQ(document_.Invoked(), Names{L"ExportAsFixedFormat"});
}
