// A companion application for tests: a program that notes how it was started.
#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

#include "standins/common/Text.h"
#include "tests/support/Files.h"
#include "tests/support/Registry.h"

// Installed for the current user from construction to destruction.
class CompanionProbe {
public:
    // The probe's program is in `programs`.
    explicit CompanionProbe(DWORD exitCode = 0, const std::filesystem::path& programs = OwnFolder()) {
        std::filesystem::copy_file(programs / L"companion_probe.exe", Executable());
        SetEnvironmentVariableW(L"ZAVO_PROBE_LOG", Log().c_str());
        SetEnvironmentVariableW(L"ZAVO_PROBE_EXIT", std::to_wstring(exitCode).c_str());
        SetEnvironmentVariableW(L"ZAVO_PROBE_PORTFOLIO", nullptr);
        CompanionKeys::Set(HKEY_CURRENT_USER, L"SOFTWARE\\ZAVO", folder_.Path());
    }

    // That of the running program.
    static std::filesystem::path OwnFolder() {
        wchar_t self[MAX_PATH];
        GetModuleFileNameW(nullptr, self, MAX_PATH);
        return std::filesystem::path(self).parent_path();
    }

    // From now on its empty portfolios are files with that content, and it ends its command with success.
    void MakePortfolios(const wchar_t* content) const {
        SetEnvironmentVariableW(L"ZAVO_PROBE_PORTFOLIO", content);
        SetEnvironmentVariableW(L"ZAVO_PROBE_EXIT", L"2000");
    }

    void Uninstall() const { RegDeleteTreeW(HKEY_CURRENT_USER, L"SOFTWARE\\ZAVO"); }

    std::wstring Executable() const { return folder_.Path(L"ZAVO.exe"); }

    // What followed the program's name, which is taken with or without quotation marks; waits for the start.
    std::wstring WaitForParameters() const {
        std::wstring line = Wide(WaitForFileText(Log()));
        if (!line.empty()) line.pop_back();
        return Parameters(line);
    }

    // The parameters of each of the first `count` starts; waits for them. Starts that are not waited for one by one
    // come in any order, and one may write over another's line.
    std::vector<std::wstring> WaitForStarts(size_t count) const {
        std::vector<std::wstring> starts;
        for (DWORD waited = 0; waited < 10000; waited += 20) {
            const std::wstring log = Wide(ReadFileText(Log()));
            starts.clear();
            for (size_t start = 0, end; (end = log.find(L'\n', start)) != std::wstring::npos; start = end + 1) {
                starts.push_back(Parameters(log.substr(start, end - start)));
            }
            if (starts.size() >= count) break;
            Sleep(20);
        }
        return starts;
    }

    // The whole command line of a companion that has ended.
    std::wstring CommandLine() const {
        std::wstring line = Wide(ReadFileText(Log()));
        if (!line.empty()) line.pop_back();
        return line;
    }

    // Whether one was started; waits long enough for one to have shown itself.
    bool WasStarted() const { return !WaitForFileText(Log(), 800).empty(); }

private:
    std::wstring Parameters(const std::wstring& line) const {
        for (const std::wstring& name : {L"\"" + Executable() + L"\"", Executable()}) {
            if (line.starts_with(name)) return line.substr(name.size());
        }
        return line;
    }
    std::wstring Log() const { return folder_.Path(L"log.txt"); }

    const TemporaryFolder folder_;
    const CompanionKeys keys_;
};
