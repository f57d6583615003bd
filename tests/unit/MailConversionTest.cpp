// Mails on their way to PDFs: with a scripted Outlook and Word, a recording engine and real files.
#include "src/outlook/MailConversion.h"

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

class MailConversion : public OutlookCommandTest {
protected:
    std::vector<MailRecord> Convert() { return Convert(folder_.Path()); }
    std::vector<MailRecord> Convert(const std::wstring& workingFolder) {
        MailCommand command(state_, workingFolder);
        return ConvertMailsToPdf(state_, &outlook_.items.object, command);
    }
    Paths ConvertedPaths() {
        Paths paths;
        for (const MailRecord& record : Convert()) paths.push_back(record.pdfPath);
        return paths;
    }
};

}  // namespace

TEST_F(MailConversion, GoesThroughItsStepsInOrder) {
    outlook_.AddMail(L"Hello").Attach(L"a.txt", "A");
    engine_.onCall = [&](std::string_view function) {
        if (function == "PDF_LoadDocument" || function == "PDF_Save") {
            calls_.emplace_back(function.begin(), function.end());
        }
    };
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key1 + L"\\Hello.pdf")});
    const std::wstring document = Path(L"Hello.doc");
    const Calls expected = {
        L"items.Count",
        L"items.Item(1)",
        L"mail1.EntryID",
        L"mail1.ReceivedTime",
        L"mail1.MessageClass",
        L"mail1.Subject",
        L"mail1.SaveAs(" + document + L", 4)",
        L"mail1.Subject",
        L"new Word",
        L"word.Visible = false",
        L"word.DisplayAlerts = false",
        L"word.Documents",
        L"documents.Open(" + document + L", -, -, -, -, -, -, -, -, -, -, false, -, -, -, -)",
        L"document.ExportAsFixedFormat(" + Path(key1 + L"\\Hello.pdf") +
            L", 17, false, 0, 0, -, -, -, true, true, 1, true, true, false)",
        L"word.Quit()",
        L"mail1.MessageClass",
        L"mail1.Attachments",
        L"mail1.attachments.Count",
        L"mail1.attachments.Item(1)",
        L"mail1.attachment1.FileName",
        L"mail1.attachment1.SaveAsFile(" + Path(L"a.txt") + L")",
        L"PDF_LoadDocument",
        L"PDF_Save",
    };
    EXPECT_EQ(calls_, expected);
}

TEST_F(MailConversion, LeavesThePdfAlone) {
    ScriptedMail& mail = outlook_.AddMail(L"Hello");
    mail.Attach(L"a.txt", "A");
    mail.Attach(L"b.pdf", "B");
    mail.object.On(L"SaveAs", [&](VARIANT*) {
        WriteFileText(ScriptedMail::SavedPath(mail.object), "document");
        fs::create_directories(Path(L"Hello.files\\inner"));
        WriteFileText(Path(L"Hello.files\\inner\\picture.png"), "picture");
        return S_OK;
    });
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key1 + L"\\Hello.pdf")});
    EXPECT_EQ(folder_.List(), (Listing{{key1, "folder"}, {key1 + L"\\Hello.pdf", "PDF of document"}}));
    EXPECT_EQ(Embedded(), (Paths{Path(key1 + L"\\Hello.pdf"), L"a.txt: A", L"b.pdf: B"}));
    EXPECT_EQ(engine_.calls.end(), std::find_if(engine_.calls.begin(), engine_.calls.end(), [](const auto& call) {
                  return call.starts_with(L"PDF_SetFileAttachmentFolderPath");
              }));
    EXPECT_EQ(engine_.calls[engine_.calls.size() - 2], L"PDF_Save document1 [" + Path(key1 + L"\\Hello.pdf") + L"]");
}

TEST_F(MailConversion, MailWithoutAttachmentsIsNotOpenedAgain) {
    outlook_.AddMail(L"Hello");
    EXPECT_EQ(ConvertedPaths().size(), 1U);
    EXPECT_EQ(engine_.CallCount(), 0);
}

