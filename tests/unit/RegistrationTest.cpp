// Registration where there is no module to register; the rest is tested with the real library.
#include "src/addin/Registration.h"

#include <gtest/gtest.h>

#include "tests/support/Registry.h"

namespace {

constexpr wchar_t classes[] = L"Software\\Classes\\CLSID\\{6C1E2F4A-9B3D-4E7A-8C5F-2A9D7B1E3F60}";

std::map<std::wstring, std::wstring> Registered() {
    std::map<std::wstring, std::wstring> found;
    ListRegistry(HKEY_LOCAL_MACHINE, classes, found);
    return found;
}

}  // namespace

TEST(Registration, WithoutAModuleNothingIsWritten) {
    const auto before = Registered();
    EXPECT_EQ(RegisterAddin(nullptr), S_FALSE);
    EXPECT_EQ(Registered(), before);
}

TEST(Registration, ModuleWithoutAPathAnswersTheSystemsError) {
    const auto before = Registered();
    EXPECT_EQ(RegisterAddin(reinterpret_cast<HINSTANCE>(uintptr_t{0x7FFF0000})),
              HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND));
    EXPECT_EQ(Registered(), before);
}
