// The journal's writing.
#include "standins/common/Journal.h"

#include "standins/common/Text.h"

void WriteJournal(std::initializer_list<std::wstring> words) {
    const std::wstring path = Environment(L"ZAVO_JOURNAL");
    if (path.empty()) return;
    std::wstring line;
    for (const std::wstring& word : words) line += (line.empty() ? L"" : L"\t") + word;
    AppendToFile(path, Utf8(line) + "\n");
}
