// Dates as PDFs write them.
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "engine/Dates.h"

using namespace zavo::pdf;

TEST(Dates, Texts) {
    const std::pair<std::int64_t, const char*> rows[] = {
        {0, "D:19700101000000Z"},  {1709251199, "D:20240229235959Z"},
        {-2, "D:19691231235958Z"}, {253402300799, "D:99991231235959Z"},
        {253402300800, ""},        {-1, ""},
        {INT64_MAX, ""},           {INT64_MIN, ""},
    };
    for (const auto& [seconds, text] : rows) EXPECT_EQ(DateText(seconds), text) << seconds;
}

TEST(Dates, AreParsed) {
    const std::pair<const char*, std::optional<std::int64_t>> rows[] = {
        {"D:19700101000000Z", 0},
        {"D:20240229235959Z", 1709251199},
        {"D:20240301005959+01'00'", 1709251199},
        {"D:20240229183000-0530", 1709251200},
        {"D:1970", 0},
        {"197001020000", 86400},
        {"", std::nullopt},
        {"D:", std::nullopt},
        {"D:20240230000000Z", std::nullopt},
        {"D:20241301", std::nullopt},
        {"D:2024022", std::nullopt},
        {"yesterday", std::nullopt},
    };
    for (const auto& [text, seconds] : rows) EXPECT_EQ(ParseDate(text), seconds) << text;
}
