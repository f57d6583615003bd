// What is saved of a mail's attachments, and where.
#include "src/outlook/Attachments.h"

#include <gtest/gtest.h>

#include <new>

#include "standins/common/Text.h"
#include "tests/support/Files.h"
#include "tests/support/ScriptedOutlook.h"

namespace {

using Paths = std::vector<std::wstring>;
using Listing = std::map<std::wstring, std::string>;

constexpr wchar_t key[] = L"da36d6e29c016568";  // of the entry id "entry1"

class MailAttachments : public testing::Test {
protected:
    std::wstring Path(const std::wstring& name) const { return folder_.Path(name); }
    std::wstring KeyPath(const std::wstring& name) const { return folder_.Path(std::wstring(key) + L"\\" + name); }

    Calls calls_;
    const TemporaryFolder folder_;
    ScriptedMail mail_{L"mail", calls_, L"Hello", L"entry1"};
};

const std::vector<std::wstring> hostileNames = {
    L"..\\..\\evil.pdf",
    L"..\\evil.pdf",
    L"a/b.pdf",
    L"C:\\evil.pdf",
    L"x:y.pdf",
    L"a.pdf:stream.pdf",
    L"*.pdf",
    L"?.pdf",
    L"\"a\".pdf",
    L"<a>.pdf",
    L"a|b.pdf",
    L"a\tb.pdf",
    L"CON.pdf",
    L"nul.pdf",
    L"COM1.pdf",
    L"LPT\x00B9.pdf",
    L".",
    L"..",
    L"",
    L"a.pdf.",
    L"a.pdf ",
    L"\\\\server\\share\\a.pdf",
    std::wstring(L"a\0.pdf", 6),
};

}  // namespace

TEST_F(MailAttachments, PdfsAreSavedIntoASubfolderOfTheMailsKey) {
    mail_.Attach(L"a.pdf", "A");
    mail_.Attach(L"b.PDF", "B");
    mail_.Attach(L"c.Pdf", "C");
    mail_.Attach(L"d.docx", "D");
    mail_.Attach(L"pdf", "E");
    mail_.Attach(L".pdf", "F");
    mail_.Attach(L"g.pdf.exe", "G");
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), true),
              (Paths{KeyPath(L"a.pdf"), KeyPath(L"b.PDF"), KeyPath(L".pdf")}));
    EXPECT_EQ(folder_.List(), (Listing{{key, "folder"},
                                       {std::wstring(key) + L"\\a.pdf", "A"},
                                       {std::wstring(key) + L"\\b.PDF", "B"},
                                       {std::wstring(key) + L"\\.pdf", "F"}}));
}

TEST_F(MailAttachments, AllAreSavedIntoTheFolderItselfWithoutTheFilter) {
    mail_.Attach(L"a.pdf", "A");
    mail_.Attach(L"c.Pdf", "C");
    mail_.Attach(L"d.docx", "D");
    mail_.Attach(L"readme", "");
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), false),
              (Paths{Path(L"a.pdf"), Path(L"c.Pdf"), Path(L"d.docx"), Path(L"readme")}));
    EXPECT_EQ(folder_.List(), (Listing{{L"a.pdf", "A"}, {L"c.Pdf", "C"}, {L"d.docx", "D"}, {L"readme", ""}}));
}

TEST_F(MailAttachments, AreReachedInTheirOrderAndSavedByAMethodWithOneText) {
    mail_.Attach(L"a.pdf", "A");
    mail_.Attach(L"b.txt", "B");
    SaveMailAttachments(&mail_.object, folder_.Path(), false);
    EXPECT_EQ(calls_, (Calls{L"mail.MessageClass", L"mail.Attachments", L"mail.attachments.Count",
                             L"mail.attachments.Item(1)", L"mail.attachment1.FileName",
                             L"mail.attachment1.SaveAsFile(" + Path(L"a.pdf") + L")", L"mail.attachments.Item(2)",
                             L"mail.attachment2.FileName", L"mail.attachment2.SaveAsFile(" + Path(L"b.txt") + L")"}));
    calls_.clear();
    SaveMailAttachments(&mail_.object, folder_.Path(), true);
    EXPECT_EQ(calls_, (Calls{L"mail.MessageClass", L"mail.Attachments", L"mail.attachments.Count",
                             L"mail.attachments.Item(1)", L"mail.EntryID", L"mail.attachment1.FileName",
                             L"mail.attachment1.SaveAsFile(" + KeyPath(L"a.pdf") + L")", L"mail.attachments.Item(2)",
                             L"mail.attachment2.FileName"}));
}

