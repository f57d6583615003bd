// Stands in for ZAVO.exe in tests: writes its command line to the file that ZAVO_PROBE_LOG names, waits for as many
// milliseconds as ZAVO_PROBE_DELAY says and ends with the code in ZAVO_PROBE_EXIT. Told to make an empty portfolio, it
// writes the text of ZAVO_PROBE_PORTFOLIO, if there is one, to the portfolio's path.
#include <windows.h>

#include "standins/common/Text.h"

namespace {

// The path in a portfolio command: it stands in one pair of quotation marks with the command word. Else empty.
std::wstring PortfolioPath(const std::wstring& commandLine) {
    const size_t word = commandLine.find(L" ZAVO_");
    const size_t quote = commandLine.rfind(L'"', word);
    if (word == std::wstring::npos || quote == std::wstring::npos) return {};
    return commandLine.substr(quote + 1, word - quote - 1);
}

}  // namespace

int main() {
    AppendToFile(Environment(L"ZAVO_PROBE_LOG"), Utf8(GetCommandLineW()) + "\n");
    const std::wstring portfolio = PortfolioPath(GetCommandLineW());
    const std::wstring content = Environment(L"ZAVO_PROBE_PORTFOLIO");
    if (!portfolio.empty() && !content.empty()) {
        AppendToFile(portfolio, Utf8(content));
        if (GetFileAttributesW(portfolio.c_str()) == INVALID_FILE_ATTRIBUTES) return 1;  // there is no such folder
    }
    Sleep(wcstoul(Environment(L"ZAVO_PROBE_DELAY").c_str(), nullptr, 10));
    return static_cast<int>(wcstol(Environment(L"ZAVO_PROBE_EXIT").c_str(), nullptr, 10));
}
