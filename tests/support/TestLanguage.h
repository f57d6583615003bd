// The language that the tests run in.
#pragma once

#include <windows.h>

#include <string>

#include "src/ui/Language.h"
#include "standins/common/Text.h"

// English, but for the tests that run once more with ZAVO_TEST_LANGUAGE set to the number of another language and with
// Windows' user interface in it.
inline UiLanguage TestLanguage() {
    const std::wstring number = Environment(L"ZAVO_TEST_LANGUAGE");
    return number.empty() ? UiLanguage::English : static_cast<UiLanguage>(wcstol(number.c_str(), nullptr, 10));
}
