// The add-in's portfolio command and the real stand-in for the companion: a portfolio is there, or the add-in knows
// that there is none.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "src/export/Companion.h"
#include "tests/support/Files.h"
#include "tests/support/Library.h"
#include "tests/support/Registry.h"

namespace {

// build/bin, where ZAVO.exe lies beside the add-in, is installed as the companion's folder.
class PortfolioCommand : public testing::Test {
protected:
    PortfolioCommand() {
        const std::wstring bin = std::filesystem::path(LibraryPath()).parent_path();
        CompanionKeys::Set(HKEY_CURRENT_USER, L"SOFTWARE\\ZAVO", bin);
    }

    const CompanionKeys keys_;
    const TemporaryFolder folder_;
};

}  // namespace

TEST_F(PortfolioCommand, MakesAnEmptyPortfolio) {
    const std::wstring path = folder_.Path(L"A box \x65E5.pdf");
    EXPECT_TRUE(RunCompanionCommand(path));
    const std::string bytes = ReadFileText(path);
    EXPECT_TRUE(bytes.starts_with("%PDF-1.7")) << bytes.size();
    EXPECT_NE(bytes.find("/Collection"), std::string::npos);
}

TEST_F(PortfolioCommand, FailureIsKnownToTheAddin) {
    EXPECT_FALSE(RunCompanionCommand(folder_.Path(L"no such folder\\box.pdf")));
    const std::wstring mine = folder_.MakeFile(L"mine.pdf", "mine");
    EXPECT_FALSE(RunCompanionCommand(mine));
    EXPECT_EQ(ReadFileText(mine), "mine");
}