TEST_F(MailConversion, RecordHoldsKeyPathAndReceivedTimeButNoItem) {
    outlook_.AddMail(L"One").ReceivedAt(2024, 5, 6, 7, 8, 9);
    outlook_.AddMail(L"Two");
    const std::vector<MailRecord> records = Convert();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].item, nullptr);
    EXPECT_EQ(records[0].key, key1);
    EXPECT_EQ(records[0].pdfPath, Path(key1 + L"\\One.pdf"));
    EXPECT_EQ(records[0].received.wMonth, 5);
    EXPECT_EQ(records[0].received.wSecond, 9);
    EXPECT_EQ(records[1].item, nullptr);
    EXPECT_EQ(records[1].key, key2);
}

TEST_F(MailConversion, MailWithoutAReceivedTimeHasThatOfNow) {
    outlook_.AddMail(L"One").object.Fail(L"ReceivedTime", E_FAIL);
    SYSTEMTIME before, after;
    GetLocalTime(&before);
    const std::vector<MailRecord> records = Convert();
    GetLocalTime(&after);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_TRUE(records[0].received.wYear == before.wYear || records[0].received.wYear == after.wYear);
    EXPECT_TRUE(records[0].received.wMinute == before.wMinute || records[0].received.wMinute == after.wMinute);
}

TEST_F(MailConversion, CountMustBeAThirtyTwoBitNumberAboveZero) {
    outlook_.AddMail(L"One");
    for (const VARTYPE type : {VT_I2, VT_UI4, VT_R8, VT_EMPTY}) {
        outlook_.items.object.On(L"Count", [type](VARIANT* result) {
            result->vt = static_cast<VARTYPE>(type);
            result->llVal = type == VT_R8 ? 0x3FF0000000000000 : 1;
            return S_OK;
        });
        EXPECT_EQ(ConvertedPaths(), Paths{}) << type;
    }
    for (const LONG count : {0L, -1L, LONG_MIN}) {
        outlook_.items.object.GiveNumber(L"Count", count);
        EXPECT_EQ(ConvertedPaths(), Paths{}) << count;
    }
    outlook_.items.object.Fail(L"Count", E_FAIL);
    EXPECT_EQ(ConvertedPaths(), Paths{});
    for (const std::wstring& call : calls_) EXPECT_EQ(call, L"items.Count");
}

TEST_F(MailConversion, OtherItemsGiveNoRecord) {
    outlook_.AddOther(L"IPM.Contact");
    outlook_.AddMail(L"Hello");
    outlook_.AddItem(nullptr);
    outlook_.AddOther(L"IPM.Schedule.Meeting.Request");
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key2 + L"\\Hello.pdf")});
    EXPECT_EQ(word_.asked.size(), 1U);
    EXPECT_FALSE(fs::exists(Path(key1)));
}

TEST_F(MailConversion, ReportAboutAMailIsConverted) {
    outlook_.AddOther(L"REPORT.IPM.Note.NDR");
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key1 + L"\\Other.pdf")});
}

TEST_F(MailConversion, MailsOfOneSubjectShareTheDocumentsPathOneAfterTheOther) {
    outlook_.AddMail(L"Hello");
    outlook_.AddMail(L"Hello");
    EXPECT_EQ(ConvertedPaths(), (Paths{Path(key1 + L"\\Hello.pdf"), Path(key2 + L"\\Hello.pdf")}));
    EXPECT_EQ(ReadFileText(Path(key1 + L"\\Hello.pdf")), "PDF of document of mail1");
    EXPECT_EQ(ReadFileText(Path(key2 + L"\\Hello.pdf")), "PDF of document of mail2");
    EXPECT_EQ(outlook_.Mail(1).object.invocations.back().name, L"Attachments");
    EXPECT_EQ(std::count(calls_.begin(), calls_.end(), L"mail1.SaveAs(" + Path(L"Hello.doc") + L", 4)"), 1);
    EXPECT_EQ(std::count(calls_.begin(), calls_.end(), L"mail2.SaveAs(" + Path(L"Hello.doc") + L", 4)"), 1);
    EXPECT_FALSE(fs::exists(Path(L"Hello.doc")));
}

