// Registration in the real registry, through regsvr32 and through the exports.
#include <gtest/gtest.h>

#include <windows.h>
#include <sddl.h>
#include <shlobj.h>

#include "tests/support/Library.h"
#include "tests/support/Registry.h"

namespace {

using Listing = std::map<std::wstring, std::wstring>;

constexpr wchar_t classKey[] = L"SOFTWARE\\Classes\\CLSID\\{6C1E2F4A-9B3D-4E7A-8C5F-2A9D7B1E3F60}";
constexpr wchar_t excelKey[] = L"SOFTWARE\\Microsoft\\Office\\Excel\\Addins\\ZAVO.OfficeAddin";
constexpr const wchar_t* hosts[] = {L"Word", L"Excel", L"PowerPoint", L"Outlook"};

// Everything that programs have registered on the machine; slow.
Listing ListMachine() {
    Listing found;
    ListRegistry(HKEY_LOCAL_MACHINE, L"SOFTWARE", found);
    return found;
}

// The keys that registration writes, and their neighbours.
Listing ListOwnKeys() {
    Listing found;
    ListRegistry(HKEY_LOCAL_MACHINE, classKey, found);
    ListRegistry(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\ZAVO.OfficeAddin", found);
    ListRegistry(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Office", found);
    return found;
}

Listing ListUser() {
    Listing found;
    ListRegistry(HKEY_CURRENT_USER, L"SOFTWARE", found);
    return found;
}

// What is in `after` and not, or not the same, in `before`.
Listing Difference(const Listing& before, const Listing& after) {
    Listing difference;
    for (const auto& [name, value] : after) {
        const auto found = before.find(name);
        if (found == before.end() || found->second != value) difference[name] = value;
    }
    return difference;
}

std::wstring TextData(const std::wstring& text) {
    std::wstring data = L"1:";
    for (size_t i = 0; i <= text.size(); ++i) {
        const wchar_t unit = i < text.size() ? text[i] : L'\0';
        wchar_t hex[5];
        swprintf(hex, 5, L"%02x%02x", unit & 0xFF, unit >> 8);
        data += hex;
    }
    return data;
}

std::wstring AddinKey(const std::wstring& host) {
    return L"SOFTWARE\\Microsoft\\Office\\" + host + L"\\Addins\\ZAVO.OfficeAddin";
}

// The keys above the hosts' add-in keys, which other add-ins share; they are made where missing and stay.
Listing SharedKeys() {
    Listing keys;
    for (const std::wstring host : hosts) {
        keys[L"SOFTWARE\\Microsoft\\Office\\" + host + L"|key"] = L"";
        keys[L"SOFTWARE\\Microsoft\\Office\\" + host + L"\\Addins|key"] = L"";
    }
    keys[L"SOFTWARE\\Microsoft\\Office|key"] = L"";
    return keys;
}

Listing ExpectedRows() {
    Listing rows;
    const std::wstring description = TextData(L"ZAVO Office COM Addin");
    const std::wstring clsid = classKey;
    rows[clsid + L"|key"] = L"";
    rows[clsid + L"|"] = description;
    rows[clsid + L"\\InProcServer32|key"] = L"";
    rows[clsid + L"\\InProcServer32|"] = TextData(LibraryPath());
    rows[clsid + L"\\ProgID|key"] = L"";
    rows[clsid + L"\\ProgID|"] = TextData(L"ZAVO.OfficeAddin");
    rows[L"SOFTWARE\\Classes\\ZAVO.OfficeAddin|key"] = L"";
    rows[L"SOFTWARE\\Classes\\ZAVO.OfficeAddin|"] = description;
    rows[L"SOFTWARE\\Classes\\ZAVO.OfficeAddin\\CLSID|key"] = L"";
    rows[L"SOFTWARE\\Classes\\ZAVO.OfficeAddin\\CLSID|"] = TextData(L"{6C1E2F4A-9B3D-4E7A-8C5F-2A9D7B1E3F60}");
    for (const std::wstring host : hosts) {
        rows[AddinKey(host) + L"|key"] = L"";
        rows[AddinKey(host) + L"|Description"] = description;
        rows[AddinKey(host) + L"|FriendlyName"] = description;
        rows[AddinKey(host) + L"|LoadBehavior"] = L"4:03000000";
        rows[AddinKey(host) + L"|CommandLineSafe"] = L"4:01000000";
    }
    return rows;
}

DWORD Regsvr32(const std::wstring& options) {
    return RunAndWait(L"regsvr32.exe " + options + L" \"" + LibraryPath() + L"\"");
}

// A key that nobody may write to, for the length of a scope.
class DeniedKey {
public:
    explicit DeniedKey(const wchar_t* path) : path_(path) {
        RegistryKey key;
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, 0, nullptr, 0, KEY_WRITE | WRITE_DAC, nullptr, key.Receive(),
                        nullptr);
        SetAccess(key.Get(), L"D:P(A;;KR;;;WD)(A;;WD;;;WD)");
    }
    DeniedKey(const DeniedKey&) = delete;
    DeniedKey& operator=(const DeniedKey&) = delete;
    ~DeniedKey() {
        {
            RegistryKey key;
            RegOpenKeyExW(HKEY_LOCAL_MACHINE, path_, 0, WRITE_DAC, key.Receive());
            SetAccess(key.Get(), L"D:P(A;;KA;;;WD)");
        }
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, path_);
    }

private:
    static void SetAccess(HKEY key, const wchar_t* access) {
        LocalMemory<void> descriptor;
        ConvertStringSecurityDescriptorToSecurityDescriptorW(access, SDDL_REVISION_1, descriptor.Receive(), nullptr);
        EXPECT_EQ(RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, descriptor.Get()), ERROR_SUCCESS);
    }

