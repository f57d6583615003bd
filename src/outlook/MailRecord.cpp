#include "src/outlook/MailRecord.h"

#include <algorithm>
#include <tuple>

void SortByReceivedTime(std::vector<MailRecord>& records) {
    const auto time = [](const MailRecord& record) {
        const SYSTEMTIME& t = record.received;
        return std::make_tuple(t.wYear, t.wMonth, t.wDay, t.wHour, t.wMinute, t.wSecond);
    };
    std::sort(records.begin(), records.end(),
              [&](const MailRecord& one, const MailRecord& other) { return time(one) < time(other); });
}