TEST_F(MailConversion, DocumentIsGoneBeforeTheNextMailIsSaved) {
    outlook_.AddMail(L"Hello");
    ScriptedMail& next = outlook_.AddMail(L"Hello");
    bool isThere = true;
    next.object.On(L"SaveAs", [&](VARIANT*) {
        isThere = fs::exists(Path(L"Hello.doc"));
        return E_FAIL;
    });
    EXPECT_EQ(ConvertedPaths().size(), 1U);
    EXPECT_FALSE(isThere);
}

TEST_F(MailConversion, AttachmentsOfOneNameInTwoMailsDoNotMix) {
    outlook_.AddMail(L"One").Attach(L"a.txt", "first");
    outlook_.AddMail(L"Two").Attach(L"a.txt", "second");
    EXPECT_EQ(ConvertedPaths().size(), 2U);
    EXPECT_EQ(Embedded(),
              (Paths{Path(key1 + L"\\One.pdf"), L"a.txt: first", Path(key2 + L"\\Two.pdf"), L"a.txt: second"}));
    EXPECT_FALSE(fs::exists(Path(L"a.txt")));
}

TEST_F(MailConversion, TwoAttachmentsOfOneNameAreTheLastOneTwice) {
    outlook_.AddMail(L"One").Attach(L"a.txt", "first");
    outlook_.Mail(1).Attach(L"a.txt", "second");
    EXPECT_EQ(ConvertedPaths().size(), 1U);
    EXPECT_EQ(Embedded(), (Paths{Path(key1 + L"\\One.pdf"), L"a.txt: second", L"a.txt: second"}));
    EXPECT_FALSE(fs::exists(Path(L"a.txt")));
    EXPECT_FALSE(fs::exists(Path(L"a(1).txt")));
}

TEST_F(MailConversion, AttachmentMayBeNamedLikeTheDocumentOrThePdf) {
    outlook_.AddMail(L"Hello").Attach(L"Hello.doc", "attached document");
    outlook_.Mail(1).Attach(L"hello.PDF", "attached PDF");
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key1 + L"\\Hello.pdf")});
    EXPECT_EQ(Embedded(),
              (Paths{Path(key1 + L"\\Hello.pdf"), L"Hello.doc: attached document", L"hello.PDF: attached PDF"}));
    EXPECT_EQ(folder_.List(), (Listing{{key1, "folder"}, {key1 + L"\\Hello.pdf", "PDF of document of mail1"}}));
}

TEST_F(MailConversion, UsersFilesOfTheseNamesAreNotLost) {
    folder_.MakeFile(L"Hello.doc", "my document");
    folder_.MakeFile(L"a.txt", "my text");
    fs::create_directories(Path(L"Hello.files"));
    folder_.MakeFile(L"Hello.files\\mine.png", "my picture");
    const Listing mine = folder_.List();
    outlook_.AddMail(L"Hello").Attach(L"a.txt", "A");
    outlook_.Mail(1).Attach(L"A.TXT", "B");
    EXPECT_EQ(ConvertedPaths().size(), 1U);
    Listing expected = mine;
    expected[key1] = "folder";
    expected[key1 + L"\\Hello.pdf"] = "PDF of document of mail1";
    EXPECT_EQ(folder_.List(), expected);
    EXPECT_EQ(Embedded(), (Paths{Path(key1 + L"\\Hello.pdf"), L"a.txt: B", L"A.TXT: B"}));
}

TEST_F(MailConversion, UsersFilesStayAlsoWhenAStepFails) {
    folder_.MakeFile(L"Hello.doc", "my document");
    const Listing mine = folder_.List();
    ScriptedMail& mail = outlook_.AddMail(L"Hello");
    mail.object.GiveNothing(L"SaveAs");
    EXPECT_EQ(ConvertedPaths(), Paths{}) << "the user's file is not the mail's";
    EXPECT_EQ(folder_.List(), mine);
    EXPECT_TRUE(word_.asked.empty());
    mail.object.On(L"SaveAs", [](VARIANT*) -> HRESULT { throw std::bad_alloc(); });
    EXPECT_EQ(ConvertedPaths(), Paths{});
    EXPECT_EQ(folder_.List(), mine);
}

