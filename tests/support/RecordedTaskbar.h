// A taskbar for tests: the recording one is registered in the place of the shell's.
#pragma once

#include <windows.h>
#include <objbase.h>

#include <sstream>
#include <string>
#include <vector>

#include "standins/common/Text.h"
#include "tests/support/CompanionProbe.h"
#include "tests/support/Files.h"

// Registered in the prefix from construction to destruction, with COM initialised for the thread.
class RecordedTaskbar {
public:
    RecordedTaskbar() {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        DWORD size = sizeof previous_;
        RegGetValueW(HKEY_LOCAL_MACHINE, key, nullptr, RRF_RT_ANY | RRF_NOEXPAND, nullptr, previous_, &size);
        Register(CompanionProbe::OwnFolder() / L"recording_taskbar.dll");
        SetEnvironmentVariableW(L"ZAVO_TASKBAR_LOG", Log().c_str());
        SetEnvironmentVariableW(L"ZAVO_TASKBAR_FAIL", nullptr);
    }
    RecordedTaskbar(const RecordedTaskbar&) = delete;
    RecordedTaskbar& operator=(const RecordedTaskbar&) = delete;
    ~RecordedTaskbar() {
        Register(previous_);
        CoUninitialize();
    }

    static void Register(const std::wstring& library) {
        RegSetKeyValueW(HKEY_LOCAL_MACHINE, key, nullptr, REG_SZ, library.c_str(),
                        static_cast<DWORD>((library.size() + 1) * sizeof(wchar_t)));
    }

    // What it was told since the last time this was asked, without its making and its end.
    std::vector<std::string> TakeCalls() {
        std::vector<std::string> calls;
        made_ = gone_ = 0;
        std::istringstream lines(ReadFileText(Log()));
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("made")) {
                ++made_;
            } else if (line == "gone") {
                ++gone_;
            } else {
                calls.push_back(line);
            }
        }
        std::filesystem::remove(Log());
        return calls;
    }
    // Of the calls that were taken last.
    int Made() const { return made_; }
    int Gone() const { return gone_; }

private:
    static constexpr wchar_t key[] =
        L"Software\\Classes\\CLSID\\{56FDF344-FD6D-11D0-958A-006097C9A090}\\InprocServer32";

    std::wstring Log() const { return folder_.Path(L"taskbar.log"); }

    const TemporaryFolder folder_;
    wchar_t previous_[MAX_PATH] = L"";
    int made_ = 0;
    int gone_ = 0;
};
