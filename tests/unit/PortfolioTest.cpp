// A portfolio of mails, with real files, a companion that makes the empty one, and a recording engine that notes in the
// portfolio what was embedded.
#include "src/outlook/Portfolio.h"

#include <filesystem>
#include <new>

#include "tests/support/OutlookCommandTest.h"
#include "tests/support/Sharing.h"
#include "tests/support/TestLanguage.h"

namespace {

namespace fs = std::filesystem;

class MailPortfolio : public OutlookCommandTest {
protected:
    MailPortfolio() {
        companion_.MakePortfolios(L"portfolio");
        engine_.onCall = [this](std::string_view function) {
            if (function != "PDF_Save") return;
            const std::wstring opened =
                InBrackets(*std::find_if(engine_.calls.rbegin(), engine_.calls.rend(), [](const std::wstring& call) {
                    return call.starts_with(L"PDF_LoadDocument");
                }));
            openedForSaving_.push_back(opened);
            const bool fails = failingSaves_ > 0 && failingSaves_-- > 0;
            if (fails) engine_.failingCall = engine_.CallCount();
            WriteFileText(opened, fails ? "half a file" : ReadFileText(opened) + "+");
        };
    }

    bool Create() { return CreatePortfolioFromSelection(state_, &outlook_.application, folder_.Path()); }
    std::wstring Quoted(const std::wstring& name) const { return L"\"" + folder_.Path(name) + L"\" "; }
    std::wstring Command(const std::wstring& name) const {
        return L" \"" + folder_.Path(name) + L" ZAVO_Q1JFQVRFX0VNUFRZX1BPUlRGT0xJTw\"";
    }
    static std::wstring SafetyCopy(const std::wstring& key) { return L"Portfolio_" + key + L".pdf"; }

    const CompanionProbe companion_;
    Paths openedForSaving_;
    int failingSaves_ = 0;  // the next ones, which leave the file half written
};

void ExpectMessage(const DialogRobot& robot) {
    ExpectOneWarning(robot, L"There are no emails that can be created as PDFs");
}

}  // namespace

TEST_F(MailPortfolio, HoldsEachMailsPdfAndAttachmentsInTheOrderOfTheSelection) {
    outlook_.AddMail(L"One").Attach(L"a.txt", "A");
    outlook_.Mail(1).Attach(L"b.bin", "");
    outlook_.AddOther(L"IPM.Appointment");
    outlook_.AddMail(L"Three").ReceivedAt(2001, 1, 1);
    EXPECT_TRUE(Create());
    EXPECT_EQ(Embedded(), (Paths{Path(L"Portfolio.pdf"), L"One.pdf: PDF of document of mail1", L"a.txt: A", L"b.bin: ",
                                 Path(L"Portfolio.pdf"), L"Three.pdf: PDF of document of mail3"}));
    EXPECT_EQ(companion_.WaitForStarts(2), (Paths{Command(L"Portfolio.pdf"), L" " + Quoted(L"Portfolio.pdf")}));
    EXPECT_EQ(folder_.List(), (Listing{{L"Portfolio.pdf", "portfolio++"},
                                       {key1, "folder"},
                                       {key1 + L"\\One.pdf", "PDF of document of mail1"},
                                       {key3, "folder"},
                                       {key3 + L"\\Three.pdf", "PDF of document of mail3"}}));
}

TEST_F(MailPortfolio, FilesEveryEntryInTheRootFolder) {
    outlook_.AddMail(L"One").Attach(L"a.txt", "A");
    EXPECT_TRUE(Create());
    for (const wchar_t* attachment : {L"attachment1", L"attachment2"}) {
        const std::wstring call = std::wstring(L"PDF_SetFileAttachmentFolderPath document1 ") + attachment + L" [/]";
        EXPECT_EQ(std::count(engine_.calls.begin(), engine_.calls.end(), call), 1);
    }
    EXPECT_EQ(engine_.WrongHandles(), 0);
}

