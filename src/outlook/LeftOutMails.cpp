#include "src/outlook/LeftOutMails.h"

#include <algorithm>

#include "src/base/Paths.h"
#include "src/export/Companion.h"
#include "src/ui/LeftOutTexts.h"

namespace {

constexpr size_t mostShown = 10;
constexpr size_t longestSubject = 60;

bool IsControl(wchar_t c) {
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;  // the last two end lines
}

std::wstring WithNumber(const wchar_t* key, size_t number) {
    std::wstring text = Localize(leftOutTexts, key);
    const size_t place = text.find(numberPlace);
    if (place != std::wstring::npos) text.replace(place, std::size(numberPlace) - 1, std::to_wstring(number));
    return text;
}

}  // namespace

void LeftOutMails::Add(const std::wstring& subject) {
    ++count_;
    if (count_ > mostShown) return;
    std::wstring line = Shortened(subject, longestSubject);
    std::replace_if(line.begin(), line.end(), IsControl, L' ');
    shown_.push_back(std::move(line));
}

std::wstring LeftOutMails::Text() const {
    std::wstring text = WithNumber(count_ == 1 ? oneLeftOut : manyLeftOut, count_) + L"\n";
    for (const std::wstring& subject : shown_) text += L"\n" + subject;
    if (count_ > mostShown) text += L"\n" + WithNumber(andMore, count_ - mostShown);
    return text;
}

void LeftOutMails::Tell(HWND owner) const {
    if (count_ == 0) return;
    if (!IsWindow(owner)) owner = nullptr;  // it may be closed by now
    ShowMessage(owner, Text(), Localize(GetLocalizedStringTable(), L"ZAVO Add-in"), MB_ICONWARNING);
}
