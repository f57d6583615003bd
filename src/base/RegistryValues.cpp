#include "src/base/RegistryValues.h"

#include <utility>

#include "src/base/Handles.h"

RegistryValueSpec::RegistryValueSpec(HKEY rootKey, std::wstring subkeyPath, std::wstring name, DWORD valueType,
                                     const void* valueData, bool ownsValueData)
    : root(rootKey),
      subkey(std::move(subkeyPath)),
      valueName(std::move(name)),
      type(valueType),
      data(valueData),
      ownsData(ownsValueData) {}

RegistryValueSpec::RegistryValueSpec(RegistryValueSpec&& other) noexcept
    : root(other.root),
      subkey(std::move(other.subkey)),
      valueName(std::move(other.valueName)),
      type(other.type),
      data(other.data),
      ownsData(std::exchange(other.ownsData, false)) {}

RegistryValueSpec::~RegistryValueSpec() {
    if (ownsData) delete[] static_cast<const BYTE*>(data);
}

HRESULT HResultFromWin32(LONG result) {
    return result > 0 ? static_cast<HRESULT>(0x80070000U | (static_cast<ULONG>(result) & 0xFFFFU))
                      : static_cast<HRESULT>(result);
}

HRESULT WriteRegistryValue(const RegistryValueSpec* spec) {
    if (!spec) return E_INVALIDARG;

    RegistryKey key;
    const LONG created = RegCreateKeyExW(spec->root, spec->subkey.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                         KEY_WRITE, nullptr, key.Receive(), nullptr);
    if (created != ERROR_SUCCESS) return HResultFromWin32(created);

    DWORD size = 0;
    switch (spec->type) {
        case REG_SZ:
        case REG_EXPAND_SZ:
            if (!spec->data) return E_INVALIDARG;
            size = static_cast<DWORD>((wcslen(static_cast<const wchar_t*>(spec->data)) + 1) * sizeof(wchar_t));
            break;
        case REG_DWORD: size = sizeof(DWORD); break;
        default: return E_NOTIMPL;
    }
    return HResultFromWin32(
        RegSetValueExW(key.Get(), spec->valueName.c_str(), 0, spec->type, static_cast<const BYTE*>(spec->data), size));
}

HRESULT WriteRegistryString(HKEY root, const std::wstring& subkey, const std::wstring& name, const wchar_t* text) {
    const RegistryValueSpec spec(root, subkey, name, REG_SZ, text);
    return WriteRegistryValue(&spec);
}

HRESULT WriteRegistryDword(HKEY root, const std::wstring& subkey, const std::wstring& name, DWORD value) {
    const RegistryValueSpec spec(root, subkey, name, REG_DWORD, &value);
    return WriteRegistryValue(&spec);
}

HRESULT DeleteRegistryTree(const RegistryValueSpec* spec) {
    if (!spec || spec->subkey.empty()) return E_INVALIDARG;
    const LONG result = RegDeleteTreeW(spec->root, spec->subkey.c_str());
    return result == ERROR_FILE_NOT_FOUND ? S_OK : HResultFromWin32(result);
}

HRESULT WriteRegistryValues(std::span<const RegistryValueSpec> rows) {
    HRESULT result = S_FALSE;
    for (const RegistryValueSpec& row : rows) {
        if (FAILED(result)) break;
        result = WriteRegistryValue(&row);
    }
    return result;
}

HRESULT DeleteRegistryTrees(std::span<const RegistryValueSpec> rows) {
    HRESULT result = S_OK;
    for (const RegistryValueSpec& row : rows) {
        if (FAILED(result)) break;
        result = DeleteRegistryTree(&row);
    }
    return result;
}

HRESULT DeleteRegistryValue(const RegistryValueSpec* spec) {
    if (!spec) return E_INVALIDARG;
    RegistryKey key;
    const LONG opened = RegOpenKeyExW(spec->root, spec->subkey.c_str(), 0, KEY_SET_VALUE, key.Receive());
    if (opened == ERROR_FILE_NOT_FOUND) return S_OK;
    if (opened != ERROR_SUCCESS) return HResultFromWin32(opened);
    const LONG result = RegDeleteValueW(key.Get(), spec->valueName.c_str());
    return result == ERROR_FILE_NOT_FOUND ? S_OK : HResultFromWin32(result);
}

std::optional<DWORD> ReadRegistryValue(HKEY root, const wchar_t* subkey, const wchar_t* name, void* data, DWORD size) {
    RegistryKey key;
    if (RegOpenKeyExW(root, subkey, 0, KEY_READ, key.Receive()) != ERROR_SUCCESS) return std::nullopt;
    if (RegQueryValueExW(key.Get(), name, nullptr, nullptr, static_cast<BYTE*>(data), &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return size;
}