TEST_F(MailConversion, UsersFileThatIsOpenIsNotTouchedAndTheMailIsConverted) {
    folder_.MakeFile(L"Hello.doc", "my document");
    const HeldFile held(Path(L"Hello.doc"), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
    outlook_.AddMail(L"Hello");
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key1 + L"\\Hello.pdf")});
    EXPECT_EQ(ReadFileText(Path(L"Hello.doc")), "my document");
    EXPECT_TRUE(HasCall(L"mail1.SaveAs(" + Path(L"temp\\Hello.doc") + L", 4)"));
    EXPECT_FALSE(fs::exists(Path(L"temp")));
}

TEST_F(MailConversion, LeftoversOfARunThatWasEndedHinderNothingAndAreNotTouched) {
    fs::create_directories(Path(L"temp\\Hello.files"));
    fs::create_directories(Path(L"Hello.files"));
    folder_.MakeFile(L"temp\\Hello.files\\1.png", "left");
    folder_.MakeFile(L"temp\\Hello.doc", "left");
    folder_.MakeFile(L"Hello.files\\1.png", "left");
    folder_.MakeFile(L"Hello.doc", "left");
    folder_.MakeFile(L"a.txt", "left");
    Listing expected = folder_.List();
    outlook_.AddMail(L"Hello").Attach(L"a.txt", "A");
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key1 + L"\\Hello.pdf")});
    EXPECT_TRUE(HasCall(L"mail1.SaveAs(" + Path(L"temp(1)\\Hello.doc") + L", 4)"));
    EXPECT_EQ(Embedded(), (Paths{Path(key1 + L"\\Hello.pdf"), L"a.txt: A"}));
    expected[key1] = "folder";
    expected[key1 + L"\\Hello.pdf"] = "PDF of document of mail1";
    EXPECT_EQ(folder_.List(), expected);
}

TEST_F(MailConversion, WhatIsStillOpenInTheEndIsTriedAgainOnceAfterTheLastMail) {
    ScriptedDispatch& attachment = outlook_.AddMail(L"One").Attach(L"a.txt", "A");
    ScriptedMail& other = outlook_.AddMail(L"Two");
    std::optional<HeldFile> held, heldOnAndOn;
    attachment.On(L"SaveAsFile", [&](VARIANT*) {
        WriteFileText(ScriptedMail::SavedPath(attachment), "A");
        held.emplace(Path(L"a.txt"), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        heldOnAndOn.emplace(Path(L"One.doc"), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        return S_OK;
    });
    bool wasThere = false;
    other.object.On(L"SaveAs", [&](VARIANT*) {
        wasThere = fs::exists(Path(L"a.txt"));
        held.reset();
        return WriteFileText(ScriptedMail::SavedPath(other.object), "document") ? S_OK : E_FAIL;
    });
    EXPECT_EQ(ConvertedPaths().size(), 2U);
    EXPECT_TRUE(wasThere);
    EXPECT_FALSE(fs::exists(Path(L"a.txt")));
    EXPECT_TRUE(fs::exists(Path(L"One.doc")));
    heldOnAndOn.reset();
    state_.conversionCache.clear();
    EXPECT_EQ(ConvertedPaths().size(), 2U) << "a leftover hinders nothing";
    EXPECT_TRUE(fs::exists(Path(L"One.doc"))) << "nor is it cared for";
}

TEST_F(MailConversion, FailedExportLeavesTheMailOutAndNothingBehind) {
    outlook_.AddMail(L"One").Attach(L"a.txt", "A");
    outlook_.AddMail(L"Two");
    ScriptedDispatch& first = outlook_.Mail(1).object;
    first.On(L"SaveAs", [&](VARIANT*) {
        WriteFileText(ScriptedMail::SavedPath(first), "document");
        fs::create_directories(Path(L"One.files"));
        word_.documents.Fail(L"Open", DISP_E_EXCEPTION);
        return S_OK;
    });
    outlook_.Mail(2).object.On(L"SaveAs", [&](VARIANT*) {
        word_.documents.GiveObject(L"Open", &word_.document);
        WriteFileText(ScriptedMail::SavedPath(outlook_.Mail(2).object), "document");
        return S_OK;
    });
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key2 + L"\\Two.pdf")});
    EXPECT_EQ(folder_.List(), (Listing{{key1, "folder"}, {key2, "folder"}, {key2 + L"\\Two.pdf", "PDF of document"}}));
    EXPECT_EQ(std::count(calls_.begin(), calls_.end(), L"word.Quit()"), 2);
    EXPECT_FALSE(HasCall(L"mail1.Attachments"));
    EXPECT_EQ(state_.conversionCache, (std::map<std::wstring, std::wstring>{{key2, Path(key2 + L"\\Two.pdf")}}));
}

