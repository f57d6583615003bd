// Outlook is ended in the middle of a command, at every step of it: what the user has in the folder is as it was.
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

#include "src/base/ControlIds.h"
#include "standins/common/Text.h"
#include "tests/integration/OutlookSession.h"
#include "tests/support/CompanionProbe.h"
#include "tests/support/Library.h"

namespace {

constexpr DWORD killed = 42;

struct Command {
    const char* name;
    const wchar_t* controlId;
    long stride;       // in a short run one in so many steps is tried
    long wholeStride;  // in a whole one; what converts a mail is the same for all but the portfolio
};

std::ostream& operator<<(std::ostream& out, const Command& command) { return out << command.name; }

class OutlookKilled : public testing::TestWithParam<Command> {
protected:
    OutlookKilled() { companion_.MakePortfolios(L"portfolio"); }

    DWORD Click(long step) const {
        const std::wstring program = CompanionProbe::OwnFolder() / L"killed_click.exe";
        return RunAndWait(L"\"" + program + L"\" " + GetParam().controlId + L" " + std::to_wstring(step));
    }

    // What the user has, and nothing besides but what commands may leave.
    void CheckFiles(const std::string& what) const {
        const FileTree tree = files_.List();
        for (const auto& [name, content] : UsersFiles()) {
            const auto found = tree.find(name);
            EXPECT_TRUE(found != tree.end() && found->second == content) << what << ": " << Utf8(name);
        }
    }

    const OutlookFiles files_;
    const CompanionProbe companion_;
    const WordProgId word_;  // whoever is killed does not take its own away
};

}  // namespace

TEST_P(OutlookKilled, LeavesEveryFileOfTheUsersAsItWas) {
    const long stride = Environment(L"ZAVO_TEST_ALL").empty() ? GetParam().stride : GetParam().wholeStride;
    long kills = 0;
    DWORD code = killed;
    for (long step = 0; code == killed && !HasFailure(); step += stride) {
        files_.Restore(UsersFiles());
        code = Click(step);
        kills += code == killed ? 1 : 0;
        CheckFiles("step " + std::to_string(step));
    }
    EXPECT_EQ(code, 0U) << "the last one comes to its end";
    EXPECT_GT(kills, 5);
    std::cout << "  ended at " << kills << " steps" << std::endl;
}

TEST_P(OutlookKilled, LeavesNothingThatHindersTheNextRun) {
    files_.Restore(UsersFiles());
    for (long step = 0; Click(step) == killed; step += 53) CheckFiles("step " + std::to_string(step));
    const FileTree left = files_.List();
    EXPECT_EQ(Click(100000), 0U);
    const FileTree after = files_.List();
    for (const auto& [name, content] : left) {
        const auto found = after.find(name);
        ASSERT_TRUE(found != after.end()) << Utf8(name);
        EXPECT_EQ(found->second, content) << Utf8(name);
    }
    for (const wchar_t* name : {L"Offer", L"Plan", L"mail"}) {
        EXPECT_TRUE(std::any_of(after.begin(), after.end(), [&](const auto& entry) {
            return !UsersFiles().contains(entry.first) && entry.first.find(name) != std::wstring::npos &&
                   entry.second.starts_with("%PDF of " + Utf8(name) + ".doc");
        })) << Utf8(name);
    }
}

INSTANTIATE_TEST_SUITE_P(, OutlookKilled,
                         testing::Values(Command{"CreateByMail", Button_ID_CreateByMail, 7, 1},
                                         Command{"CreateByFolder", Button_ID_CreateByFolder, 29, 11},
                                         Command{"CreateMergeByFolder", Button_ID_CreateMergeByFolder, 31, 11},
                                         Command{"CreatePortfolioByMail", Button_ID_CreatePortfolioByMail, 19, 1}),
                         [](const auto& command) { return std::string(command.param.name); });