    const wchar_t* path_;
};

// Counts the shell's notices of changed associations.
class AssociationNotices {
public:
    AssociationNotices() {
        WNDCLASSW windowClass = {};
        windowClass.lpfnWndProc = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
            if (message == notice) ++count;
            return DefWindowProcW(window, message, wParam, lParam);
        };
        windowClass.lpszClassName = L"AssociationNotices";
        RegisterClassW(&windowClass);
        window_ = CreateWindowW(L"AssociationNotices", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        constexpr int shellLevelNewDelivery = 0x0002 | 0x8000;  // SHCNRF_ShellLevel | SHCNRF_NewDelivery
        const SHChangeNotifyEntry everywhere = {nullptr, TRUE};
        registration_ =
            SHChangeNotifyRegister(window_, shellLevelNewDelivery, SHCNE_ASSOCCHANGED, notice, 1, &everywhere);
        count = 0;
    }
    AssociationNotices(const AssociationNotices&) = delete;
    AssociationNotices& operator=(const AssociationNotices&) = delete;
    ~AssociationNotices() {
        SHChangeNotifyDeregister(registration_);
        DestroyWindow(window_);
    }

    int Count() const {
        MSG msg;
        while (PeekMessageW(&msg, window_, 0, 0, PM_REMOVE)) DispatchMessageW(&msg);
        return count;
    }

private:
    static constexpr UINT notice = WM_APP + 1;
    static inline int count = 0;
    HWND window_;
    ULONG registration_;
};

class Registration : public testing::Test {
protected:
    ~Registration() override { Regsvr32(L"/s /u"); }
};

}  // namespace

TEST_F(Registration, RegistersExactlyItsRowsAndUnregistersThemAll) {
    const Listing machineBefore = ListMachine();
    const Listing userBefore = ListUser();
    ASSERT_EQ(Regsvr32(L"/s"), 0U);
    Listing added = Difference(machineBefore, ListMachine());
    for (const auto& [key, nothing] : SharedKeys()) added.erase(key);
    EXPECT_EQ(added, ExpectedRows());
    EXPECT_EQ(ListUser(), userBefore);

    ASSERT_EQ(Regsvr32(L"/s /u"), 0U);
    const Listing machineAfter = ListMachine();
    Listing left = Difference(machineBefore, machineAfter);
    for (const auto& [key, nothing] : SharedKeys()) left.erase(key);
    EXPECT_EQ(left, Listing());
    EXPECT_EQ(ListUser(), userBefore);
    EXPECT_TRUE(Difference(machineAfter, machineBefore).empty());  // nothing that was there is gone
}

TEST_F(Registration, RegisteringTwiceChangesNothing) {
    ASSERT_EQ(Regsvr32(L"/s"), 0U);
    const Listing once = ListOwnKeys();
    EXPECT_EQ(Regsvr32(L"/s"), 0U);
    EXPECT_EQ(ListOwnKeys(), once);
}

TEST_F(Registration, OtherAddinsOfAHostAreLeftAlone) {
    RegistryKey other;
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Office\\Word\\Addins\\Other.Addin", 0, nullptr, 0,
                    KEY_WRITE, nullptr, other.Receive(), nullptr);
    const Listing before = ListOwnKeys();
    Regsvr32(L"/s");
    Regsvr32(L"/s /u");
    EXPECT_TRUE(Difference(ListOwnKeys(), before).empty());
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Office\\Word\\Addins\\Other.Addin");
}

TEST_F(Registration, UnregisteringNothingSucceedsAndNotifiesTheShell) {
    const LoadedLibrary library;
    AssociationNotices notices;
    EXPECT_EQ(library.Unregister(), S_OK);
    EXPECT_EQ(notices.Count(), 1);
}

TEST_F(Registration, RegisteringAnswersOkAndNotifiesTheShell) {
    const LoadedLibrary library;
    AssociationNotices notices;
    EXPECT_EQ(library.Register(), S_OK);
    EXPECT_EQ(notices.Count(), 1);
}

TEST_F(Registration, WithoutAccessNothingIsWrittenAndTheShellIsNotNotified) {
    const DeniedKey denied(classKey);
    const Listing before = ListOwnKeys();
    const LoadedLibrary library;
    AssociationNotices notices;
    EXPECT_EQ(library.Register(), E_ACCESSDENIED);
    EXPECT_EQ(ListOwnKeys(), before);
    EXPECT_EQ(notices.Count(), 0);
    EXPECT_NE(Regsvr32(L"/s"), 0U);
}

TEST_F(Registration, FirstRowThatFailsEndsItAndEarlierRowsStay) {
    const Listing before = ListOwnKeys();
    const DeniedKey denied(excelKey);
    const LoadedLibrary library;
    EXPECT_EQ(library.Register(), E_ACCESSDENIED);
    Listing added = Difference(before, ListOwnKeys());
    for (const auto& [key, nothing] : SharedKeys()) added.erase(key);
    Listing expected = ExpectedRows();
    for (const wchar_t* host : {L"Excel", L"PowerPoint", L"Outlook"}) {
        std::erase_if(expected, [&](const auto& row) { return row.first.starts_with(AddinKey(host)); });
    }
    expected[AddinKey(L"Excel") + L"|key"] = L"";  // the denied key itself
    EXPECT_EQ(added, expected);
}