TEST_F(MailPortfolio, GoesThroughItsStepsInOrder) {
    ScriptedMail& mail = outlook_.AddMail(L"Hello");
    ScriptedDispatch& attachment = mail.Attach(L"a.txt", "A");
    const auto noteFiles = [&](const std::wstring& when) {
        for (const wchar_t* name : {L"Portfolio.pdf", L"Hello.doc"}) {
            if (fs::exists(Path(name))) calls_.push_back(when + L" " + name);
        }
        if (fs::exists(Path(SafetyCopy(key1)))) {
            EXPECT_EQ(ReadFileText(Path(SafetyCopy(key1))), "portfolio");
            calls_.push_back(when + L" safety copy");
        }
    };
    mail.object.On(L"SaveAs", [&](VARIANT*) {
        noteFiles(L"saving:");
        WriteFileText(ScriptedMail::SavedPath(mail.object), "document");
        return S_OK;
    });
    attachment.On(L"SaveAsFile", [&](VARIANT*) {
        noteFiles(L"attaching:");
        WriteFileText(ScriptedMail::SavedPath(attachment), "A");
        return S_OK;
    });
    EXPECT_TRUE(Create());
    const Calls expected = {
        L"application.ActiveExplorer",
        L"explorer.Selection",
        L"selection.Count",
        L"selection.Item(1)",
        L"mail1.EntryID",
        L"mail1.MessageClass",
        L"mail1.Subject",
        L"mail1.SaveAs(" + Path(L"Hello.doc") + L", 4)",
        L"saving: Portfolio.pdf",
        L"mail1.Subject",
        L"new Word",
        L"word.Visible = false",
        L"word.DisplayAlerts = false",
        L"word.Documents",
        L"documents.Open(" + Path(L"Hello.doc") + L", -, -, -, -, -, -, -, -, -, -, false, -, -, -, -)",
        L"document.ExportAsFixedFormat(" + Path(key1 + L"\\Hello.pdf") +
            L", 17, false, 0, 0, -, -, -, true, true, 1, true, true, false)",
        L"word.Quit()",
        L"mail1.MessageClass",
        L"mail1.Attachments",
        L"mail1.attachments.Count",
        L"mail1.attachments.Item(1)",
        L"mail1.attachment1.FileName",
        L"mail1.attachment1.SaveAsFile(" + Path(L"a.txt") + L")",
        L"attaching: Portfolio.pdf",
        L"attaching: Hello.doc",
        L"attaching: safety copy",
    };
    EXPECT_EQ(calls_, expected);
}

TEST_F(MailPortfolio, TwoRunsMakeTwoPortfoliosAndPdfs) {
    outlook_.AddMail(L"Hello");
    EXPECT_TRUE(Create());
    EXPECT_EQ(companion_.WaitForStarts(2).size(), 2U);
    EXPECT_TRUE(Create());
    EXPECT_EQ(openedForSaving_, (Paths{Path(L"Portfolio.pdf"), Path(L"Portfolio(1).pdf")}));
    EXPECT_EQ(folder_.List(), (Listing{{L"Portfolio.pdf", "portfolio+"},
                                       {L"Portfolio(1).pdf", "portfolio+"},
                                       {key1, "folder"},
                                       {key1 + L"\\Hello.pdf", "PDF of document of mail1"},
                                       {key1 + L"\\Hello(1).pdf", "PDF of document of mail1"}}));
    EXPECT_EQ(companion_.WaitForStarts(4).size(), 4U);
}

TEST_F(MailPortfolio, NeitherReadsNorFillsTheCache) {
    outlook_.AddMail(L"Hello");
    folder_.MakeFile(L"cached.pdf", "cached");
    state_.conversionCache = {{key1, Path(L"cached.pdf")}};
    const auto cache = state_.conversionCache;
    outlook_.AddMail(L"Other");
    EXPECT_TRUE(Create());
    EXPECT_EQ(word_.asked.size(), 2U);
    EXPECT_EQ(state_.conversionCache, cache);
}

