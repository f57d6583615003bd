// One mail's files in a real folder, and the user's own, which stay where and as they are.
#include "src/outlook/MailOnDisk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <new>
#include <optional>

#include "standins/common/Text.h"
#include "tests/support/OutlookCommandTest.h"
#include "tests/support/Sharing.h"

namespace {

namespace fs = std::filesystem;

class SavedMail : public OutlookCommandTest {
protected:
    // The short name that the file system has for the file.
    std::wstring ShortPath(const std::wstring& name) const {
        wchar_t path[MAX_PATH] = L"";
        GetShortPathNameW(Path(name).c_str(), path, MAX_PATH);
        return folder_.Path(fs::path(path).filename().wstring());
    }

    void MakeFolder(const std::wstring& name) const { fs::create_directories(Path(name)); }

    // Where the document of the mail, which is made a PDF of, was saved.
    std::wstring DocumentOf(MailOnDisk& mail) {
        EXPECT_EQ(mail.MakePdf(key1, false), Path(key1 + L"\\Hello.pdf"));
        const std::wstring start = L"mail1.SaveAs(", end = L", 4)";
        const auto save = std::find_if(calls_.rbegin(), calls_.rend(),
                                       [&](const std::wstring& call) { return call.starts_with(start); });
        if (save == calls_.rend()) return {};
        return save->substr(start.size(), save->size() - start.size() - end.size());
    }

    ScriptedMail& mail_ = outlook_.AddMail(L"Hello");
    MailCommand command_{state_, folder_.Path()};
};

}  // namespace

TEST_F(SavedMail, IsSavedUnderItsSubjectWithTheTypesExtension) {
    EXPECT_EQ(SaveMailAs(&mail_.object, folder_.Path(), 4), Path(L"Hello.doc"));
    EXPECT_EQ(calls_,
              (Calls{L"mail1.MessageClass", L"mail1.Subject", L"mail1.SaveAs(" + Path(L"Hello.doc") + L", 4)"}));
    const Invocation& save = mail_.object.invocations.back();
    EXPECT_EQ(save.flags, DISPATCH_METHOD);
    EXPECT_EQ(save.wire, (std::vector{WireNumber(4), WireText(Path(L"Hello.doc"))}));
    EXPECT_TRUE(save.named.empty());
    EXPECT_EQ(SaveMailAs(&mail_.object, folder_.Path(), 3), Path(L"Hello.msg"));
    EXPECT_EQ(mail_.object.invocations.back().wire.front(), WireNumber(3));
    EXPECT_EQ(SaveMailAs(&mail_.object, folder_.Path(), 10), Path(L"Hello.mhtml"));
}

TEST_F(SavedMail, IsCalledMailWithoutASubject) {
    mail_.object.GiveText(L"Subject", L"");
    EXPECT_EQ(SaveMailAs(&mail_.object, folder_.Path(), 4), Path(L"mail.doc"));
}

TEST_F(SavedMail, IsNoneOfAnotherItemOrWithoutAReadableSubject) {
    mail_.object.GiveText(L"MessageClass", L"IPM.Appointment");
    EXPECT_EQ(SaveMailAs(&mail_.object, folder_.Path(), 4), L"");
    mail_.object.GiveText(L"MessageClass", L"IPM.Note");
    mail_.object.GiveType(L"Subject", VT_BSTR);
    EXPECT_EQ(SaveMailAs(&mail_.object, folder_.Path(), 4), L"");
    mail_.object.Fail(L"Subject", E_FAIL);
    EXPECT_EQ(SaveMailAs(&mail_.object, folder_.Path(), 4), L"");
    EXPECT_EQ(SaveMailAs(nullptr, folder_.Path(), 4), L"");
    EXPECT_EQ(folder_.List(), Listing{});
}

TEST_F(SavedMail, IsThereOrNotWhateverTheSaveAnswers) {
    mail_.object.On(L"SaveAs", [&](VARIANT*) {
        WriteFileText(ScriptedMail::SavedPath(mail_.object), "document");
        return DISP_E_EXCEPTION;
    });
    EXPECT_EQ(SaveMailAs(&mail_.object, folder_.Path(), 4), Path(L"Hello.doc"));
    fs::remove(Path(L"Hello.doc"));
    mail_.object.GiveNothing(L"SaveAs");
    EXPECT_EQ(SaveMailAs(&mail_.object, folder_.Path(), 4), L"");
}

