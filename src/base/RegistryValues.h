// Registry values as data: one record names a value, small functions write and delete what a record names.
#pragma once

#include <windows.h>

#include <optional>
#include <span>
#include <string>

// One registry value. `data` is the caller's unless `ownsData` is set; then it was made by new BYTE[] and the record
// frees it.
struct RegistryValueSpec {
    HKEY root = nullptr;  // a predefined root
    std::wstring subkey;
    std::wstring valueName;  // empty: the key's default value
    DWORD type = REG_NONE;   // REG_SZ, REG_EXPAND_SZ or REG_DWORD
    const void* data = nullptr;
    bool ownsData = false;

    RegistryValueSpec(HKEY rootKey, std::wstring subkeyPath, std::wstring name = {}, DWORD valueType = REG_NONE,
                      const void* valueData = nullptr, bool ownsValueData = false);
    RegistryValueSpec(RegistryValueSpec&& other) noexcept;
    RegistryValueSpec& operator=(RegistryValueSpec&&) = delete;
    RegistryValueSpec(const RegistryValueSpec&) = delete;
    RegistryValueSpec& operator=(const RegistryValueSpec&) = delete;
    ~RegistryValueSpec();
};

// A Win32 result as an HRESULT: a positive code gets facility Win32, zero is S_OK, a negative value passes unchanged.
HRESULT HResultFromWin32(LONG result);

// Writes the value, and its key where that is missing. E_INVALIDARG for no record or a text without data, E_NOTIMPL for
// another type, otherwise the registry's own error.
HRESULT WriteRegistryValue(const RegistryValueSpec* spec);
HRESULT WriteRegistryString(HKEY root, const std::wstring& subkey, const std::wstring& name, const wchar_t* text);
HRESULT WriteRegistryDword(HKEY root, const std::wstring& subkey, const std::wstring& name, DWORD value);

// Deletes the record's key with everything below it; a key that is already gone is no error. E_INVALIDARG for no record
// or an empty subkey, which would name a whole root.
HRESULT DeleteRegistryTree(const RegistryValueSpec* spec);

// Each row in turn, up to the first that fails, whose error is the answer; earlier rows stay done. S_FALSE for writing
// no row at all, S_OK for deleting none.
HRESULT WriteRegistryValues(std::span<const RegistryValueSpec> rows);
HRESULT DeleteRegistryTrees(std::span<const RegistryValueSpec> rows);

// Deletes the value; a key or value that is already gone is no error.
HRESULT DeleteRegistryValue(const RegistryValueSpec* spec);

// Reads the value into the `size` bytes at `data`, whatever its type, and gives how many of them it has. Nothing when
// it is missing or longer.
std::optional<DWORD> ReadRegistryValue(HKEY root, const wchar_t* subkey, const wchar_t* name, void* data, DWORD size);
