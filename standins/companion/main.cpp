// ZAVO.exe, the companion application's stand-in: says how it was started and what files it was given. It writes that
// to its console and, where the environment variable ZAVO_COMPANION_LOG names a file, to the end of that file too.
// Asked for an empty portfolio it makes one.
#include <windows.h>
#include <shellapi.h>

#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "engine/Portfolio.h"
#include "src/base/Handles.h"
#include "standins/bridge/Bridge.h"
#include "standins/common/Journal.h"
#include "standins/common/Text.h"

namespace {

// Exit codes of the portfolio job; the first one is agreed with the add-in.
constexpr int portfolioMade = 2000;
constexpr int portfolioFailed = 3;

class Report {
public:
    void Line(const std::wstring& line) {
        PrintLine(line);
        text_ += Utf8(line) + "\n";
    }

    // The whole report at once, so that two companions do not mix their lines.
    void Save() const {
        const std::wstring path = Environment(L"ZAVO_COMPANION_LOG");
        if (!path.empty()) AppendToFile(path, text_);
    }

private:
    std::string text_;
};

std::wstring PagesOf(const std::wstring& path) {
    const BridgeAnswer answer = AskBridge({{"command", L"pages"}, {"path", LinuxPath(path)}});
    return answer.ok ? answer.text + (answer.text == L"1" ? L" page" : L" pages") : answer.text;
}

// Describes one file; false when there is none.
bool DescribeFile(Report& report, const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) ||
        (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) {
        report.Line(L"unknown argument, no such file: " + path);
        return false;
    }
    const ULONGLONG size = (static_cast<ULONGLONG>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
    report.Line(L"file: " + path + L", " + PagesOf(path) + L", " + std::to_wstring(size) + L" bytes");
    WriteJournal({L"shown", path});
    return true;
}

// One argument that ends in a blank and the word asks for a portfolio at the path before them.
std::optional<std::wstring> PortfolioPath(const std::vector<std::wstring>& arguments) {
    constexpr std::wstring_view ending = L" ZAVO_Q1JFQVRFX0VNUFRZX1BPUlRGT0xJTw";
    if (arguments.size() != 1 || !arguments[0].ends_with(ending)) return std::nullopt;
    return arguments[0].substr(0, arguments[0].size() - ending.size());
}

bool MakePortfolio(Report& report, const std::wstring& path) {
    try {
        zavo::pdf::WriteEmptyPortfolio(path);
        report.Line(L"portfolio: " + path);
        return true;
    } catch (const std::exception& error) {
        report.Line(L"no portfolio: " + Wide(error.what()));
        return false;
    }
}

}  // namespace

int main() {
    Report report;
    // The command line in brackets, because its last character may be a blank.
    report.Line(std::wstring(L"started as: [") + GetCommandLineW() + L"]");

    int count = 0;
    LocalMemory<wchar_t*> arguments;
    *arguments.Receive() = CommandLineToArgvW(GetCommandLineW(), &count);
    if (!arguments.Get()) return 1;
    const std::vector<std::wstring> files(arguments.Get() + 1, arguments.Get() + count);
    if (const std::optional<std::wstring> path = PortfolioPath(files)) {
        const bool made = MakePortfolio(report, *path);
        report.Save();
        return made ? portfolioMade : portfolioFailed;
    }
    if (files.empty()) report.Line(L"usage: ZAVO.exe FILE...");
    bool ok = !files.empty();
    for (const std::wstring& file : files) ok = DescribeFile(report, file) && ok;
    report.Save();
    return ok ? 0 : 1;
}