TEST_F(SavedMail, HasNoFileUnderANameThatNoFileCanHave) {
    for (const std::wstring& subject :
         {std::wstring(L"..\\..\\evil"), std::wstring(L"a/b"), std::wstring(L"x:y"), std::wstring(L"RE: x"),
          std::wstring(L"CON"), std::wstring(L"nul"), std::wstring(L"LPT1 "), std::wstring(L"COM\x00B2"),
          std::wstring(L"a\tb"), std::wstring(L"a\nb"), std::wstring(L"why?"), std::wstring(L"*"), std::wstring(L"<x>"),
          std::wstring(L"\"x\""), std::wstring(L"a|b"), std::wstring(L"a\0b", 3), std::wstring(300, L'x')}) {
        mail_.object.GiveText(L"Subject", subject);
        EXPECT_EQ(SaveMailAs(&mail_.object, folder_.Path(), 4), L"") << Utf8(subject);
        EXPECT_EQ(MailPdfPath(subject, folder_.Path(), key1, false), L"") << Utf8(subject);
    }
    for (const std::wstring& call : calls_) EXPECT_TRUE(call.find(L"SaveAs") == std::wstring::npos) << Utf8(call);
    EXPECT_EQ(folder_.List(), Listing{}) << "nor a folder for it";
}

TEST_F(SavedMail, KeepsAnOddButPlainSubjectAsItStands) {
    for (const std::wstring subject : {L".", L"..", L" ", L"a ", L"a.",
                                       L"\x202E"
                                       L"fdp",
                                       L"\xD83D\xDE00", L"\x65E5", L"Portfolio", L"%TEMP%", L"a;b", L"CONSOLE"}) {
        mail_.object.GiveText(L"Subject", subject);
        EXPECT_EQ(SaveMailAs(&mail_.object, folder_.Path(), 4), Path(subject + L".doc")) << Utf8(subject);
        EXPECT_EQ(MailPdfPath(subject, folder_.Path(), key1, false), Path(key1 + L"\\" + subject + L".pdf"));
    }
}

TEST_F(SavedMail, HasAPathOfAtMostTwoHundredFiftyNineCharacters) {
    const std::wstring longest(259 - folder_.Path().size() - 1 - 4, L'n');
    mail_.object.GiveText(L"Subject", longest);
    EXPECT_EQ(SaveMailAs(&mail_.object, folder_.Path(), 4), Path(longest + L".doc"));
    EXPECT_EQ(Path(longest + L".doc").size(), 259U);
    // The PDF's path has the key's folder besides.
    EXPECT_EQ(MailPdfPath(longest, folder_.Path(), key1, false), L"");
    EXPECT_FALSE(fs::exists(Path(key1)));
    mail_.object.GiveText(L"Subject", longest + L"n");
    EXPECT_EQ(SaveMailAs(&mail_.object, folder_.Path(), 4), L"");
    const std::wstring longestPdf = longest.substr(key1.size() + 1);
    EXPECT_EQ(MailPdfPath(longestPdf, folder_.Path(), key1, false), Path(key1 + L"\\" + longestPdf + L".pdf"));
    // A number makes it too long.
    EXPECT_TRUE(WriteFileText(Path(key1 + L"\\" + longestPdf + L".pdf"), "PDF"));
    EXPECT_EQ(MailPdfPath(longestPdf, folder_.Path(), key1, true), L"");
}

TEST_F(SavedMail, HasItsPdfInTheFolderOfItsKey) {
    EXPECT_EQ(MailPdfPath(L"Hello", folder_.Path(), key1, false), Path(key1 + L"\\Hello.pdf"));
    EXPECT_TRUE(fs::is_directory(Path(key1)));
    EXPECT_TRUE(WriteFileText(Path(key1 + L"\\Hello.pdf"), "PDF"));
    EXPECT_EQ(MailPdfPath(L"Hello", folder_.Path(), key1, false), Path(key1 + L"\\Hello.pdf"));
    EXPECT_EQ(MailPdfPath(L"Hello", folder_.Path(), key1, true), Path(key1 + L"\\Hello(1).pdf"));
    EXPECT_EQ(MailPdfPath(L"Hello", folder_.Path(), L"", false), Path(L"Hello.pdf")) << "without a key";
}

