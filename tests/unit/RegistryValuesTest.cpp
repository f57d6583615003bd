// The registry primitives on the real registry.
#include "src/base/RegistryValues.h"

#include <gtest/gtest.h>

#include <cstring>

#include "src/base/Handles.h"
#include "tests/support/Registry.h"

namespace {

constexpr wchar_t root[] = L"SOFTWARE\\ZavoTest";

class RegistryValues : public testing::Test {
protected:
    RegistryValues() { RegDeleteTreeW(HKEY_CURRENT_USER, root); }
    ~RegistryValues() override { RegDeleteTreeW(HKEY_CURRENT_USER, root); }

    static std::map<std::wstring, std::wstring> Listing() {
        std::map<std::wstring, std::wstring> found;
        ListRegistry(HKEY_CURRENT_USER, root, found);
        return found;
    }
};

}  // namespace

TEST_F(RegistryValues, Win32ResultsBecomeHResults) {
    EXPECT_EQ(HResultFromWin32(0), S_OK);
    EXPECT_EQ(HResultFromWin32(5), static_cast<HRESULT>(0x80070005));
    EXPECT_EQ(HResultFromWin32(0x12345), static_cast<HRESULT>(0x80072345));
    EXPECT_EQ(HResultFromWin32(E_NOTIMPL), E_NOTIMPL);
}

TEST_F(RegistryValues, TextIsStoredWithItsTerminatingZero) {
    for (const DWORD type : {DWORD{REG_SZ}, DWORD{REG_EXPAND_SZ}}) {
        const RegistryValueSpec spec(HKEY_CURRENT_USER, root, L"name", type, L"ab");
        EXPECT_EQ(WriteRegistryValue(&spec), S_OK);
        EXPECT_EQ(Listing().at(std::wstring(root) + L"|name"), std::to_wstring(type) + L":610062000000");
    }
}

TEST_F(RegistryValues, NumberIsStoredInFourBytes) {
    EXPECT_EQ(WriteRegistryDword(HKEY_CURRENT_USER, root, L"n", 0x01020304), S_OK);
    EXPECT_EQ(Listing().at(std::wstring(root) + L"|n"), L"4:04030201");
}

TEST_F(RegistryValues, EmptyNameIsTheKeysDefaultValue) {
    EXPECT_EQ(WriteRegistryString(HKEY_CURRENT_USER, root, L"", L"x"), S_OK);
    EXPECT_EQ(Listing().at(std::wstring(root) + L"|"), L"1:78000000");
}

TEST_F(RegistryValues, MissingRecordIsInvalid) {
    EXPECT_EQ(WriteRegistryValue(nullptr), E_INVALIDARG);
    EXPECT_EQ(DeleteRegistryTree(nullptr), E_INVALIDARG);
    EXPECT_EQ(DeleteRegistryValue(nullptr), E_INVALIDARG);
}

TEST_F(RegistryValues, TextWithoutDataIsInvalidAndOtherTypesAreNotImplemented) {
    const RegistryValueSpec noData(HKEY_CURRENT_USER, root, L"a", REG_SZ, nullptr);
    EXPECT_EQ(WriteRegistryValue(&noData), E_INVALIDARG);
    const RegistryValueSpec binary(HKEY_CURRENT_USER, root, L"b", REG_BINARY, L"x");
    EXPECT_EQ(WriteRegistryValue(&binary), E_NOTIMPL);
    // The key itself was made on the way; no value was.
    EXPECT_EQ(Listing().size(), 1U);
}

TEST_F(RegistryValues, KeyThatCannotBeMadeAnswersItsError) {
    const RegistryValueSpec spec(nullptr, root, L"a", REG_SZ, L"x");
    EXPECT_EQ(WriteRegistryValue(&spec), HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE));
}

TEST_F(RegistryValues, DeletedTreeTakesEverythingBelowAndMayBeGone) {
    WriteRegistryString(HKEY_CURRENT_USER, L"SOFTWARE\\ZavoTest\\a\\b", L"x", L"y");
    const RegistryValueSpec spec(HKEY_CURRENT_USER, root);
    EXPECT_EQ(DeleteRegistryTree(&spec), S_OK);
    EXPECT_TRUE(Listing().empty());
    EXPECT_EQ(DeleteRegistryTree(&spec), S_OK);
}

TEST_F(RegistryValues, WholeRootIsNeverDeleted) {
    WriteRegistryString(HKEY_CURRENT_USER, root, L"x", L"y");
    RegistryKey key;  // stands for a root, which a mistake here would empty
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, root, 0, KEY_ALL_ACCESS, key.Receive()), ERROR_SUCCESS);
    const RegistryValueSpec spec(key.Get(), L"");
    EXPECT_EQ(DeleteRegistryTree(&spec), E_INVALIDARG);
    EXPECT_EQ(Listing().size(), 2U);
}

TEST_F(RegistryValues, RowsAreDoneUpToTheFirstThatFails) {
    const RegistryValueSpec rows[] = {{HKEY_CURRENT_USER, root, L"a", REG_SZ, L"1"},
                                      {HKEY_CURRENT_USER, root, L"b", REG_BINARY, L"2"},
                                      {HKEY_CURRENT_USER, root, L"c", REG_SZ, L"3"}};
    EXPECT_EQ(WriteRegistryValues(rows), E_NOTIMPL);
    EXPECT_EQ(Listing().size(), 2U);  // the key and a
    EXPECT_EQ(WriteRegistryValues({}), S_FALSE);
    EXPECT_EQ(WriteRegistryValues(std::span(rows).first(1)), S_OK);
}

TEST_F(RegistryValues, TreesAreDeletedUpToTheFirstThatFails) {
    for (const wchar_t* name : {L"a", L"b"}) {
        WriteRegistryString(HKEY_CURRENT_USER, std::wstring(root) + L"\\" + name, L"x", L"y");
    }
    const RegistryValueSpec rows[] = {{HKEY_CURRENT_USER, std::wstring(root) + L"\\a"},
                                      {HKEY_CURRENT_USER, L""},
                                      {HKEY_CURRENT_USER, std::wstring(root) + L"\\b"}};
    EXPECT_EQ(DeleteRegistryTrees(rows), E_INVALIDARG);
    EXPECT_EQ(Listing().count(std::wstring(root) + L"\\a|key"), 0U);
    EXPECT_EQ(Listing().count(std::wstring(root) + L"\\b|key"), 1U);
    EXPECT_EQ(DeleteRegistryTrees({}), S_OK);
}

TEST_F(RegistryValues, DeletedValueMayBeGoneAndSoMayItsKey) {
    const RegistryValueSpec spec(HKEY_CURRENT_USER, root, L"x");
    EXPECT_EQ(DeleteRegistryValue(&spec), S_OK);
    WriteRegistryString(HKEY_CURRENT_USER, root, L"x", L"y");
    WriteRegistryString(HKEY_CURRENT_USER, root, L"z", L"y");
    EXPECT_EQ(DeleteRegistryValue(&spec), S_OK);
    EXPECT_EQ(Listing().size(), 2U);  // the key and z
    EXPECT_EQ(DeleteRegistryValue(&spec), S_OK);
}

TEST_F(RegistryValues, RecordFreesItsDataOnceAlsoWhenItMoved) {
    auto* data = new BYTE[4]{1, 0, 0, 0};
    RegistryValueSpec first(HKEY_CURRENT_USER, root, L"x", REG_DWORD, data, true);
    const RegistryValueSpec second(std::move(first));
    EXPECT_FALSE(first.ownsData);
    EXPECT_TRUE(second.ownsData);
    EXPECT_EQ(second.data, data);
}