TEST_F(MailPortfolio, EmptySelectionIsSilentAndStartsNoCompanion) {
    const DialogRobot robot({});
    EXPECT_FALSE(Create());
    outlook_.AddMail(L"Hello");
    outlook_.selection.object.GiveNumber(L"Count", -1);
    EXPECT_FALSE(Create());
    outlook_.selection.object.On(L"Count", [](VARIANT* result) {
        result->vt = VT_I2;
        result->iVal = 1;
        return S_OK;
    });
    EXPECT_FALSE(Create());
    EXPECT_TRUE(robot.Seen().empty());
    EXPECT_EQ(companion_.CommandLine(), L"") << "which would have been waited for";
    EXPECT_EQ(folder_.List(), Listing{});
}

TEST_F(MailPortfolio, CommandEndsSilentlyWhereOutlookDoesNotGiveTheItems) {
    const DialogRobot robot({});
    EXPECT_FALSE(CreatePortfolioFromSelection(state_, nullptr, folder_.Path()));
    outlook_.explorer.GiveNumber(L"Selection", 1);
    EXPECT_FALSE(Create());
    outlook_.application.Fail(L"ActiveExplorer", E_FAIL);
    EXPECT_FALSE(Create());
    EXPECT_TRUE(robot.Seen().empty());
    EXPECT_EQ(companion_.CommandLine(), L"");
}

TEST_F(MailPortfolio, FailedCompanionEndsTheCommandSilently) {
    outlook_.AddMail(L"Hello");
    const DialogRobot robot({});
    for (const wchar_t* code : {L"0", L"1", L"1999"}) {
        SetEnvironmentVariableW(L"ZAVO_PROBE_EXIT", code);
        EXPECT_FALSE(Create()) << code;
    }
    companion_.Uninstall();
    EXPECT_FALSE(Create());
    EXPECT_TRUE(robot.Seen().empty());
    EXPECT_FALSE(HasCall(L"selection.Item(1)"));
}

TEST_F(MailPortfolio, EmptyPortfolioIsMadeByTheCompanionsCommandAlone) {
    EXPECT_TRUE(CreateEmptyPortfolio(nullptr, Path(L"A box.pdf")));
    EXPECT_EQ(companion_.CommandLine(), L"\"" + companion_.Executable() + L"\"" + Command(L"A box.pdf"));
    EXPECT_EQ(ReadFileText(Path(L"A box.pdf")), "portfolio");
    EXPECT_TRUE(CreateEmptyPortfolio(&outlook_.application, Path(L"other.pdf")));
    EXPECT_TRUE(outlook_.application.lookups.empty());
    SetEnvironmentVariableW(L"ZAVO_PROBE_EXIT", L"0");
    EXPECT_FALSE(CreateEmptyPortfolio(nullptr, Path(L"A box.pdf")));
}

TEST_F(MailPortfolio, PortfolioThatStaysEmptyIsDeletedAndTheMessageShown) {
    const auto expectMessage = [&](const char* what) {
        SCOPED_TRACE(what);
        const DialogRobot robot({});
        EXPECT_FALSE(Create());
        ASSERT_FALSE(robot.Seen().empty());
        EXPECT_EQ(robot.Seen()[0].text, L"There are no emails that can be created as PDFs");
        EXPECT_FALSE(fs::exists(Path(L"Portfolio.pdf")));
    };
    outlook_.AddOther(L"IPM.Contact");
    expectMessage("no mail");
    outlook_.AddMail(L"RE: x");
    expectMessage("no subject that a file can have");
    outlook_.AddMail(L"Hello").Attach(L"a.txt", "A");
    word_.createResult = E_FAIL;
    expectMessage("every conversion fails");
    word_.createResult = S_OK;
    failingSaves_ = 1;
    expectMessage("every embedding fails");
    EXPECT_EQ(folder_.List(), (Listing{{key3, "folder"}, {key3 + L"\\Hello.pdf", "PDF of document of mail3"}}));
}