TEST_F(SavedMail, FilesAreWhereTheyBelongAndGoneInTheEnd) {
    mail_.Attach(L"a.txt", "A");
    mail_.Attach(L"Hello.doc", "B");
    {
        MailOnDisk mail(&mail_.object, command_);
        EXPECT_EQ(DocumentOf(mail), Path(L"Hello.doc"));
        EXPECT_EQ(ReadFileText(Path(L"Hello.doc")), "document of mail1") << "until the end";
        EXPECT_EQ(mail.SaveAttachments(), (Paths{Path(L"a.txt"), Path(L"Hello.doc")}));
        EXPECT_EQ(ReadFileText(Path(L"Hello.doc")), "B") << "the mail's own file is overwritten";
        EXPECT_FALSE(fs::exists(Path(L"temp")));
    }
    EXPECT_EQ(folder_.List(), (Listing{{key1, "folder"}, {key1 + L"\\Hello.pdf", "PDF of document of mail1"}}));
}

TEST_F(SavedMail, FilesAreGoneAlsoWhenAnExceptionEndsTheStep) {
    mail_.Attach(L"a.txt", "A");
    folder_.MakeFile(L"Hello.doc", "mine");
    try {
        MailOnDisk mail(&mail_.object, command_);
        mail.MakePdf(key1, false);
        mail.SaveAttachments();
        throw std::bad_alloc();
    } catch (const std::bad_alloc&) {
        EXPECT_EQ(
            folder_.List(),
            (Listing{{L"Hello.doc", "mine"}, {key1, "folder"}, {key1 + L"\\Hello.pdf", "PDF of document of mail1"}}));
    }
}

// Each of these is in the way of the document or its ".files" folder.
TEST_F(SavedMail, DocumentThatWouldMeetSomethingIsSavedInAFolderOfItsOwn) {
    const struct {
        const wchar_t* name;
        bool isFolder;
    } rows[] = {{L"Hello.doc", false},
                {L"HELLO.DOC", false},
                {L"Hello.doc", true},
                {L"Hello.files", true},
                {L"hello.FILES", false}};
    mail_.object.On(L"SaveAs", [&](VARIANT*) {
        const fs::path path = ScriptedMail::SavedPath(mail_.object);
        fs::create_directory(fs::path(path).replace_extension(L".files"));
        WriteFileText(fs::path(path).replace_extension(L".files") / L"1.png", "picture");
        return WriteFileText(path, "document of mail1") ? S_OK : E_FAIL;
    });
    for (const auto& row : rows) {
        SCOPED_TRACE(Utf8(row.name));
        if (row.isFolder) {
            MakeFolder(std::wstring(row.name) + L"\\inner");
        } else {
            folder_.MakeFile(row.name, "mine");
        }
        const Listing before = folder_.List();
        {
            MailOnDisk mail(&mail_.object, command_);
            EXPECT_EQ(DocumentOf(mail), Path(L"temp\\Hello.doc"));
            EXPECT_TRUE(fs::exists(Path(L"temp\\Hello.files\\1.png")));
        }
        fs::remove_all(Path(key1));
        EXPECT_EQ(folder_.List(), before);
        fs::remove_all(Path(row.name));
    }
}

