// Dates as PDFs write them.
#include "engine/Dates.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>

namespace zavo::pdf {

namespace chrono = std::chrono;

namespace {

constexpr std::int64_t secondsOfMinute = 60;
constexpr std::int64_t secondsOfHour = 3600;
constexpr std::int64_t secondsOfDay = 86400;

// Takes two digits off the front, or `otherwise` where the text ends before them.
std::optional<int> TakePair(std::string_view& text, int otherwise) {
    if (text.empty() || text[0] < '0' || text[0] > '9') return otherwise;
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + std::min<std::size_t>(2, text.size()), value);
    if (error != std::errc() || end != text.data() + 2) return std::nullopt;
    text.remove_prefix(2);
    return value;
}

}  // namespace

std::string DateText(std::int64_t seconds) {
    if (seconds == -1) return {};
    std::int64_t day = seconds / secondsOfDay;
    std::int64_t second = seconds % secondsOfDay;
    if (second < 0) {
        second += secondsOfDay;
        --day;
    }
    constexpr std::int64_t firstDay = chrono::sys_days(chrono::year(1) / 1 / 1).time_since_epoch().count();
    constexpr std::int64_t lastDay = chrono::sys_days(chrono::year(9999) / 12 / 31).time_since_epoch().count();
    if (day < firstDay || day > lastDay) return {};
    const chrono::year_month_day date{chrono::sys_days(chrono::days(day))};
    std::array<char, 64> text = {};
    std::snprintf(text.data(), text.size(), "D:%04d%02u%02u%02d%02d%02dZ", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                  static_cast<int>(second / 3600), static_cast<int>(second / 60 % 60), static_cast<int>(second % 60));
    return text.data();
}

std::optional<std::int64_t> ParseDate(std::string_view text) {
    if (text.starts_with("D:")) text.remove_prefix(2);
    if (text.size() < 4) return std::nullopt;
    const std::optional<int> century = TakePair(text, -1);
    const std::optional<int> year = TakePair(text, -1);
    const std::optional<int> month = TakePair(text, 1);
    const std::optional<int> day = TakePair(text, 1);
    const std::optional<int> hour = TakePair(text, 0);
    const std::optional<int> minute = TakePair(text, 0);
    const std::optional<int> second = TakePair(text, 0);
    if (!century || *century < 0 || !year || *year < 0 || !month || !day || !hour || !minute || !second) return {};
    const chrono::year_month_day date(chrono::year(*century * 100 + *year),
                                      chrono::month(static_cast<unsigned>(*month)),
                                      chrono::day(static_cast<unsigned>(*day)));
    if (!date.ok() || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
    std::int64_t seconds = chrono::sys_days(date).time_since_epoch().count() * secondsOfDay + *hour * secondsOfHour +
                           *minute * secondsOfMinute + *second;

    // How far local time is ahead of UTC: "+01'00'".
    if (text.starts_with("+") || text.starts_with("-")) {
        const std::int64_t sign = text[0] == '+' ? 1 : -1;
        text.remove_prefix(1);
        const std::optional<int> hours = TakePair(text, 0);
        if (text.starts_with("'")) text.remove_prefix(1);
        const std::optional<int> minutes = TakePair(text, 0);
        if (!hours || !minutes) return std::nullopt;
        seconds -= sign * (*hours * secondsOfHour + *minutes * secondsOfMinute);
    }
    return seconds;
}

}  // namespace zavo::pdf
