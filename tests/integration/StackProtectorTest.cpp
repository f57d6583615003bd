// The stack protector that is linked into what we ship.
#include <gtest/gtest.h>

#include "tests/support/Library.h"

TEST(StackProtector, EndsAProcessWhoseStackIsOverrun) {
    wchar_t self[MAX_PATH];
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    const auto program = std::filesystem::path(self).parent_path() / L"smashed_stack.exe";
    const DWORD code = RunAndWait(L"\"" + program.wstring() + L"\"");
    // Wine puts the code of a failure at once in the place of the one that is given.
    EXPECT_TRUE(code == 0xC0000409 /* STATUS_STACK_BUFFER_OVERRUN */ ||
                code == 0xC0000602 /* STATUS_FAIL_FAST_EXCEPTION */)
        << std::hex << code;
}
