// What the user is told of mails that were left out: texts beside those of the string table.
#pragma once

#include "src/ui/StringTable.h"

inline constexpr wchar_t numberPlace[] = L"{}";  // where the number goes

inline constexpr wchar_t oneLeftOut[] =
    L"1 email was left out. Its subject cannot be used as a file name: it contains a character that is not allowed in "
    L"file names (such as : or ?), it is a name reserved by Windows, or it is too long.";
inline constexpr wchar_t manyLeftOut[] =
    L"{} emails were left out. Their subjects cannot be used as file names: they contain a character that is not "
    L"allowed in file names (such as : or ?), are names reserved by Windows, or are too long.";
inline constexpr wchar_t andMore[] = L"and {} more";

extern const LocalizedStringTable leftOutTexts;  // for Localize