TEST_F(MailPortfolio, PortfolioThatTheCompanionDidNotWriteIsEmpty) {
    SetEnvironmentVariableW(L"ZAVO_PROBE_PORTFOLIO", nullptr);
    outlook_.AddMail(L"Hello").Attach(L"a.txt", "A");
    const DialogRobot robot({});
    EXPECT_FALSE(Create());
    ExpectMessage(robot);
    EXPECT_EQ(engine_.CallCount(), 0);
    EXPECT_FALSE(HasCall(L"mail1.Attachments")) << "nothing is embedded without a safety copy";
}

TEST_F(MailPortfolio, FailedEmbeddingPutsTheSafetyCopyBackAndTheNextMailFollows) {
    outlook_.AddMail(L"One").Attach(L"a.txt", "A");
    outlook_.AddMail(L"Two");
    outlook_.AddMail(L"Three");
    engine_.onCall = [this, save = engine_.onCall, number = 0](std::string_view function) mutable {
        if (function == "PDF_Save" && ++number == 2) failingSaves_ = 1;
        save(function);
    };
    EXPECT_TRUE(Create());
    EXPECT_EQ(openedForSaving_, (Paths{Path(L"Portfolio.pdf"), Path(L"Portfolio.pdf"), Path(L"Portfolio.pdf")}));
    EXPECT_EQ(ReadFileText(Path(L"Portfolio.pdf")), "portfolio++");
    for (const std::wstring& key : {key1, key2, key3}) EXPECT_FALSE(fs::exists(Path(SafetyCopy(key))));
    EXPECT_FALSE(fs::exists(Path(L"a.txt")));
    EXPECT_EQ(companion_.WaitForStarts(2).at(1), L" " + Quoted(L"Portfolio.pdf"));
}

