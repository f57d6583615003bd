// Registration and its undoing: two tables.
#include "src/addin/Registration.h"

#include <shlobj.h>

#include "src/addin/Identity.h"
#include "src/base/RegistryValues.h"

namespace {

// The class keys are written under HKEY_LOCAL_MACHINE and the ProgID's through HKEY_CLASSES_ROOT; with administrative
// rights both end up in the machine's own classes.
std::wstring ClassKey() { return std::wstring(L"Software\\Classes\\CLSID\\") + addinClassIdText; }
constexpr wchar_t progIdClassKey[] = L"ZAVO.OfficeAddin\\CLSID";
constexpr wchar_t wordKey[] = L"SOFTWARE\\Microsoft\\Office\\Word\\Addins\\ZAVO.OfficeAddin";
constexpr wchar_t excelKey[] = L"SOFTWARE\\Microsoft\\Office\\Excel\\Addins\\ZAVO.OfficeAddin";
constexpr wchar_t powerPointKey[] = L"SOFTWARE\\Microsoft\\Office\\PowerPoint\\Addins\\ZAVO.OfficeAddin";
constexpr wchar_t outlookKey[] = L"SOFTWARE\\Microsoft\\Office\\Outlook\\Addins\\ZAVO.OfficeAddin";

constexpr DWORD loadAtStartup = 3;    // LoadBehavior: loaded at start-up and now
constexpr DWORD commandLineSafe = 1;  // may be loaded when the host is started from the command line

void NotifyShell() { SHChangeNotify(SHCNE_ASSOCCHANGED, SHCNF_IDLIST, nullptr, nullptr); }

HRESULT LastErrorAsHResult() {
    const auto error = static_cast<LONG>(GetLastError());
    return error > 0 ? HResultFromWin32(error) : S_OK;
}

HRESULT WriteRows(const wchar_t* libraryPath) {
    // InProcServer32 gets no ThreadingModel, on purpose: the host creates the add-in on its main thread.
    const RegistryValueSpec rows[] = {
        {HKEY_LOCAL_MACHINE, ClassKey(), L"", REG_SZ, addinDescription},
        {HKEY_LOCAL_MACHINE, ClassKey() + L"\\InProcServer32", L"", REG_SZ, libraryPath},
        {HKEY_LOCAL_MACHINE, ClassKey() + L"\\ProgID", L"", REG_SZ, addinProgId},
        {HKEY_CLASSES_ROOT, addinProgId, L"", REG_SZ, addinDescription},
        {HKEY_CLASSES_ROOT, progIdClassKey, L"", REG_SZ, addinClassIdText},
        {HKEY_LOCAL_MACHINE, wordKey, L"Description", REG_SZ, addinDescription},
        {HKEY_LOCAL_MACHINE, wordKey, L"FriendlyName", REG_SZ, addinDescription},
        {HKEY_LOCAL_MACHINE, wordKey, L"LoadBehavior", REG_DWORD, &loadAtStartup},
        {HKEY_LOCAL_MACHINE, wordKey, L"CommandLineSafe", REG_DWORD, &commandLineSafe},
        {HKEY_LOCAL_MACHINE, excelKey, L"Description", REG_SZ, addinDescription},
        {HKEY_LOCAL_MACHINE, excelKey, L"FriendlyName", REG_SZ, addinDescription},
        {HKEY_LOCAL_MACHINE, excelKey, L"LoadBehavior", REG_DWORD, &loadAtStartup},
        {HKEY_LOCAL_MACHINE, excelKey, L"CommandLineSafe", REG_DWORD, &commandLineSafe},
        {HKEY_LOCAL_MACHINE, powerPointKey, L"Description", REG_SZ, addinDescription},
        {HKEY_LOCAL_MACHINE, powerPointKey, L"FriendlyName", REG_SZ, addinDescription},
        {HKEY_LOCAL_MACHINE, powerPointKey, L"LoadBehavior", REG_DWORD, &loadAtStartup},
        {HKEY_LOCAL_MACHINE, powerPointKey, L"CommandLineSafe", REG_DWORD, &commandLineSafe},
        {HKEY_LOCAL_MACHINE, outlookKey, L"Description", REG_SZ, addinDescription},
        {HKEY_LOCAL_MACHINE, outlookKey, L"FriendlyName", REG_SZ, addinDescription},
        {HKEY_LOCAL_MACHINE, outlookKey, L"LoadBehavior", REG_DWORD, &loadAtStartup},
        {HKEY_LOCAL_MACHINE, outlookKey, L"CommandLineSafe", REG_DWORD, &commandLineSafe},
    };
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
    const RegistryValueSpec rows[] = {
        {HKEY_LOCAL_MACHINE, ClassKey()},  // takes InProcServer32 and ProgID with it
        {HKEY_CLASSES_ROOT, addinProgId},    {HKEY_LOCAL_MACHINE, wordKey},    {HKEY_LOCAL_MACHINE, excelKey},
        {HKEY_LOCAL_MACHINE, powerPointKey}, {HKEY_LOCAL_MACHINE, outlookKey},
    };
    const HRESULT result = DeleteRegistryTrees(rows);
    if (SUCCEEDED(result)) NotifyShell();
    return result;
}
