// The stack protector that is linked into what we ship.
#include <gtest/gtest.h>

#include <set>

#include "tests/support/Files.h"
#include "tests/support/Library.h"

namespace {

// The command line of a program beside this one.
std::wstring Beside(const wchar_t* program) {
    wchar_t self[MAX_PATH];
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    return L"\"" + (std::filesystem::path(self).parent_path() / program).wstring() + L"\"";
}

}  // namespace

TEST(StackProtector, EndsAProcessWhoseStackIsOverrun) {
    const DWORD code = RunAndWait(Beside(L"smashed_stack.exe"));
    // Wine puts the code of a failure at once in the place of the one that is given.
    EXPECT_TRUE(code == 0xC0000409 /* STATUS_STACK_BUFFER_OVERRUN */ ||
                code == 0xC0000602 /* STATUS_FAIL_FAST_EXCEPTION */)
        << std::hex << code;
}

TEST(StackProtector, GuardDiffersFromRunToRunWhereNoRandomNumberIsToBeHad) {
    const TemporaryFolder folder;
    constexpr size_t runs = 5;
    std::set<std::string> guards;
    for (size_t run = 0; run < runs; ++run) {
        const std::wstring file = folder.Path(std::to_wstring(run));
        ASSERT_EQ(RunAndWait(Beside(L"unlucky_guard.exe") + L" \"" + file + L"\""), 0U);
        guards.insert(ReadFileText(file));
    }
    EXPECT_EQ(guards.size(), runs);
    EXPECT_FALSE(guards.contains("") || guards.contains("0"));
}