TEST_F(MailAttachments, ItemThatIsNoMailIsAskedNothingMore) {
    mail_.Attach(L"a.pdf", "A");
    for (const wchar_t* other : {L"IPM.Appointment", L"IPM.Contact", L"IPM.Task", L"IPM.Schedule.Meeting.Request"}) {
        mail_.object.GiveText(L"MessageClass", other);
        EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), true), Paths{});
        EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), false), Paths{});
    }
    for (const std::wstring& call : calls_) EXPECT_EQ(call, L"mail.MessageClass");
    EXPECT_EQ(SaveMailAttachments(nullptr, folder_.Path(), true), Paths{});
    EXPECT_EQ(folder_.List(), Listing{});
}

TEST_F(MailAttachments, ReportAboutAMailIsAMail) {
    mail_.object.GiveText(L"MessageClass", L"REPORT.IPM.Note.NDR");
    mail_.Attach(L"a.pdf", "A");
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), true), Paths{KeyPath(L"a.pdf")});
}

TEST_F(MailAttachments, CollectionAndItsCountMustBeOfTheirTypes) {
    mail_.Attach(L"a.pdf", "A");
    for (const VARTYPE type : {VT_I2, VT_UI4, VT_R8, VT_EMPTY}) {
        mail_.attachments.object.On(L"Count", [type](VARIANT* result) {
            result->vt = static_cast<VARTYPE>(type);
            result->llVal = type == VT_R8 ? 0x3FF0000000000000 : 1;
            return S_OK;
        });
        EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), true), Paths{}) << type;
    }
    mail_.attachments.object.GiveNumber(L"Count", 0);
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), true), Paths{});
    EXPECT_TRUE(mail_.attachments.items.size() == 1 && calls_.back() == L"mail.attachments.Count");
    mail_.object.GiveObject(L"Attachments", nullptr);
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), true), Paths{});
    mail_.object.GiveNumber(L"Attachments", 1);
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), true), Paths{});
    mail_.object.Fail(L"Attachments", E_FAIL);
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), true), Paths{});
    EXPECT_EQ(folder_.List(), Listing{});
}

TEST_F(MailAttachments, OneThatIsNoObjectIsSkipped) {
    mail_.Attach(L"a.pdf", "A");
    mail_.attachments.items.push_back(nullptr);
    mail_.Attach(L"c.pdf", "C");
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), false), (Paths{Path(L"a.pdf"), Path(L"c.pdf")}));
}

TEST_F(MailAttachments, OneWithoutAReadableNameIsSkipped) {
    ScriptedDispatch& attachment = mail_.Attach(L"a.pdf", "A");
    attachment.Fail(L"FileName", E_FAIL);
    EXPECT_EQ(SaveAttachment(&attachment, folder_.Path(), false), L"");
    attachment.GiveType(L"FileName", VT_BSTR);
    EXPECT_EQ(SaveAttachment(&attachment, folder_.Path(), false), L"");
    attachment.GiveNumber(L"FileName", 1);
    EXPECT_EQ(SaveAttachment(&attachment, folder_.Path(), false), L"");
    EXPECT_EQ(SaveAttachment(nullptr, folder_.Path(), false), L"");
    EXPECT_EQ(folder_.List(), Listing{});
}

TEST_F(MailAttachments, ResultOfTheSaveIsNotLookedAtOnlyTheFile) {
    ScriptedDispatch& failing = mail_.Attach(L"a.pdf", "A");
    failing.On(L"SaveAsFile", [&](VARIANT*) {
        WriteFileText(ScriptedMail::SavedPath(failing), "half");
        return DISP_E_EXCEPTION;
    });
    EXPECT_EQ(SaveAttachment(&failing, folder_.Path(), false), Path(L"a.pdf"));
    ScriptedDispatch& idle = mail_.Attach(L"b.pdf", "B");
    idle.GiveNothing(L"SaveAsFile");
    EXPECT_EQ(SaveAttachment(&idle, folder_.Path(), false), L"");
    EXPECT_EQ(folder_.List(), (Listing{{L"a.pdf", "half"}}));
}

TEST_F(MailAttachments, FileOfThatNameIsOverwritten) {
    mail_.Attach(L"a.pdf", "new");
    folder_.MakeFile(L"a.pdf", "old");
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), false), Paths{Path(L"a.pdf")});
    EXPECT_EQ(folder_.List(), (Listing{{L"a.pdf", "new"}}));
}

TEST_F(MailAttachments, TwoOfOneNameAreOneFileThatIsListedTwice) {
    mail_.Attach(L"a.pdf", "first");
    mail_.Attach(L"a.pdf", "second");
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), true), (Paths{KeyPath(L"a.pdf"), KeyPath(L"a.pdf")}));
    EXPECT_EQ(ReadFileText(KeyPath(L"a.pdf")), "second");
}

