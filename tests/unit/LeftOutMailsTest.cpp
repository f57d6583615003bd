// What the user is told of mails that get no file.
#include "src/outlook/LeftOutMails.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <set>

#include "src/export/Companion.h"
#include "src/outlook/CreateCommands.h"
#include "src/outlook/Portfolio.h"
#include "src/ui/LeftOutTexts.h"
#include "standins/common/Text.h"
#include "tests/support/ForegroundWindow.h"
#include "tests/support/MessageBoxes.h"
#include "tests/support/OutlookCommandTest.h"
#include "tests/support/Sharing.h"
#include "tests/support/TestLanguage.h"

namespace {

std::wstring TextOf(const std::vector<std::wstring>& subjects) {
    LeftOutMails mails;
    for (const std::wstring& subject : subjects) mails.Add(subject);
    return mails.Text();
}

std::vector<std::wstring> Lines(const std::wstring& text) {
    std::vector<std::wstring> lines(1);
    for (const wchar_t c : text) {
        if (c == L'\n') {
            lines.emplace_back();
        } else {
            lines.back() += c;
        }
    }
    return lines;
}

class CommandsThatLeaveMailsOut : public OutlookCommandTest {
protected:
    CommandsThatLeaveMailsOut() {
        state_.application = &outlook_.application;
        companion_.MakePortfolios(L"portfolio");
    }
    std::vector<std::function<bool()>> Commands() {
        IDispatch* application = &outlook_.application;
        return {[=, this] { return CreatePdfFromSelection(state_, application, folder_.Path()); },
                [=, this] { return CreatePdfFromFolder(state_, application, folder_.Path(), false); },
                [=, this] { return CreatePdfFromFolder(state_, application, folder_.Path(), true); },
                [=, this] { return CreatePortfolioFromSelection(state_, application, folder_.Path()); }};
    }

    const CompanionProbe companion_;
    const ForegroundWindow window_{L"rctrl_renwnd32"};
};

}  // namespace

TEST(LeftOutMails, OneIsToldInTheSingular) { EXPECT_EQ(TextOf({L"RE: x"}), std::wstring(oneLeftOut) + L"\n\nRE: x"); }

TEST(LeftOutMails, SeveralAreCountedAndListed) {
    const std::vector<std::wstring> lines = Lines(TextOf({L"RE: x", L"a/b", L"CON"}));
    EXPECT_TRUE(lines.at(0).starts_with(L"3 emails were left out."));
    EXPECT_EQ((std::vector(lines.begin() + 1, lines.end())),
              (std::vector<std::wstring>{L"", L"RE: x", L"a/b", L"CON"}));
}

TEST(LeftOutMails, AtMostTenAreListedAndTheRestCounted) {
    std::vector<std::wstring> subjects;
    for (int i = 1; i <= 10; ++i) subjects.push_back(L"RE: " + std::to_wstring(i));
    EXPECT_EQ(Lines(TextOf(subjects)).back(), L"RE: 10");
    subjects.push_back(L"RE: 11");
    const std::vector<std::wstring> lines = Lines(TextOf(subjects));
    EXPECT_EQ(lines.size(), 13U);
    EXPECT_TRUE(lines[0].starts_with(L"11 "));
    EXPECT_EQ(lines[11], L"RE: 10");
    EXPECT_EQ(lines[12], L"and 1 more");
    for (int i = 0; i < 989; ++i) subjects.push_back(L"RE: more");
    EXPECT_EQ(Lines(TextOf(subjects)).back(), L"and 990 more");
}

TEST(LeftOutMails, SubjectIsCutAtSixtyCharactersAndNeverInsideOne) {
    EXPECT_EQ(Lines(TextOf({std::wstring(60, L'x')})).back(), std::wstring(60, L'x'));
    EXPECT_EQ(Lines(TextOf({std::wstring(61, L'x')})).back(), std::wstring(60, L'x'));
    EXPECT_EQ(Lines(TextOf({std::wstring(59, L'x') + L"\xD83D\xDE00"})).back(), std::wstring(59, L'x'));
}

