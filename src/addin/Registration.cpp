// Registration and its undoing: two tables.
#include "src/addin/Registration.h"

#include <shlobj.h>

#include <string>
#include <vector>

#include "src/addin/Identity.h"
#include "src/base/RegistryValues.h"

namespace {

// The class keys are written under HKEY_LOCAL_MACHINE and the ProgID's through HKEY_CLASSES_ROOT; with administrative
// rights both end up in the machine's own classes.
std::wstring ClassKey() { return std::wstring(L"Software\\Classes\\CLSID\\") + addinClassIdText; }

constexpr const wchar_t* hosts[] = {L"Word", L"Excel", L"PowerPoint", L"Outlook"};

std::wstring HostKey(const wchar_t* host) {
    return std::wstring(L"SOFTWARE\\Microsoft\\Office\\") + host + L"\\Addins\\" + addinProgId;
}

constexpr DWORD loadAtStartup = 3;    // LoadBehavior: loaded at start-up and now
constexpr DWORD commandLineSafe = 1;  // may be loaded when the host is started from the command line

// In the key of each host.
struct HostValue {
    const wchar_t* name;
    DWORD type;
    const void* data;
};

constexpr HostValue hostValues[] = {
    {L"Description", REG_SZ, addinDescription},
    {L"FriendlyName", REG_SZ, addinDescription},
    {L"LoadBehavior", REG_DWORD, &loadAtStartup},
    {L"CommandLineSafe", REG_DWORD, &commandLineSafe},
};

void NotifyShell() { SHChangeNotify(SHCNE_ASSOCCHANGED, SHCNF_IDLIST, nullptr, nullptr); }

HRESULT LastErrorAsHResult() {
    const auto error = static_cast<LONG>(GetLastError());
    return error > 0 ? HResultFromWin32(error) : S_OK;
}

HRESULT WriteRows(const wchar_t* libraryPath) {
    std::vector<RegistryValueSpec> rows;
    rows.emplace_back(HKEY_LOCAL_MACHINE, ClassKey(), L"", REG_SZ, addinDescription);
    // No ThreadingModel, on purpose: the host creates the add-in on its main thread.
    rows.emplace_back(HKEY_LOCAL_MACHINE, ClassKey() + L"\\InProcServer32", L"", REG_SZ, libraryPath);
    rows.emplace_back(HKEY_LOCAL_MACHINE, ClassKey() + L"\\ProgID", L"", REG_SZ, addinProgId);
    rows.emplace_back(HKEY_CLASSES_ROOT, addinProgId, L"", REG_SZ, addinDescription);
    rows.emplace_back(HKEY_CLASSES_ROOT, std::wstring(addinProgId) + L"\\CLSID", L"", REG_SZ, addinClassIdText);
    for (const wchar_t* host : hosts) {
        for (const HostValue& value : hostValues) {
            rows.emplace_back(HKEY_LOCAL_MACHINE, HostKey(host), value.name, value.type, value.data);
        }
    }
    return WriteRegistryValues(rows);
}

}  // namespace

HRESULT RegisterAddin(HINSTANCE instance) {
    if (!instance) return S_FALSE;
    wchar_t libraryPath[MAX_PATH];
    const HRESULT result =
        GetModuleFileNameW(instance, libraryPath, MAX_PATH) == 0 ? LastErrorAsHResult() : WriteRows(libraryPath);
    if (SUCCEEDED(result)) NotifyShell();
    return result;
}

HRESULT UnregisterAddin() {
    std::vector<RegistryValueSpec> rows;
    rows.emplace_back(HKEY_LOCAL_MACHINE, ClassKey());  // takes InProcServer32 and ProgID with it
    rows.emplace_back(HKEY_CLASSES_ROOT, addinProgId);
    for (const wchar_t* host : hosts) rows.emplace_back(HKEY_LOCAL_MACHINE, HostKey(host));
    const HRESULT result = DeleteRegistryTrees(rows);
    if (SUCCEEDED(result)) NotifyShell();
    return result;
}
