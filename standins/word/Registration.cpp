// Registration of the Word stand-in.
#include "standins/word/Registration.h"

#include <oleauto.h>

#include <string>

#include "src/base/Handles.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr GUID typeLibraryId = {0x00020905, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

struct Row {
    const wchar_t* key;
    const wchar_t* value;  // the default value; null: the program's path, quoted
};

constexpr wchar_t classKey[] = L"SOFTWARE\\Classes\\CLSID\\{000209FF-0000-0000-C000-000000000046}";
constexpr wchar_t progIdKey[] = L"SOFTWARE\\Classes\\Word.Application";

constexpr Row rows[] = {
    {classKey, L"Word stand-in"},
    {L"SOFTWARE\\Classes\\CLSID\\{000209FF-0000-0000-C000-000000000046}\\LocalServer32", nullptr},
    {L"SOFTWARE\\Classes\\CLSID\\{000209FF-0000-0000-C000-000000000046}\\ProgID", L"Word.Application"},
    {progIdKey, L"Word stand-in"},
    {L"SOFTWARE\\Classes\\Word.Application\\CLSID", L"{000209FF-0000-0000-C000-000000000046}"},
};

std::wstring ProgramPath() {
    wchar_t path[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    return length < MAX_PATH ? path : L"";
}

}  // namespace

HRESULT RegisterWord() {
    const std::wstring program = ProgramPath();
    if (program.empty()) return HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE);
    ComPtr<ITypeLib> library;
    const HRESULT loaded = LoadTypeLibEx(program.c_str(), REGKIND_REGISTER, library.GetAddressOf());
    if (FAILED(loaded)) return loaded;
    const std::wstring quoted = L"\"" + program + L"\"";
    for (const Row& row : rows) {
        const std::wstring value = row.value ? row.value : quoted;
        const LSTATUS written = RegSetKeyValueW(HKEY_LOCAL_MACHINE, row.key, nullptr, REG_SZ, value.c_str(),
                                                static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
        if (written != ERROR_SUCCESS) return HRESULT_FROM_WIN32(written);
    }
    return S_OK;
}

HRESULT UnregisterWord() {
    UnRegisterTypeLib(typeLibraryId, 1, 0, LOCALE_NEUTRAL, SYS_WIN64);
    for (const wchar_t* const key : {classKey, progIdKey}) {
        const LSTATUS deleted = RegDeleteTreeW(HKEY_LOCAL_MACHINE, key);
        if (deleted != ERROR_SUCCESS && deleted != ERROR_FILE_NOT_FOUND) return HRESULT_FROM_WIN32(deleted);
    }
    return S_OK;
}
