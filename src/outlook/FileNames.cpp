#include "src/outlook/FileNames.h"

#include <windows.h>
#include <shlobj.h>
#include <shlwapi.h>

#include <algorithm>
#include <iterator>

#include "src/base/ControlIds.h"
#include "src/base/Paths.h"

namespace {

constexpr wchar_t rootFolderName[] = L"ZAVO Outlook PDFs";
constexpr wchar_t openFolder[] = L"\\Open";
constexpr wchar_t createFolder[] = L"\\Create";

struct WorkingFolder {
    std::wstring_view controlId;
    const wchar_t* subfolder;
};

constexpr WorkingFolder workingFolders[] = {
    {Button_ID_OpenFromMail, openFolder},          {Button_ID_OpenFromFolder, openFolder},
    {Button_ID_CreateByMail, createFolder},        {Button_ID_CreateByFolder, createFolder},
    {Button_ID_CreateMergeByFolder, createFolder}, {Button_ID_CreatePortfolioByMail, createFolder},
};

struct SaveType {
    long type;
    const wchar_t* extension;
};

constexpr SaveType saveTypes[] = {
    {0, L".txt"}, {1, L".rtf"}, {2, L".oft"}, {olDoc, L".doc"}, {5, L".html"},
    {6, L".vcf"}, {7, L".vcs"}, {8, L".ics"}, {10, L".mhtml"},
};

// "COM1" and so on also with the digits one to three raised, as Windows has it.
constexpr std::wstring_view deviceNames[] = {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$"};
constexpr std::wstring_view numberedDeviceNames[] = {L"COM", L"LPT"};
constexpr std::wstring_view deviceNumbers = L"0123456789\u00B9\u00B2\u00B3";

bool IsForbidden(wchar_t c) { return c < 32 || std::wstring_view(L"<>:\"/\\|?*").find(c) != std::wstring_view::npos; }

bool EqualIgnoringCase(std::wstring_view one, std::wstring_view other) {
    return CompareStringOrdinal(one.data(), static_cast<int>(one.size()), other.data(), static_cast<int>(other.size()),
                                TRUE) == CSTR_EQUAL;
}

// A device's name stays one with an extension, and with blanks before that.
bool IsDeviceName(std::wstring_view name) {
    name = name.substr(0, name.find(L'.'));
    while (!name.empty() && name.back() == L' ') name.remove_suffix(1);
    if (name.size() == 4 && deviceNumbers.find(name.back()) != std::wstring_view::npos) {
        return std::any_of(std::begin(numberedDeviceNames), std::end(numberedDeviceNames),
                           [&](std::wstring_view device) { return EqualIgnoringCase(name.substr(0, 3), device); });
    }
    return std::any_of(std::begin(deviceNames), std::end(deviceNames),
                       [&](std::wstring_view device) { return EqualIgnoringCase(name, device); });
}

std::wstring Joined(const wchar_t* folder, const std::wstring& name) {
    wchar_t path[MAX_PATH] = L"";
    return PathCombineW(path, folder, name.c_str()) ? path : L"";
}

std::wstring Subfolder(const wchar_t* folder, const std::wstring& name) {
    if (name.empty()) return folder;
    std::wstring path = Joined(folder, name);
    if (!path.empty()) CreateDirectoryW(path.c_str(), nullptr);
    return path;
}

std::wstring OutputPath(const std::wstring& folder, const std::wstring& sourcePath) {
    if (folder.empty()) return {};
    const std::wstring path = Joined(folder.c_str(), GetFileNameOfPath(sourcePath, false) + L".pdf");
    return path.empty() ? path : MakeUniquePath(0, path);
}

}  // namespace

std::wstring GetDocumentsSubfolder(const std::wstring& name) {
    wchar_t documents[MAX_PATH] = L"";
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_PERSONAL | CSIDL_FLAG_CREATE, nullptr, SHGFP_TYPE_CURRENT, documents))) {
        return {};
    }
    return Subfolder(documents, name);
}

std::wstring GetTempSubfolder(const std::wstring& name) {
    wchar_t temporary[MAX_PATH] = L"";
    const DWORD length = GetTempPathW(MAX_PATH, temporary);
    if (length == 0 || length >= MAX_PATH) return {};
    return Subfolder(temporary, name);
}

std::wstring GetOutlookWorkingFolder(std::wstring_view controlId) {
    for (const WorkingFolder& folder : workingFolders) {
        if (folder.controlId != controlId) continue;
        // Without a Documents folder there is nowhere to work: the bare subfolder would be one of the current drive.
        const std::wstring root = GetDocumentsSubfolder(rootFolderName);
        return root.empty() ? root : root + folder.subfolder;
    }
    return {};
}

std::wstring GetDocumentsOutputPath(const std::wstring& sourcePath, const std::wstring& subfolder) {
    return OutputPath(GetDocumentsSubfolder(subfolder), sourcePath);
}

std::wstring GetTempOutputPath(const std::wstring& sourcePath, const std::wstring& subfolder) {
    return OutputPath(GetTempSubfolder(subfolder), sourcePath);
}

std::wstring SaveAsExtension(long type) {
    const auto* found = std::find_if(std::begin(saveTypes), std::end(saveTypes),
                                     [type](const SaveType& row) { return row.type == type; });
    return found == std::end(saveTypes) ? L".msg" : found->extension;
}

bool IsPlainFileName(std::wstring_view name) {
    return std::none_of(name.begin(), name.end(), IsForbidden) && !IsDeviceName(name);
}

bool IsPlainWholeFileName(std::wstring_view name) {
    return !name.empty() && name.back() != L'.' && name.back() != L' ' && IsPlainFileName(name);
}

bool IsShortEnough(const std::wstring& path) { return path.size() < MAX_PATH; }

std::wstring PathInFolder(const std::wstring& folder, const std::wstring& name) {
    std::wstring path = folder + L"\\" + name;
    return IsPlainFileName(name) && IsShortEnough(path) ? path : std::wstring();
}

std::wstring WithoutForbiddenCharacters(std::wstring name) {
    std::replace_if(name.begin(), name.end(), IsForbidden, L'-');
    return name;
}
