// The texts that a user sees, looked up by a key that is usually the English text itself.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "src/ui/Language.h"

struct LocalizedRow {
    std::wstring_view key;
    std::wstring_view texts[12];  // by the number of the language; one that is missing has no data
};

using LocalizedStringTable = std::span<const LocalizedRow>;  // in ascending order of the keys

const LocalizedStringTable& GetLocalizedStringTable();

// The text for the language of the Windows user interface, which is asked for at every call, so that a change of the
// display language takes effect at once. A key that the table lacks is its own text: the ribbon tab's label relies on
// it.
std::wstring Localize(const LocalizedStringTable& texts, std::wstring_view key);

// The same for a given language: its text, else the English one, else the key.
std::wstring LocalizeFor(const LocalizedStringTable& texts, std::wstring_view key, UiLanguage language);