TEST_F(SavedMail, AttachmentThatWouldMeetSomethingIsSavedInAFolderOfItsOwn) {
    folder_.MakeFile(L"file.txt", "mine");
    MakeFolder(L"folder.txt\\inner");
    folder_.MakeFile(L"temp(1)", "mine");
    for (const wchar_t* name : {L"FILE.txt", L"folder.txt", L"temp", L"Temp(1)", L"free.txt", L"file.txt"}) {
        mail_.Attach(name, "attached " + Utf8(name));
    }
    mail_.Attach(key1, "named like the folder of the key");
    const Listing before = folder_.List();
    {
        MailOnDisk mail(&mail_.object, command_);
        DocumentOf(mail);
        EXPECT_EQ(mail.SaveAttachments(),
                  (Paths{Path(L"temp\\FILE.txt"), Path(L"temp\\folder.txt"), Path(L"temp\\temp"),
                         Path(L"temp\\Temp(1)"), Path(L"free.txt"), Path(L"temp\\file.txt"), Path(L"temp\\" + key1)}));
        EXPECT_EQ(ReadFileText(Path(L"temp\\FILE.txt")), "attached file.txt") << "two of one name are one file";
    }
    fs::remove_all(Path(key1));
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(SavedMail, DocumentAndAttachmentsShareOneFolder) {
    folder_.MakeFile(L"Hello.doc", "mine");
    folder_.MakeFile(L"a.txt", "mine");
    mail_.Attach(L"a.txt", "A");
    MailOnDisk mail(&mail_.object, command_);
    EXPECT_EQ(DocumentOf(mail), Path(L"temp\\Hello.doc"));
    EXPECT_EQ(mail.SaveAttachments(), Paths{Path(L"temp\\a.txt")});
}

TEST_F(SavedMail, AttachmentMayBeNamedLikeTheFolderBesideTheDocument) {
    mail_.object.On(L"SaveAs", [&](VARIANT*) {
        MakeFolder(L"Hello.files");
        return WriteFileText(ScriptedMail::SavedPath(mail_.object), "document") ? S_OK : E_FAIL;
    });
    mail_.Attach(L"Hello.files", "attached");
    {
        MailOnDisk mail(&mail_.object, command_);
        DocumentOf(mail);
        EXPECT_EQ(mail.SaveAttachments(), Paths{Path(L"temp\\Hello.files")});
    }
    EXPECT_EQ(folder_.List(), (Listing{{key1, "folder"}, {key1 + L"\\Hello.pdf", "PDF of document"}}));
}

TEST_F(SavedMail, FolderOfItsOwnHasAFreeName) {
    folder_.MakeFile(L"Hello.doc", "mine");
    folder_.MakeFile(L"temp", "mine");
    MakeFolder(L"temp(1)\\Hello.files");
    const Listing before = folder_.List();
    {
        MailOnDisk mail(&mail_.object, command_);
        EXPECT_EQ(DocumentOf(mail), Path(L"temp(2)\\Hello.doc"));
    }
    fs::remove_all(Path(key1));
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(SavedMail, FileThatIsMeantByItsShortNameIsSomethingToo) {
    folder_.MakeFile(L"A rather long name.txt", "mine");
    const std::wstring shortName = fs::path(ShortPath(L"A rather long name.txt")).filename();
    ASSERT_NE(shortName, L"A rather long name.txt");
    mail_.Attach(shortName, "attached");
    {
        MailOnDisk mail(&mail_.object, command_);
        EXPECT_EQ(mail.SaveAttachments(), Paths{Path(L"temp\\" + shortName)});
    }
    EXPECT_EQ(folder_.List(), (Listing{{L"A rather long name.txt", "mine"}}));
}

TEST_F(SavedMail, ReadOnlyFileOfTheUsersIsNotTouched) {
    folder_.MakeFile(L"a.txt", "mine");
    SetFileAttributesW(Path(L"a.txt").c_str(), FILE_ATTRIBUTE_READONLY);
    mail_.Attach(L"a.txt", "A");
    {
        MailOnDisk mail(&mail_.object, command_);
        EXPECT_EQ(mail.SaveAttachments(), Paths{Path(L"temp\\a.txt")});
    }
    EXPECT_EQ(folder_.List(), (Listing{{L"a.txt", "mine"}}));
    EXPECT_TRUE(GetFileAttributesW(Path(L"a.txt").c_str()) & FILE_ATTRIBUTE_READONLY);
    SetFileAttributesW(Path(L"a.txt").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(SavedMail, UsersFileIsNotTakenForOneThatWasNotWritten) {
    mail_.Attach(L"a.txt", "A").Fail(L"SaveAsFile", E_FAIL);
    mail_.object.GiveNothing(L"SaveAs");
    folder_.MakeFile(L"a.txt", "mine");
    folder_.MakeFile(L"Hello.doc", "mine");
    const Listing before = folder_.List();
    {
        MailOnDisk mail(&mail_.object, command_);
        EXPECT_EQ(mail.MakePdf(key1, false), L"");
        EXPECT_EQ(mail.SaveAttachments(), Paths{});
    }
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(SavedMail, WhatIsInUseInTheEndIsLeftToTheCommand) {
    folder_.MakeFile(L"b.txt", "mine");
    mail_.Attach(L"a.txt", "A");
    mail_.Attach(L"b.txt", "B");
    std::optional<HeldFile> held, alsoHeld;
    {
        MailOnDisk mail(&mail_.object, command_);
        EXPECT_EQ(mail.SaveAttachments(), (Paths{Path(L"a.txt"), Path(L"temp\\b.txt")}));
        held.emplace(Path(L"a.txt"), GENERIC_READ, FILE_SHARE_READ);
        alsoHeld.emplace(Path(L"temp\\b.txt"), GENERIC_READ, FILE_SHARE_READ);
    }
    EXPECT_EQ(folder_.List(),
              (Listing{{L"a.txt", "A"}, {L"b.txt", "mine"}, {L"temp", "folder"}, {L"temp\\b.txt", "B"}}));
    {
        MailOnDisk again(&mail_.object, command_);
        EXPECT_EQ(again.SaveAttachments(), (Paths{Path(L"temp(1)\\a.txt"), Path(L"temp(1)\\b.txt")}));
    }
    held.reset();
    alsoHeld.reset();
    command_.ForEachMail(&outlook_.items.object, 0, [](IDispatch*) {});
    EXPECT_EQ(folder_.List(), (Listing{{L"b.txt", "mine"}}));
}

TEST_F(SavedMail, PathThatOnlyTheFolderOfItsOwnMakesTooLongIsTooLong) {
    const std::wstring longest(258 - folder_.Path().size() - 1 - 4, L'n');
    folder_.MakeFile(longest + L".doc", "mine");
    folder_.MakeFile(longest + L".txt", "mine");
    const Listing before = folder_.List();
    mail_.object.GiveText(L"Subject", longest);
    mail_.Attach(longest + L".txt", "A");
    mail_.Attach(L"b.txt", "B");
    {
        MailOnDisk mail(&mail_.object, command_);
        EXPECT_EQ(mail.MakePdf(L"", true), L"") << "without a key the PDF's path would be short enough";
        EXPECT_EQ(mail.SaveAttachments(), Paths{Path(L"b.txt")});
    }
    EXPECT_EQ(folder_.List(), before);
    EXPECT_TRUE(command_.leftOut.Text().ends_with(L"\n\n" + longest.substr(0, 60)));
}

TEST_F(SavedMail, SubjectThatCannotBeAFilesNameIsToldToTheCommand) {
    const std::wstring tooLongForThePdf(259 - folder_.Path().size() - 1 - 4, L'n');
    for (const std::wstring& subject :
         {std::wstring(L"RE: x\\y.z"), std::wstring(L"CON"), std::wstring(300, L'x'), tooLongForThePdf}) {
        MailCommand command(state_, folder_.Path());
        mail_.object.GiveText(L"Subject", subject);
        MailOnDisk mail(&mail_.object, command);
        EXPECT_EQ(mail.MakePdf(key1, false), L"");
        const std::wstring text = command.leftOut.Text();
        EXPECT_TRUE(text.starts_with(L"1 email")) << Utf8(text);
        EXPECT_TRUE(text.ends_with(L"\n\n" + subject.substr(0, 60))) << Utf8(text);
    }
}

TEST_F(SavedMail, OtherFailuresAreNotToldToTheCommand) {
    const auto expectSilence = [&](const char* what) {
        MailOnDisk mail(&mail_.object, command_);
        EXPECT_EQ(mail.MakePdf(key1, false), L"") << what;
        EXPECT_TRUE(command_.leftOut.Text().starts_with(L"0 ")) << what;
    };
    word_.createResult = E_FAIL;
    expectSilence("Word does not start");
    mail_.object.Fail(L"SaveAs", E_FAIL);
    expectSilence("Outlook does not save it");
    mail_.object.GiveText(L"MessageClass", L"IPM.Contact");
    mail_.object.GiveText(L"Subject", L"RE: x");
    expectSilence("no mail");
    mail_.object.GiveText(L"MessageClass", L"IPM.Note");
    mail_.object.Fail(L"Subject", E_FAIL);
    expectSilence("no subject to read");
}
