// Stands in for ZAVO.exe in tests: writes its command line to the file that ZAVO_PROBE_LOG names, waits for as many
// milliseconds as ZAVO_PROBE_DELAY says and ends with the code in ZAVO_PROBE_EXIT.
#include "src/base/Handles.h"
#include "standins/common/Text.h"

int main() {
    const std::wstring log = Environment(L"ZAVO_PROBE_LOG");
    const HANDLE file = CreateFileW(log.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return 1;
    const std::string line = Utf8(GetCommandLineW()) + "\n";
    DWORD written = 0;
    WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    CloseHandle(file);
    Sleep(wcstoul(Environment(L"ZAVO_PROBE_DELAY").c_str(), nullptr, 10));
    return static_cast<int>(wcstol(Environment(L"ZAVO_PROBE_EXIT").c_str(), nullptr, 10));
}
