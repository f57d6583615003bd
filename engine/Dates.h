// Dates as PDFs write them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zavo::pdf {

// "D:20240131235959Z" of seconds since 1970; empty for -1, which is no known time, and for years of other than four
// digits.
std::string DateText(std::int64_t seconds);

// The seconds since 1970 of a date, whose parts behind the year may be missing; nothing for anything else.
std::optional<std::int64_t> ParseDate(std::string_view text);

}  // namespace zavo::pdf