TEST_F(MailConversion, ExportThatSucceedsCountsAlsoWhereItWroteNothing) {
    outlook_.AddMail(L"Hello").Attach(L"a.txt", "A");
    word_.document.GiveNothing(L"ExportAsFixedFormat");
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key1 + L"\\Hello.pdf")});
    EXPECT_EQ(state_.conversionCache.count(key1), 1U);
    EXPECT_EQ(folder_.List(), (Listing{{key1, "folder"}}));
}

TEST_F(MailConversion, FailedEmbeddingKeepsThePdfAndDeletesTheAttachments) {
    outlook_.AddMail(L"Hello").Attach(L"a.txt", "A");
    engine_.notPdfs = {Path(key1 + L"\\Hello.pdf")};
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key1 + L"\\Hello.pdf")});
    EXPECT_EQ(folder_.List(), (Listing{{key1, "folder"}, {key1 + L"\\Hello.pdf", "PDF of document of mail1"}}));
    EXPECT_EQ(state_.conversionCache.count(key1), 1U);
}

TEST_F(MailConversion, ExceptionLeavesNeitherFilesNorAWordBehind) {
    ScriptedMail& mail = outlook_.AddMail(L"Hello");
    mail.Attach(L"a.txt", "A");
    mail.Attach(L"b.txt", "B").On(L"FileName", [](VARIANT*) -> HRESULT { throw std::bad_alloc(); });
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key1 + L"\\Hello.pdf")}) << "without that attachment";
    EXPECT_EQ(Embedded(), (Paths{Path(key1 + L"\\Hello.pdf"), L"a.txt: A"}));
    EXPECT_EQ(folder_.List(), (Listing{{key1, "folder"}, {key1 + L"\\Hello.pdf", "PDF of document of mail1"}}));
    state_.conversionCache.clear();
    fs::remove(Path(key1 + L"\\Hello.pdf"));
    word_.document.On(L"ExportAsFixedFormat", [](VARIANT*) -> HRESULT { throw std::bad_alloc(); });
    EXPECT_EQ(ConvertedPaths(), Paths{});
    EXPECT_EQ(folder_.List(), (Listing{{key1, "folder"}}));
    EXPECT_TRUE(state_.conversionCache.empty());
    EXPECT_EQ(std::count(calls_.begin(), calls_.end(), L"word.Quit()"), 2);
}

TEST_F(MailConversion, HostileSubjectIsLeftOutAndTheNextMailFollows) {
    outlook_.AddMail(L"..\\..\\evil");
    outlook_.AddMail(L"RE: x");
    outlook_.AddMail(L"Hello");
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key3 + L"\\Hello.pdf")});
    EXPECT_EQ(folder_.List(), (Listing{{key3, "folder"}, {key3 + L"\\Hello.pdf", "PDF of document of mail3"}}));
    EXPECT_EQ(word_.asked.size(), 1U);
}

TEST_F(MailConversion, SubjectThatChangesBetweenItsReadsIsCheckedEachTime) {
    ScriptedMail& mail = outlook_.AddMail(L"Hello");
    mail.object.On(L"Subject", [&mail](VARIANT* result) {
        mail.object.GiveText(L"Subject", L"..\\..\\evil");
        return GiveText(result, L"Hello");
    });
    EXPECT_EQ(ConvertedPaths(), Paths{});
    EXPECT_EQ(folder_.List(), Listing{});
}