TEST(LeftOutMails, ControlCharactersAndLineEndsOfASubjectBecomeBlanks) {
    const std::wstring hostile = std::wstring(L"a\0b\tc\rd\ne\x1B", 10) + L"f\x7Fg\x85h\x9Fi\x2028j\x2029k";
    EXPECT_EQ(Lines(TextOf({hostile})).back(), L"a b c d e f g h i j k");
}

TEST(LeftOutMails, NumberPlaceInASubjectIsNoPlace) { EXPECT_EQ(Lines(TextOf({L"RE: {}", L"RE: %d"}))[2], L"RE: {}"); }

TEST(LeftOutMails, TextsAreThereInTwelveLanguagesWithOnePlaceForTheNumber) {
    EXPECT_EQ(leftOutTexts.size(), 3U);
    for (const auto& [key, texts] : leftOutTexts) {
        std::set<std::wstring_view> different;
        for (const std::wstring_view text : texts) {
            EXPECT_FALSE(text.empty());
            different.insert(text);
            const size_t place = text.find(numberPlace);
            EXPECT_EQ(place == std::wstring_view::npos, key == oneLeftOut) << Utf8(std::wstring(text));
            if (key == oneLeftOut) {
                EXPECT_NE(text.find(L'1'), std::wstring_view::npos) << Utf8(std::wstring(text));
            } else {
                EXPECT_EQ(text.find(numberPlace, place + 1), std::wstring_view::npos) << Utf8(std::wstring(text));
            }
        }
        EXPECT_GE(different.size(), key == andMore ? 11U : 12U);  // Chinese has one of them in both scripts
        EXPECT_EQ(LocalizeFor(leftOutTexts, key, UiLanguage::English), key);
    }
}

TEST(LeftOutMails, LookupTakesTheLanguageOfWindows) {
    const bool isGerman = TestLanguage() == UiLanguage::German;
    EXPECT_TRUE(TextOf({L"RE: x"}).starts_with(isGerman ? L"1 E-Mail wurde" : L"1 email was"));
    EXPECT_TRUE(TextOf({L"RE: x", L"b"}).starts_with(isGerman ? L"2 E-Mails wurden" : L"2 emails were"));
}

TEST(LeftOutMails, NoneIsNotTold) {
    const DialogRobot robot({});
    LeftOutMails().Tell(nullptr);
    EXPECT_TRUE(robot.Seen().empty());
}

TEST_F(CommandsThatLeaveMailsOut, TellOnceInTheEndAfterTheCompanionHasItsFiles) {
    outlook_.AddMail(L"RE: x");
    outlook_.AddMail(L"Hello");
    outlook_.AddMail(std::wstring(300, L'x'));
    outlook_.AddOther(L"IPM.Contact").object.GiveText(L"Subject", L"RE: contact");
    const ULONG_PTR portfolio = 3;
    size_t starts = 0;
    for (size_t i = 0; i < Commands().size(); ++i) {
        SCOPED_TRACE(i);
        state_.conversionCache.clear();
        starts += i == portfolio ? 2 : 1;
        SetForegroundWindow(window_.Get());
        const DialogRobot robot({});
        EXPECT_TRUE(Commands()[i]());
        EXPECT_EQ(companion_.WaitForStarts(starts).size(), starts);
        ASSERT_EQ(robot.Seen().size(), 1U);
        const SeenDialog box = robot.Seen()[0];
        EXPECT_EQ(box.caption, L"ZAVO Add-in");
        EXPECT_EQ(box.icon, LoadIconW(nullptr, IDI_WARNING));
        EXPECT_EQ(box.owner, window_.Get());
        EXPECT_EQ(box.text, TextOf({L"RE: x", std::wstring(60, L'x')}));
    }
}

