#include "src/export/Companion.h"

#include <shellapi.h>

#include <optional>

#include "src/base/Handles.h"
#include "src/base/RegistryValues.h"
#include "src/export/OwnerWindow.h"
#include "src/ui/StringTable.h"

namespace {

struct InstallLocation {
    HKEY root;
    const wchar_t* subkey;
};

constexpr wchar_t executableName[] = L"\\ZAVO.exe";

// Command words: "ZAVO_" and the unpadded Base64 form of CREATE_EMPTY_PORTFOLIO and CREATE_FROM_HTML.
constexpr wchar_t createEmptyPortfolioWord[] = L"ZAVO_Q1JFQVRFX0VNUFRZX1BPUlRGT0xJTw";
[[maybe_unused]] constexpr wchar_t createFromHtmlWord[] = L"ZAVO_Q1JFQVRFX0ZST01fSFRNTA";  // no command sends it

constexpr DWORD companionSuccess = 2000;

std::wstring Quoted(const std::wstring& text) { return L"\"" + text + L"\""; }

// The value as a text, whatever its type: it ends at its first zero or, where it has none, at its last whole character.
std::optional<std::wstring> ReadInstallPath(const InstallLocation& location) {
    wchar_t buffer[260];
    const auto size = ReadRegistryValue(location.root, location.subkey, L"InstallPath", buffer, sizeof buffer);
    if (!size) return std::nullopt;
    return std::wstring(buffer, wcsnlen(buffer, *size / sizeof(wchar_t)));
}

}  // namespace

std::wstring FindCompanionExecutable() {
    const InstallLocation locations[] = {
        {HKEY_CURRENT_USER, L"SOFTWARE\\ZAVO"},
        {HKEY_LOCAL_MACHINE, L"SOFTWARE\\WOW6432Node\\ZAVO"},
        {HKEY_LOCAL_MACHINE, L"SOFTWARE\\ZAVO"},
    };
    for (const InstallLocation& location : locations) {
        // A value that ends in a separator gives a doubled one, which Windows takes as one.
        if (const auto path = ReadInstallPath(location)) return *path + executableName;
    }
    return {};
}

void ShowFilesInCompanion(const std::wstring& exe, const std::vector<std::wstring>& files) {
    std::wstring parameters;
    for (const std::wstring& file : files) {
        // No file has a quotation mark in its name; a text with one would become further arguments.
        if (file.find(L'"') == std::wstring::npos) parameters += Quoted(file) + L" ";  // the last blank stays
    }
    if (parameters.empty() && !files.empty()) return;
    ShellExecuteW(nullptr, nullptr, exe.c_str(), parameters.c_str(), nullptr, SW_SHOWNORMAL);
}

bool OpenInCompanion(const AddinState& addin, const std::vector<std::wstring>& files, std::wstring_view messageKey) {
    if (files.empty()) {
        const LocalizedStringTable& table = GetLocalizedStringTable();
        const std::wstring caption = Localize(table, L"ZAVO Add-in");
        const std::wstring text = Localize(table, messageKey);
        ShowMessage(GetOwnerWindow(addin), text, caption, MB_ICONWARNING);
        return false;
    }
    const std::wstring exe = FindCompanionExecutable();
    // Silent without the companion: there is something to open, and nothing to open it with.
    if (!exe.empty()) ShowFilesInCompanion(exe, files);
    return true;
}

bool RunCompanionCommand(const std::wstring& path) {
    const std::wstring exe = FindCompanionExecutable();
    if (exe.empty()) return false;

    // The companion expects path and command word inside one pair of quotation marks.
    std::wstring commandLine = Quoted(exe) + L" " + Quoted(path + L" " + createEmptyPortfolioWord);

    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOWNORMAL;
    PROCESS_INFORMATION info = {};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &info)) {
        return false;
    }
    const KernelHandle process(info.hProcess);
    const KernelHandle thread(info.hThread);
    WaitForSingleObject(process.Get(), INFINITE);
    DWORD exitCode = 0;
    GetExitCodeProcess(process.Get(), &exitCode);
    return exitCode == companionSuccess;
}

void ShowMessage(HWND owner, const std::wstring& text, const std::wstring& caption, UINT flags) {
    MessageBoxW(owner, text.c_str(), caption.c_str(), flags);
}
