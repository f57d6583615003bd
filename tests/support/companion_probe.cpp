// Stands in for ZAVO.exe in tests: writes its command line to the file that ZAVO_PROBE_LOG names, waits for as many
// milliseconds as ZAVO_PROBE_DELAY says and ends with the code in ZAVO_PROBE_EXIT. Asked for an empty portfolio, it
// writes the text in ZAVO_PROBE_PORTFOLIO to that path, if there is such a text.
#include "src/base/Handles.h"
#include "standins/common/Text.h"

namespace {

// What stands in the last pair of quotation marks before the command word; empty without that word.
std::wstring PortfolioPath(const std::wstring& commandLine) {
    const size_t word = commandLine.rfind(L" ZAVO_Q1JFQVRFX0VNUFRZX1BPUlRGT0xJTw\"");
    if (word == std::wstring::npos) return {};
    const size_t mark = commandLine.rfind(L'"', word);
    return mark == std::wstring::npos ? std::wstring() : commandLine.substr(mark + 1, word - mark - 1);
}

void WriteLine(const std::wstring& path, DWORD disposition, const std::string& line) {
    const HANDLE file = CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    const KernelHandle owner(file);
    DWORD written = 0;
    WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
}

}  // namespace

int main() {
    const std::wstring line = GetCommandLineW();
    const std::wstring portfolio = PortfolioPath(line);
    const std::string content = Utf8(Environment(L"ZAVO_PROBE_PORTFOLIO"));
    if (!portfolio.empty() && !content.empty()) WriteLine(portfolio, CREATE_NEW, content);
    WriteLine(Environment(L"ZAVO_PROBE_LOG"), OPEN_ALWAYS, Utf8(line) + "\n");
    Sleep(wcstoul(Environment(L"ZAVO_PROBE_DELAY").c_str(), nullptr, 10));
    return static_cast<int>(wcstol(Environment(L"ZAVO_PROBE_EXIT").c_str(), nullptr, 10));
}
