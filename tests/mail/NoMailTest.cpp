// The hand-off where there is no mail program. This program stands beside a mapi32.dll without MAPISendMailW, and runs
// a second time with no mapi32.dll to be had at all.
#include <gtest/gtest.h>

#include "src/export/MailHandOff.h"
#include "standins/common/Text.h"

TEST(NoMail, HandOffIsSilent) {
    const HMODULE library = LoadLibraryW(L"mapi32.dll");
    ASSERT_EQ(library == nullptr, !Environment(L"ZAVO_TEST_NO_MAPI").empty());
    if (library) {
        ASSERT_EQ(reinterpret_cast<void*>(GetProcAddress(library, "MAPISendMailW")), nullptr);
    }
    SendFileByMail(nullptr, L"C:\\Out\\a.pdf");
}