TEST_F(MailConversion, HostileAttachmentIsLeftOutAndTheNextFollows) {
    outlook_.AddMail(L"Hello").Attach(L"..\\evil.txt", "A");
    outlook_.Mail(1).Attach(L"", "B");
    outlook_.Mail(1).Attach(L"good.txt", "");
    EXPECT_EQ(ConvertedPaths().size(), 1U);
    EXPECT_EQ(Embedded(), (Paths{Path(key1 + L"\\Hello.pdf"), L"good.txt: "}));
    EXPECT_EQ(folder_.List().size(), 2U);
}

TEST_F(MailConversion, EmptySubjectMakesAMailPdf) {
    outlook_.AddMail(L"");
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key1 + L"\\mail.pdf")});
}

TEST_F(MailConversion, LongSubjectThatHasRoomForItsDocumentButNotForItsPdfIsLeftOut) {
    outlook_.AddMail(std::wstring(259 - folder_.Path().size() - 1 - 4, L'n'));
    EXPECT_EQ(ConvertedPaths(), Paths{});
    EXPECT_EQ(folder_.List(), Listing{});
    EXPECT_TRUE(word_.asked.empty());
}

TEST_F(MailConversion, MissingWorkingFolderLeavesAllMailsOut) {
    outlook_.AddMail(L"Hello");
    EXPECT_TRUE(Convert(Path(L"missing")).empty());
    EXPECT_EQ(folder_.List(), Listing{});
    EXPECT_TRUE(word_.asked.empty());
}

TEST_F(MailConversion, SecondRunTakesThePdfFromTheCache) {
    outlook_.AddMail(L"Hello").Attach(L"a.txt", "A");
    const Paths first = ConvertedPaths();
    EXPECT_EQ(state_.conversionCache, (std::map<std::wstring, std::wstring>{{key1, Path(key1 + L"\\Hello.pdf")}}));
    calls_.clear();
    engine_.Restart();
    const std::vector<MailRecord> second = Convert();
    EXPECT_EQ(calls_, (Calls{L"items.Count", L"items.Item(1)", L"mail1.EntryID", L"mail1.ReceivedTime"}));
    EXPECT_EQ(engine_.CallCount(), 0);
    ASSERT_EQ(second.size(), 1U);
    EXPECT_EQ(second[0].item, nullptr);
    EXPECT_EQ(second[0].key, key1);
    EXPECT_EQ(second[0].pdfPath, first.at(0));
    EXPECT_EQ(second[0].received.wYear, 2024);
}

TEST_F(MailConversion, OnePdfOfAMailThatStandsTwiceInTheCollection) {
    outlook_.AddMail(L"Hello");
    outlook_.AddItem(&outlook_.Mail(1).object);
    EXPECT_EQ(ConvertedPaths(), (Paths{Path(key1 + L"\\Hello.pdf"), Path(key1 + L"\\Hello.pdf")}));
    EXPECT_EQ(word_.asked.size(), 1U);
}

TEST_F(MailConversion, MailWhosePdfWasDeletedIsConvertedAgain) {
    outlook_.AddMail(L"Hello").Attach(L"a.txt", "A");
    ConvertedPaths();
    fs::remove(Path(key1 + L"\\Hello.pdf"));
    outlook_.Mail(1).object.GiveText(L"Subject", L"Renamed");
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key1 + L"\\Renamed.pdf")});
    EXPECT_EQ(word_.asked.size(), 2U);
    EXPECT_EQ(state_.conversionCache.at(key1), Path(key1 + L"\\Renamed.pdf"));
    EXPECT_EQ(Embedded().size(), 4U);
}

TEST_F(MailConversion, PdfOfAnEarlierSessionIsOverwritten) {
    fs::create_directories(Path(key1));
    folder_.MakeFile(key1 + L"\\Hello.pdf", "earlier");
    outlook_.AddMail(L"Hello");
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key1 + L"\\Hello.pdf")});
    EXPECT_EQ(folder_.List(), (Listing{{key1, "folder"}, {key1 + L"\\Hello.pdf", "PDF of document of mail1"}}));
}