TEST_F(MailPortfolio, SafetyCopyThatCannotBePutBackStays) {
    outlook_.AddMail(L"One");
    outlook_.AddMail(L"Two");
    std::optional<HeldFile> held;
    engine_.onCall = [&, save = engine_.onCall, number = 0](std::string_view function) mutable {
        const bool isSecondSave = function == "PDF_Save" && ++number == 2;
        if (isSecondSave) failingSaves_ = 1;
        save(function);
        if (isSecondSave) held.emplace(Path(L"Portfolio.pdf"), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
    };
    EXPECT_TRUE(Create());
    EXPECT_EQ(ReadFileText(Path(SafetyCopy(key2))), "portfolio+");
    EXPECT_FALSE(fs::exists(Path(SafetyCopy(key1))));
}

TEST_F(MailPortfolio, SafetyCopyThatIsOpenIsTriedAgainOnceAfterTheLastMail) {
    std::optional<HeldFile> held;
    outlook_.AddMail(L"One").Attach(L"a.txt", "A").On(L"SaveAsFile", [&](VARIANT*) {
        held.emplace(Path(SafetyCopy(key1)), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        return E_FAIL;
    });
    bool wasThere = false;
    outlook_.AddMail(L"Two").object.On(L"EntryID", [&](VARIANT* result) {
        wasThere = fs::exists(Path(SafetyCopy(key1)));
        held.reset();
        return GiveText(result, L"entry2");
    });
    EXPECT_TRUE(Create());
    EXPECT_TRUE(wasThere);
    EXPECT_FALSE(fs::exists(Path(SafetyCopy(key1))));
    EXPECT_EQ(ReadFileText(Path(L"Portfolio.pdf")), "portfolio++");
}

TEST_F(MailPortfolio, PortfolioThatDoesNotOpenIsPutBackToo) {
    outlook_.AddMail(L"One");
    engine_.notPdfs = {Path(L"Portfolio.pdf")};
    const DialogRobot robot({});
    EXPECT_FALSE(Create());
    ExpectMessage(robot);
    EXPECT_FALSE(fs::exists(Path(L"Portfolio.pdf")));
    EXPECT_FALSE(fs::exists(Path(SafetyCopy(key1))));
}

TEST_F(MailPortfolio, SafetyCopyIsNamedInTheUsersLanguageWithoutForbiddenCharacters) {
    ScriptedMail& mail = outlook_.AddMail(L"Hello");
    ScriptedDispatch& attachment = mail.Attach(L"a.txt", "A");
    bool isThere = false;
    attachment.On(L"SaveAsFile", [&](VARIANT*) {
        const bool isChinese = TestLanguage() == UiLanguage::SimplifiedChinese;
        isThere = fs::exists(Path((isChinese ? L"--_" : L"Portfolio_") + key1 + L".pdf"));
        return S_OK;
    });
    EXPECT_TRUE(Create());
    EXPECT_TRUE(isThere);
    EXPECT_EQ(folder_.List().size(), 3U) << "and it is gone in the end";
}

TEST_F(MailPortfolio, MailWithoutAKeyHasASafetyCopyToo) {
    ScriptedMail& mail = outlook_.AddMail(L"Hello");
    mail.object.Fail(L"EntryID", E_FAIL);
    ScriptedDispatch& attachment = mail.Attach(L"a.txt", "A");
    bool isThere = false;
    attachment.On(L"SaveAsFile", [&](VARIANT*) {
        isThere = fs::exists(Path(L"Portfolio_.pdf"));
        return S_OK;
    });
    EXPECT_TRUE(Create());
    EXPECT_TRUE(isThere);
    EXPECT_EQ(folder_.List(), (Listing{{L"Portfolio.pdf", "portfolio+"}, {L"Hello.pdf", "PDF of document of mail1"}}));
}

TEST_F(MailPortfolio, UsersFilesAreNotLost) {
    folder_.MakeFile(L"Hello.doc", "my document");
    folder_.MakeFile(L"a.txt", "my text");
    folder_.MakeFile(SafetyCopy(key1), "my copy");
    folder_.MakeFile(L"Portfolio.pdf", "my portfolio");
    fs::create_directories(Path(L"Hello.files"));
    folder_.MakeFile(L"Hello.files\\mine.png", "my picture");
    const Listing mine = folder_.List();
    outlook_.AddMail(L"Hello").Attach(L"a.txt", "A");
    outlook_.Mail(1).Attach(L"Portfolio.pdf", "attached portfolio");
    failingSaves_ = 1;
    {
        const DialogRobot robot({});
        EXPECT_FALSE(Create());
    }
    Listing expected = mine;
    expected[key1] = "folder";
    expected[key1 + L"\\Hello.pdf"] = "PDF of document of mail1";
    EXPECT_EQ(folder_.List(), expected);
    EXPECT_TRUE(Create());
    expected[L"Portfolio(1).pdf"] = "portfolio+";
    expected[key1 + L"\\Hello(1).pdf"] = "PDF of document of mail1";
    EXPECT_EQ(folder_.List(), expected);
}

TEST_F(MailPortfolio, UsersFileOfTheSafetyCopysNameIsNeverTakenForIt) {
    outlook_.AddMail(L"One");
    outlook_.AddMail(L"Two").Attach(SafetyCopy(key2), "attached");
    outlook_.Mail(2).Attach(L"Portfolio_" + key2 + L"(1).pdf", "attached too");
    folder_.MakeFile(SafetyCopy(key1), "mine");
    folder_.MakeFile(SafetyCopy(key2), "mine too");
    engine_.onCall = [this, save = engine_.onCall, number = 0](std::string_view function) mutable {
        if (function == "PDF_Save" && ++number == 2) failingSaves_ = 1;
        save(function);
    };
    EXPECT_TRUE(Create());
    EXPECT_EQ(folder_.List(), (Listing{{L"Portfolio.pdf", "portfolio+"},
                                       {SafetyCopy(key1), "mine"},
                                       {SafetyCopy(key2), "mine too"},
                                       {key1, "folder"},
                                       {key1 + L"\\One.pdf", "PDF of document of mail1"},
                                       {key2, "folder"},
                                       {key2 + L"\\Two.pdf", "PDF of document of mail2"}}));
}

TEST_F(MailPortfolio, MailWithoutAKeyMayHaveTheNameOfItsSafetyCopy) {
    outlook_.AddMail(L"Portfolio_").object.Fail(L"EntryID", E_FAIL);
    outlook_.Mail(1).Attach(L"a.txt", "A");
    EXPECT_TRUE(Create());
    EXPECT_EQ(Embedded(), (Paths{Path(L"Portfolio.pdf"), L"Portfolio_.pdf: PDF of document of mail1", L"a.txt: A"}));
    EXPECT_EQ(folder_.List(),
              (Listing{{L"Portfolio.pdf", "portfolio+"}, {L"Portfolio_.pdf", "PDF of document of mail1"}}));
}

TEST_F(MailPortfolio, AttachmentMayHaveItsName) {
    outlook_.AddMail(L"One").Attach(L"Portfolio.pdf", "attached");
    outlook_.AddMail(L"Two");
    EXPECT_TRUE(Create());
    EXPECT_EQ(openedForSaving_, (Paths{Path(L"Portfolio.pdf"), Path(L"Portfolio.pdf")}));
    EXPECT_EQ(Embedded(),
              (Paths{Path(L"Portfolio.pdf"), L"One.pdf: PDF of document of mail1", L"Portfolio.pdf: attached",
                     Path(L"Portfolio.pdf"), L"Two.pdf: PDF of document of mail2"}));
    EXPECT_EQ(folder_.List(), (Listing{{L"Portfolio.pdf", "portfolio++"},
                                       {key1, "folder"},
                                       {key1 + L"\\One.pdf", "PDF of document of mail1"},
                                       {key2, "folder"},
                                       {key2 + L"\\Two.pdf", "PDF of document of mail2"}}));
    EXPECT_EQ(companion_.WaitForStarts(2).at(1), L" " + Quoted(L"Portfolio.pdf"));
}

TEST_F(MailPortfolio, FailedEmbeddingOfAttachmentsWithItsNamesPutsTheSafetyCopyBack) {
    outlook_.AddMail(L"One");
    outlook_.AddMail(L"Two").Attach(L"portfolio.PDF", "attached");
    outlook_.Mail(2).Attach(SafetyCopy(key2), "attached copy");
    engine_.onCall = [this, save = engine_.onCall, number = 0](std::string_view function) mutable {
        if (function == "PDF_Save" && ++number == 2) failingSaves_ = 1;
        save(function);
    };
    EXPECT_TRUE(Create());
    EXPECT_EQ(folder_.List(), (Listing{{L"Portfolio.pdf", "portfolio+"},
                                       {key1, "folder"},
                                       {key1 + L"\\One.pdf", "PDF of document of mail1"},
                                       {key2, "folder"},
                                       {key2 + L"\\Two.pdf", "PDF of document of mail2"}}));
}

TEST_F(MailPortfolio, AttachmentMayBeNamedLikeTheSafetyCopyOrTheDocument) {
    outlook_.AddMail(L"One").Attach(SafetyCopy(key1), "attached copy");
    outlook_.Mail(1).Attach(L"One.doc", "attached document");
    EXPECT_TRUE(Create());
    EXPECT_EQ(Embedded(), (Paths{Path(L"Portfolio.pdf"), L"One.pdf: PDF of document of mail1",
                                 SafetyCopy(key1) + L": attached copy", L"One.doc: attached document"}));
    EXPECT_EQ(folder_.List(), (Listing{{L"Portfolio.pdf", "portfolio+"},
                                       {key1, "folder"},
                                       {key1 + L"\\One.pdf", "PDF of document of mail1"}}));
}

TEST_F(MailPortfolio, AttachmentThatStaysOpenIsTriedAgainOnceAfterTheLastMail) {
    ScriptedMail& mail = outlook_.AddMail(L"One");
    ScriptedDispatch& attachment = mail.Attach(L"Portfolio.pdf", "");
    std::optional<HeldFile> held;
    attachment.On(L"SaveAsFile", [&](VARIANT*) {
        WriteFileText(ScriptedMail::SavedPath(attachment), "attached");
        held.emplace(ScriptedMail::SavedPath(attachment), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        return S_OK;
    });
    bool wasThere = false;
    outlook_.AddMail(L"Two").object.On(L"EntryID", [&](VARIANT* result) {
        wasThere = fs::exists(Path(L"temp\\Portfolio.pdf"));
        held.reset();
        return GiveText(result, L"entry2");
    });
    EXPECT_TRUE(Create());
    EXPECT_TRUE(wasThere);
    EXPECT_FALSE(fs::exists(Path(L"temp")));
    EXPECT_EQ(ReadFileText(Path(L"Portfolio.pdf")), "portfolio++");
    EXPECT_EQ(companion_.WaitForStarts(2).at(1), L" " + Quoted(L"Portfolio.pdf"));
}

TEST_F(MailPortfolio, AttachmentsOfOneNameInTwoMailsDoNotMix) {
    outlook_.AddMail(L"One").Attach(L"a.txt", "first");
    outlook_.AddMail(L"One").Attach(L"a.txt", "second");
    outlook_.Mail(2).Attach(L"a.txt", "third");
    EXPECT_TRUE(Create());
    EXPECT_EQ(Embedded(),
              (Paths{Path(L"Portfolio.pdf"), L"One.pdf: PDF of document of mail1", L"a.txt: first",
                     Path(L"Portfolio.pdf"), L"One.pdf: PDF of document of mail2", L"a.txt: third", L"a.txt: third"}));
    EXPECT_FALSE(fs::exists(Path(L"a.txt")));
}

TEST_F(MailPortfolio, FailedConversionLeavesThatMailOut) {
    ScriptedMail& mail = outlook_.AddMail(L"One");
    mail.Attach(L"a.txt", "A");
    mail.object.On(L"SaveAs", [&](VARIANT*) {
        WriteFileText(ScriptedMail::SavedPath(mail.object), "document");
        fs::create_directories(Path(L"One.files"));
        word_.application.Fail(L"Documents", E_FAIL);
        return S_OK;
    });
    ScriptedMail& next = outlook_.AddMail(L"..\\evil");
    next.object.On(L"MessageClass", [&](VARIANT* result) {
        word_.application.GiveObject(L"Documents", &word_.documents);
        return GiveText(result, L"IPM.Note");
    });
    outlook_.AddMail(L"Three");
    const DialogRobot robot({});  // for the message about the second one
    EXPECT_TRUE(Create());
    EXPECT_EQ(Embedded(), (Paths{Path(L"Portfolio.pdf"), L"Three.pdf: PDF of document of mail3"}));
    EXPECT_EQ(folder_.List(), (Listing{{L"Portfolio.pdf", "portfolio+"},
                                       {key1, "folder"},
                                       {key3, "folder"},
                                       {key3 + L"\\Three.pdf", "PDF of document of mail3"}}));
    EXPECT_FALSE(HasCall(L"mail1.Attachments"));
}

TEST_F(MailPortfolio, ExportThatWroteNothingLeavesThatMailOut) {
    outlook_.AddMail(L"One").Attach(L"a.txt", "A");
    word_.document.GiveNothing(L"ExportAsFixedFormat");
    const DialogRobot robot({});
    EXPECT_FALSE(Create());
    ExpectMessage(robot);
    EXPECT_EQ(engine_.CallCount(), 0);
    EXPECT_EQ(folder_.List(), (Listing{{key1, "folder"}}));
}

TEST_F(MailPortfolio, SafetyCopyThatFindsNoRoomLeavesTheMailOut) {
    // The folder's path leaves room for the document and the PDF, but not for the copy.
    std::wstring deep = folder_.Path();
    while (deep.size() < 150) deep += L"\\0123456789";
    deep += L"\\" + std::wstring(230 - deep.size() - 1, L'x');
    fs::create_directories(deep);
    ASSERT_EQ((deep + L"\\" + SafetyCopy(key1)).size(), 261U);
    outlook_.AddMail(L"1").Attach(L"a.txt", "A");
    const DialogRobot robot({});
    EXPECT_FALSE(CreatePortfolioFromSelection(state_, &outlook_.application, deep));
    ExpectMessage(robot);
    EXPECT_EQ(word_.asked.size(), 1U);
    EXPECT_EQ(engine_.CallCount(), 0);
    EXPECT_FALSE(fs::exists(deep + L"\\Portfolio.pdf"));
}

TEST_F(MailPortfolio, MissingWorkingFolderGivesNoPortfolio) {
    outlook_.AddMail(L"Hello");
    const DialogRobot robot({});
    EXPECT_FALSE(CreatePortfolioFromSelection(state_, &outlook_.application, Path(L"missing")));
    EXPECT_TRUE(robot.Seen().empty()) << "the companion cannot write it";
}

TEST_F(MailPortfolio, ExceptionLeavesTheMailOutAndNothingOfItBehind) {
    folder_.MakeFile(L"One.doc", "mine");
    folder_.MakeFile(L"a.txt", "mine");
    folder_.MakeFile(SafetyCopy(key1), "mine");
    Listing expected = folder_.List();
    ScriptedMail& mail = outlook_.AddMail(L"One");
    mail.Attach(L"a.txt", "A");
    mail.Attach(L"Portfolio.pdf", "B");
    engine_.onCall = [](std::string_view function) {
        if (function == "PDF_Save") throw std::bad_alloc();
    };
    {
        const DialogRobot robot({});
        EXPECT_FALSE(Create());
        ExpectMessage(robot);
    }
    expected[key1] = "folder";
    expected[key1 + L"\\One.pdf"] = "PDF of document of mail1";
    EXPECT_EQ(folder_.List(), expected);

    mail.object.On(L"Attachments", [](VARIANT*) -> HRESULT { throw std::bad_alloc(); });
    {
        const DialogRobot robot({});
        EXPECT_FALSE(Create());
        ExpectMessage(robot);
    }
    expected[key1 + L"\\One(1).pdf"] = "PDF of document of mail1";
    EXPECT_EQ(folder_.List(), expected);
}

TEST_F(MailPortfolio, ExceptionForOneMailKeepsAPortfolioThatHasAnother) {
    outlook_.AddMail(L"One");
    outlook_.AddMail(L"Two").object.On(L"Subject", [](VARIANT*) -> HRESULT { throw std::bad_alloc(); });
    outlook_.AddMail(L"Three");
    EXPECT_TRUE(Create());
    EXPECT_EQ(ReadFileText(Path(L"Portfolio.pdf")), "portfolio++");
}

TEST_F(MailPortfolio, MissingCompanionAfterwardsIsSilent) {
    outlook_.AddMail(L"One").object.On(L"EntryID", [&](VARIANT* result) {
        companion_.Uninstall();
        return GiveText(result, L"entry1");
    });
    const DialogRobot robot({});
    EXPECT_TRUE(Create());
    EXPECT_TRUE(robot.Seen().empty());
    EXPECT_TRUE(fs::exists(Path(L"Portfolio.pdf")));
}
