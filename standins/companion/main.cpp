// ZAVO.exe, the companion application's stand-in: says how it was started and what files it was given. It writes that
// to its console and, where the environment variable ZAVO_COMPANION_LOG names a file, to the end of that file too.
#include <windows.h>
#include <shellapi.h>

#include <string>
#include <vector>

#include "src/base/Handles.h"
#include "standins/bridge/Bridge.h"
#include "standins/common/Text.h"

namespace {

class Report {
public:
    void Line(const std::wstring& line) {
        PrintLine(line);
        text_ += Utf8(line) + "\n";
    }

    // Appends the whole report in one write, so that two companions do not mix their lines.
    void Save() const {
        const std::wstring path = Environment(L"ZAVO_COMPANION_LOG");
        if (path.empty()) return;
        const HANDLE file = CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                        OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE) return;
        const KernelHandle owner(file);
        DWORD written = 0;
        WriteFile(file, text_.data(), static_cast<DWORD>(text_.size()), &written, nullptr);
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
    return true;
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
    if (files.empty()) report.Line(L"usage: ZAVO.exe FILE...");
    bool ok = !files.empty();
    for (const std::wstring& file : files) ok = DescribeFile(report, file) && ok;
    report.Save();
    return ok ? 0 : 1;
}
