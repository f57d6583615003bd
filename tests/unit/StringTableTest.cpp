// The texts in twelve languages and their lookup.
#include "src/ui/StringTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

#include "standins/common/Text.h"
#include "tests/support/TestLanguage.h"

namespace {

constexpr LONG languageCount = 12;

UiLanguage Language(LONG number) { return static_cast<UiLanguage>(number); }

std::wstring Text(std::wstring_view key, LONG language) {
    return LocalizeFor(GetLocalizedStringTable(), key, Language(language));
}

}  // namespace

TEST(StringTable, FortyRowsMakeThirtyNineKeysWithTwelveTextsEach) {
    const LocalizedStringTable& table = GetLocalizedStringTable();
    EXPECT_EQ(table.size(), 40U);
    std::map<std::wstring_view, std::vector<std::wstring_view>> distinct;
    for (const auto& [key, texts] : table) {
        for (const std::wstring_view text : texts) EXPECT_FALSE(text.empty());
        const auto& known = distinct.emplace(key, std::vector(std::begin(texts), std::end(texts))).first->second;
        EXPECT_TRUE(std::equal(known.begin(), known.end(), std::begin(texts), std::end(texts))) << "a row stands twice";
        EXPECT_EQ(known.size(), 12U);
    }
    EXPECT_EQ(distinct.size(), 39U);
}

TEST(StringTable, TableIsTheSameAtEachCall) {
    EXPECT_EQ(&GetLocalizedStringTable(), &GetLocalizedStringTable());
    EXPECT_EQ(GetLocalizedStringTable().data(), GetLocalizedStringTable().data());
}

TEST(StringTable, EveryKeyIsFound) {
    for (const auto& [key, texts] : GetLocalizedStringTable()) EXPECT_EQ(Text(key, 2), texts[2]);
}

TEST(StringTable, KeyOfTheRibbonTabIsItsOwnTextInEveryLanguage) {
    for (LONG language = 0; language < languageCount; ++language) EXPECT_EQ(Text(L"ZAVO", language), L"ZAVO");
}

TEST(StringTable, KeysAreExact) {
    EXPECT_EQ(Text(L"Create PDF", 2), L"PDF erstellen");
    EXPECT_EQ(Text(L"create pdf", 2), L"create pdf");
    EXPECT_EQ(Text(L"Create PDF ", 2), L"Create PDF ");
    EXPECT_EQ(Text(L"", 2), L"");
}

TEST(StringTable, OneTextPerLanguageStandsInItsColumn) {
    const wchar_t* texts[languageCount] = {L"打开PDF",  L"Open PDF",    L"PDF öffnen", L"Ouvrir PDF",
                                           L"Apri PDF", L"PDFを開く",   L"Abrir PDF",  L"Abrir PDF",
                                           L"打開PDF",  L"Открыть PDF", L"PDF openen", L"PDF 열기"};
    for (LONG language = 0; language < languageCount; ++language) {
        EXPECT_EQ(Text(L"Open PDF", language), texts[language]) << language;
    }
}

TEST(StringTable, TextsThatLookLikeSlipsAreKept) {
    const struct {
        const wchar_t* key;
        LONG language;
        const wchar_t* text;
    } rows[] = {
        {L"Create", 9, L"Объединение PDF"},
        {L"Combine", 9, L"Объединение PDF"},
        {L"Batch OCR", 8, L"yb!k "},
        {L"Batch Convert", 8, L"yb!k "},
        {L"Batch Print", 8, L"yb!k "},
        {L"Batch Create", 8, L"yb!k "},
        {L"Generate separate PDF files for each email in the currently selected folder", 0, L":NS_MR"},
        {L"Portfolio", 0, L"??"},
        {L"Portfolio", 1, L"Portfolio"},
        {L"Portfolio", 10, L"Portfolio"},
        {L"ZAVO Add-in", 0, L"ZAVO 插件"},
        {L"ZAVO Add-in", 8, L"ZAVO 插件"},
        {L"Create PDF", 11, L"PDF 생성"},
        {L"Convert the current document to PDF and add it as an attachment to the email", 0, L"将当前文档转换为PDF"},
    };
    for (const auto& row : rows) EXPECT_EQ(Text(row.key, row.language), row.text) << row.language;
}

// Every key and text, byte for byte: the 64-bit FNV-1a hash of their UTF-16 units, keys in ascending order, each
// followed by its texts in the order of the language numbers, each of these ended by a zero unit.
TEST(StringTable, NoTextChangesUnnoticed) {
    uint64_t hash = 0xcbf29ce484222325U;
    const auto add = [&hash](std::wstring_view text) {
        for (const wchar_t unit : std::wstring(text) + L'\0') {
            for (const int octet : {unit & 0xFF, unit >> 8})
                hash = (hash ^ static_cast<unsigned>(octet)) * 0x100000001b3U;
        }
    };
    std::wstring_view last;
    for (const auto& [key, texts] : GetLocalizedStringTable()) {
        if (key == last) continue;  // the row that stands twice
        last = key;
        add(key);
        for (const std::wstring_view text : texts) add(text);
    }
    EXPECT_EQ(hash, 0x50935552cf15f15fU);
}

TEST(StringTable, ShortKeysHaveAnEnglishTextOfTheirOwn) {
    EXPECT_EQ(Text(L"OCR", 1), L"OCR Recognition");
    EXPECT_EQ(Text(L"Batch Create", 1), L"Batch PDF Creation");
}

TEST(StringTable, MissingLanguageFallsBackToEnglishThenToTheKey) {
    const LocalizedRow rows[] = {
        {L"both", {{}, L"in English", L"auf Deutsch"}},
        {L"german only", {{}, {}, L"auf Deutsch"}},
    };
    const LocalizedStringTable table = rows;
    EXPECT_EQ(LocalizeFor(table, L"both", UiLanguage::German), L"auf Deutsch");
    EXPECT_EQ(LocalizeFor(table, L"both", UiLanguage::Dutch), L"in English");
    EXPECT_EQ(LocalizeFor(table, L"german only", UiLanguage::Dutch), L"german only");
    EXPECT_EQ(LocalizeFor(table, L"german only", UiLanguage::SimplifiedChinese), L"german only");
}

TEST(StringTable, LookupTakesTheLanguageOfWindows) {
    const wchar_t* expected = TestLanguage() == UiLanguage::German ? L"PDF öffnen" : L"Open PDF";
    EXPECT_EQ(Localize(GetLocalizedStringTable(), L"Open PDF"), expected);
}

TEST(StringTable, NoTextHoldsACharacterThatMarkupForbids) {
    for (const auto& [key, texts] : GetLocalizedStringTable()) {
        for (const std::wstring_view text : texts) {
            EXPECT_EQ(text.find_first_of(L"\"&<\r\n"), std::wstring_view::npos) << Utf8(std::wstring(text));
        }
    }
}