TEST_F(MailAttachments, MailWithoutAKeyHasItsPdfsInTheFolderItself) {
    mail_.object.Fail(L"EntryID", E_FAIL);
    mail_.Attach(L"a.pdf", "A");
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), true), Paths{folder_.Path() + L"\\\\a.pdf"});
    EXPECT_EQ(folder_.List(), (Listing{{L"a.pdf", "A"}}));
}

TEST_F(MailAttachments, NameThatNoFileCanHaveIsNeverSaved) {
    for (const std::wstring& name : hostileNames) mail_.Attach(name, "evil");
    mail_.Attach(L"good.pdf", "good");
    for (const bool pdfOnly : {true, false}) {
        calls_.clear();
        EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), pdfOnly),
                  Paths{pdfOnly ? KeyPath(L"good.pdf") : Path(L"good.pdf")});
        for (const std::wstring& call : calls_) {
            EXPECT_TRUE(call.find(L"SaveAsFile") == std::wstring::npos || call.find(L"good") != std::wstring::npos)
                << Utf8(call);
        }
    }
    EXPECT_EQ(folder_.List(),
              (Listing{{key, "folder"}, {std::wstring(key) + L"\\good.pdf", "good"}, {L"good.pdf", "good"}}));
}

TEST_F(MailAttachments, OddButPlainNamesAreKeptAsTheyStand) {
    Paths expected;
    for (const std::wstring name :
         {L"\x202E"
          L"fdp.pdf",
          L"\xD83D\xDE00.pdf", L" a.pdf", L"a..pdf", L"\x65E5.pdf", L"Portfolio.pdf", L"%TEMP%.pdf"}) {
        mail_.Attach(name, "A");
        expected.push_back(Path(name));
    }
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), false), expected);
}

TEST_F(MailAttachments, PathOfTwoHundredSixtyCharactersIsNotSaved) {
    const size_t room = 259 - folder_.Path().size() - 1 - 4;
    const std::wstring longest = std::wstring(room, L'n') + L".txt";
    mail_.Attach(longest, "A");
    mail_.Attach(L"n" + longest, "B");
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), false), Paths{Path(longest)});
    EXPECT_EQ(Path(longest).size(), 259U);
    EXPECT_TRUE(mail_.attachments.items.size() == 2 && calls_.back() == L"mail.attachment2.FileName");
    // The folder of the key counts.
    const std::wstring pdf = std::wstring(room, L'n') + L".pdf";
    EXPECT_EQ(SaveAttachment(&mail_.Attach(pdf, "C"), Path(key), true), L"");
    const std::wstring longestPdf = std::wstring(room - std::size(key), L'n') + L".pdf";
    mail_.Attach(longestPdf, "D");
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), true), Paths{KeyPath(longestPdf)});
    EXPECT_EQ(KeyPath(longestPdf).size(), 259U);
}

TEST_F(MailAttachments, MissingFolderGivesNone) {
    mail_.Attach(L"a.txt", "A");
    EXPECT_EQ(SaveMailAttachments(&mail_.object, Path(L"missing"), false), Paths{});
    EXPECT_EQ(folder_.List(), Listing{});
}

TEST_F(MailAttachments, EachIsSavedWhereItsNameIsToldToGo) {
    mail_.Attach(L"a.txt", "A");
    mail_.Attach(L"..\\evil.txt", "B");
    mail_.Attach(L"b.txt", "C");
    mail_.Attach(L"c.txt", "D");
    Paths asked;
    const PathForName pathForName = [&](const std::wstring& name) {
        asked.push_back(name);
        return name == L"b.txt" ? std::wstring() : Path(L"my " + name);
    };
    EXPECT_EQ(SaveMailAttachments(&mail_.object, pathForName), (Paths{Path(L"my a.txt"), Path(L"my c.txt")}));
    EXPECT_EQ(asked, (Paths{L"a.txt", L"b.txt", L"c.txt"}));
    EXPECT_EQ(folder_.List(), (Listing{{L"my a.txt", "A"}, {L"my c.txt", "D"}}));
}

TEST_F(MailAttachments, ExceptionLeavesThatOneOut) {
    mail_.Attach(L"a.txt", "A").On(L"SaveAsFile", [](VARIANT*) -> HRESULT { throw std::bad_alloc(); });
    mail_.Attach(L"b.txt", "B");
    EXPECT_EQ(SaveMailAttachments(&mail_.object, folder_.Path(), false), Paths{Path(L"b.txt")});
}
