#include "src/export/SaveDialog.h"

#include <commdlg.h>

#include "src/base/Paths.h"

namespace {

constexpr wchar_t pdfExtension[] = L".pdf";
constexpr size_t pdfExtensionLength = ARRAYSIZE(pdfExtension) - 1;
constexpr size_t longestPath = MAX_PATH - 1;

}  // namespace

std::wstring ProposedPdfPath(const std::wstring& fullName) {
    const std::wstring stem = GetFileNameOfPath(fullName, false);
    std::wstring folder = GetFolderOfPath(fullName);
    if (folder.size() + 1 + pdfExtensionLength > longestPath) folder.clear();
    return folder + Shortened(stem, longestPath - pdfExtensionLength - folder.size()) + pdfExtension;
}

std::wstring AskPdfSavePath(HWND owner, const std::wstring& fullName) {
    wchar_t file[MAX_PATH] = {};
    const std::wstring proposed = ProposedPdfPath(fullName);
    proposed.copy(file, longestPath);

    OPENFILENAMEW dialog = {};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = owner;
    dialog.lpstrFilter = L"PDF Files (*.pdf)\0*.pdf\0";  // the literal's own zero is the second one
    dialog.nFilterIndex = 1;
    dialog.lpstrFile = file;
    dialog.nMaxFile = ARRAYSIZE(file);
    dialog.lpstrDefExt = L"pdf";
    dialog.Flags = OFN_OVERWRITEPROMPT | OFN_HIDEREADONLY | OFN_PATHMUSTEXIST;
    return GetSaveFileNameW(&dialog) ? std::wstring(file) : std::wstring();
}

static_assert(sizeof(OPENFILENAMEW) == 152);