TEST_F(CommandsThatLeaveMailsOut, TellWhenTheCompanionHasItsFilesAndWhatWasOpenIsLeftAlone) {
    static const CompanionProbe* companion;
    static size_t starts, expectedStarts;
    static std::optional<HeldFile> held;
    companion = &companion_;
    const MessageBoxes boxes;
    MessageBoxes::onShown = [] {
        starts = companion->WaitForStarts(expectedStarts).size();
        held.reset();
    };
    outlook_.AddMail(L"RE: x");
    outlook_.AddMail(L"Hello").Attach(L"a.txt", "A").On(L"SaveAsFile", [&](VARIANT*) {
        WriteFileText(Path(L"a.txt"), "A");
        held.emplace(Path(L"a.txt"), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE);
        return S_OK;
    });
    for (size_t i = 0; i < Commands().size(); ++i) {
        SCOPED_TRACE(i);
        state_.conversionCache.clear();
        expectedStarts += i == 3 ? 2 : 1;  // the portfolio is made by the companion, too
        EXPECT_TRUE(Commands()[i]());
        EXPECT_EQ(boxes.Count(), 1);
        EXPECT_EQ(starts, expectedStarts) << "while the message was there";
        EXPECT_EQ(ReadFileText(Path(L"a.txt")), "A") << "tried again once, and not when the command ends";
        std::filesystem::remove(Path(L"a.txt"));
    }
    MessageBoxes::onShown = nullptr;
}

TEST_F(CommandsThatLeaveMailsOut, TellAfterTheMessageThatThereAreNone) {
    outlook_.AddMail(L"RE: x");
    for (const auto& command : Commands()) {
        SetForegroundWindow(window_.Get());
        const DialogRobot robot({});
        EXPECT_FALSE(command());
        ASSERT_EQ(robot.Seen().size(), 2U);
        EXPECT_EQ(robot.Seen()[0].text, L"There are no emails that can be created as PDFs");
        EXPECT_EQ(robot.Seen()[1].text, TextOf({L"RE: x"}));
        EXPECT_EQ(robot.Seen()[1].owner, window_.Get());
    }
}

TEST_F(CommandsThatLeaveMailsOut, OwnerIsTheWindowThatWasInFrontWhenTheClickCame) {
    std::optional<ForegroundWindow> companions;
    outlook_.AddMail(L"RE: x").object.On(L"EntryID", [&](VARIANT* result) {
        companions.emplace(L"ZavoCompanion");
        return GiveText(result, L"entry1");
    });
    for (const auto& command : Commands()) {
        SetForegroundWindow(window_.Get());
        const DialogRobot robot({});
        EXPECT_FALSE(command());
        ASSERT_EQ(robot.Seen().size(), 2U);
        EXPECT_EQ(robot.Seen()[0].owner, nullptr) << "the system's own message asks anew";
        EXPECT_EQ(robot.Seen()[1].owner, window_.Get());
    }
}

TEST_F(CommandsThatLeaveMailsOut, MailsThatFailOtherwiseAreSilent) {
    outlook_.AddMail(L"Hello").object.Fail(L"SaveAs", E_FAIL);
    outlook_.AddMail(L"RE: x").object.GiveText(L"MessageClass", L"IPM.Appointment");
    outlook_.AddMail(L"").object.Fail(L"Subject", E_FAIL);
    for (const auto& command : Commands()) {
        const DialogRobot robot({});
        EXPECT_FALSE(command());
        EXPECT_EQ(robot.Seen().size(), 1U);
    }
}

TEST_F(CommandsThatLeaveMailsOut, SayNothingOfAMailWhosePdfIsInTheCache) {
    outlook_.AddMail(L"Hello");
    EXPECT_TRUE(Commands()[0]());
    outlook_.Mail(1).object.GiveText(L"Subject", L"RE: renamed");
    const DialogRobot robot({});
    EXPECT_TRUE(Commands()[1]());
    EXPECT_TRUE(robot.Seen().empty());
}
