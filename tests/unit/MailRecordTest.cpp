// The order of converted mails.
#include "src/outlook/MailRecord.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/ScriptedDispatch.h"

namespace {

MailRecord RecordOf(const std::wstring& name, SYSTEMTIME received) { return {nullptr, name, name + L".pdf", received}; }

std::vector<std::wstring> Sorted(std::vector<MailRecord> records) {
    SortByReceivedTime(records);
    std::vector<std::wstring> keys;
    for (const MailRecord& record : records) keys.push_back(record.key);
    return keys;
}

}  // namespace

TEST(MailRecords, AreOldestFirstByYearMonthDayHourMinuteSecondInThisOrder) {
    // Each record is older than the next in the field named, and younger in all that count less.
    const std::vector<MailRecord> sorted = {
        RecordOf(L"year", {2023, 12, 6, 31, 23, 59, 59, 999}), RecordOf(L"month", {2024, 1, 6, 31, 23, 59, 59, 999}),
        RecordOf(L"day", {2024, 2, 6, 10, 23, 59, 59, 999}),   RecordOf(L"hour", {2024, 2, 6, 11, 8, 59, 59, 999}),
        RecordOf(L"minute", {2024, 2, 6, 11, 9, 10, 59, 999}), RecordOf(L"second", {2024, 2, 6, 11, 9, 11, 10, 999}),
        RecordOf(L"last", {2024, 2, 0, 11, 9, 11, 11, 0}),
    };
    const std::vector<std::wstring> expected = {L"year", L"month", L"day", L"hour", L"minute", L"second", L"last"};
    EXPECT_EQ(Sorted({sorted.rbegin(), sorted.rend()}), expected);
    EXPECT_EQ(Sorted(sorted), expected);
    std::vector<MailRecord> mixed = sorted;
    std::rotate(mixed.begin(), mixed.begin() + 3, mixed.end());
    EXPECT_EQ(Sorted(mixed), expected);
}

TEST(MailRecords, ThatAgreeToTheSecondMayComeInAnyOrderButAllCome) {
    std::vector<MailRecord> records;
    std::vector<std::wstring> expected;
    for (WORD i = 0; i < 100; ++i) {
        const std::wstring key = std::to_wstring(i);
        records.push_back(RecordOf(key, {2024, 1, static_cast<WORD>(i % 7), 1, 8, 0, 0, static_cast<WORD>(999 - i)}));
        expected.push_back(key);
    }
    std::vector<std::wstring> keys = Sorted(records);
    std::sort(keys.begin(), keys.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(keys, expected);
}

TEST(MailRecords, AreMovedWhole) {
    ScriptedDispatch one, other;
    {
        std::vector<MailRecord> records = {
            {&one, L"late", L"late.pdf", {2024, 1, 0, 1, 10, 0, 0, 0}},
            {&other, L"early", L"early.pdf", {2024, 1, 0, 1, 9, 0, 0, 0}},
        };
        SortByReceivedTime(records);
        EXPECT_EQ(records[0].item.Get(), &other);
        EXPECT_EQ(records[0].key, L"early");
        EXPECT_EQ(records[0].pdfPath, L"early.pdf");
        EXPECT_EQ(records[0].received.wHour, 9);
        EXPECT_EQ(records[1].item.Get(), &one);
    }
    EXPECT_EQ(one.References(), 1U);
    EXPECT_EQ(other.References(), 1U);
}

TEST(MailRecords, NoneAndOneNeedNoOrder) {
    EXPECT_EQ(Sorted({}), std::vector<std::wstring>{});
    EXPECT_EQ(Sorted({RecordOf(L"only", {})}), std::vector<std::wstring>{L"only"});
}
