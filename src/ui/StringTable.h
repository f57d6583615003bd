// The texts that a user sees, looked up by a key that is usually the English text itself.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "src/ui/Language.h"

using LocalizedTexts = std::unordered_map<UiLanguage, std::wstring_view>;
using LocalizedStringTable = std::unordered_map<std::wstring_view, LocalizedTexts>;

// The one table, built on the first call and never changed. An allocation that fails while it is built throws, and the
// next call builds it again.
const LocalizedStringTable& GetLocalizedStringTable();

// The text for the language of the Windows user interface, which is asked for at every call, so that a change of the
// display language takes effect at once. A key that the table lacks is its own text: the ribbon tab's label relies on
// it.
std::wstring Localize(const LocalizedStringTable& table, std::wstring_view key);

// The same for a given language: its text, else the English one, else the key.
std::wstring LocalizeFor(const LocalizedStringTable& table, std::wstring_view key, UiLanguage language);
