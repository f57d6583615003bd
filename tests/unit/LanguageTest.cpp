// Which of the twelve languages a Windows language is.
#include "src/ui/Language.h"

#include <gtest/gtest.h>

#include "tests/support/TestLanguage.h"

TEST(Language, LangIdsMapToTheTwelveLanguages) {
    const struct {
        LANGID langId;
        LONG language;
    } rows[] = {
        {0x0404, 8}, {0x0804, 0},  {0x0C04, 0},  {0x1004, 0}, {0x1404, 0}, {0x0004, 0},  // Chinese; 0x0404 is Taiwan
        {0x0409, 1}, {0x0809, 1},                                                        // English
        {0x0407, 2}, {0x0C07, 2},                                                        // German
        {0x040C, 3}, {0x0C0C, 3},                                                        // French
        {0x0410, 4}, {0x0411, 5},                                                        // Italian, Japanese
        {0x0416, 6}, {0x0816, 6},                                                        // Portuguese
        {0x0C0A, 7}, {0x040A, 7},  {0x080A, 7},                                          // Spanish
        {0x0419, 9}, {0x0413, 10}, {0x0412, 11},                                         // Russian, Dutch, Korean
        {0x0415, 1}, {0x0405, 1},  {0x0000, 1},  {0x7FFF, 1},                            // no texts: English
    };
    for (const auto& row : rows) {
        EXPECT_EQ(static_cast<LONG>(UiLanguageOf(row.langId)), row.language) << std::hex << row.langId;
    }
}

TEST(Language, DetectionAsksWindows) { EXPECT_EQ(DetectUiLanguage(), TestLanguage()); }