TEST_F(MailConversion, CacheMayChangeDuringAnAutomationCall) {
    ScriptedMail& mail = outlook_.AddMail(L"Hello");
    ConvertedPaths();
    mail.object.On(L"ReceivedTime", [&](VARIANT*) {
        state_.conversionCache.clear();
        return E_FAIL;
    });
    EXPECT_EQ(ConvertedPaths(), Paths{Path(key1 + L"\\Hello.pdf")});
    EXPECT_EQ(word_.asked.size(), 2U);
    EXPECT_EQ(state_.conversionCache.size(), 1U);
}

TEST_F(MailConversion, CacheMayChangeWhileAMailIsConverted) {
    outlook_.AddMail(L"Hello").Attach(L"a.txt", "A");
    outlook_.AddMail(L"Hello again");
    const auto change = [this] {
        state_.conversionCache.clear();
        for (int i = 0; i < 100; ++i) state_.conversionCache[std::to_wstring(i)] = L"x";
    };
    word_.documents.On(L"Open", [&](VARIANT* result) {
        change();
        result->vt = VT_DISPATCH;
        result->pdispVal = &word_.document;
        word_.document.AddRef();
        return S_OK;
    });
    outlook_.Mail(1).object.On(L"Attachments", [&](VARIANT*) {
        change();
        return E_FAIL;
    });
    EXPECT_EQ(ConvertedPaths(), (Paths{Path(key1 + L"\\Hello.pdf"), Path(key2 + L"\\Hello again.pdf")}));
    EXPECT_EQ(state_.conversionCache.size(), 101U) << "what was cleared last, and the second mail";
}

TEST_F(MailConversion, MailsWithoutADistinctKeyAreNeverCachedAndKeepTheirOwnPdfs) {
    outlook_.AddMail(L"Hello", L"");
    outlook_.AddMail(L"Hello", L"");
    outlook_.AddMail(L"Hello").object.Fail(L"EntryID", E_FAIL);
    outlook_.AddMail(L"Hello").object.Fail(L"EntryID", E_FAIL);
    state_.conversionCache = {{L"", Path(L"somebody's.pdf")}, {keyOfEmpty, Path(L"somebody's.pdf")}};
    folder_.MakeFile(L"somebody's.pdf", "another mail's");
    const auto cache = state_.conversionCache;
    EXPECT_EQ(ConvertedPaths(), (Paths{Path(keyOfEmpty + L"\\Hello.pdf"), Path(keyOfEmpty + L"\\Hello(1).pdf"),
                                       Path(L"Hello.pdf"), Path(L"Hello(1).pdf")}));
    EXPECT_EQ(state_.conversionCache, cache);
    EXPECT_EQ(ReadFileText(Path(keyOfEmpty + L"\\Hello(1).pdf")), "PDF of document of mail2");
    EXPECT_EQ(ReadFileText(Path(L"Hello.pdf")), "PDF of document of mail3");
    EXPECT_EQ(ReadFileText(Path(L"Hello(1).pdf")), "PDF of document of mail4");
}

TEST_F(MailConversion, AttachmentThatIsNamedLikeThePdfBesideItIsSavedElsewhere) {
    // Without a key the PDF is where the attachments are saved.
    outlook_.AddMail(L"Hello").Attach(L"Hello.pdf", "attached PDF");
    outlook_.Mail(1).Attach(L"Hello(1).pdf", "another");
    outlook_.Mail(1).object.Fail(L"EntryID", E_FAIL);
    EXPECT_EQ(ConvertedPaths(), Paths{Path(L"Hello.pdf")});
    EXPECT_EQ(Embedded(), (Paths{Path(L"Hello.pdf"), L"Hello.pdf: attached PDF", L"Hello(1).pdf: another"}));
    EXPECT_EQ(folder_.List(), (Listing{{L"Hello.pdf", "PDF of document of mail1"}}));
}
