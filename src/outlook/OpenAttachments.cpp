#include "src/outlook/OpenAttachments.h"

#include <iterator>
#include <vector>

#include "src/automation/AutomationCalls.h"
#include "src/export/Companion.h"
#include "src/export/OwnerWindow.h"
#include "src/outlook/Attachments.h"
#include "src/outlook/OutlookItems.h"

using Microsoft::WRL::ComPtr;

bool OpenPdfAttachmentsFromSelection(const AddinState& addin, IDispatch* application,
                                     const std::wstring& workingFolder) {
    const ComPtr<IDispatch> items = GetSelectedItems(application);
    return items && OpenPdfAttachments(addin, items.Get(), workingFolder);
}

bool OpenPdfAttachmentsFromFolder(const AddinState& addin, IDispatch* application, const std::wstring& workingFolder) {
    const ComPtr<IDispatch> items = GetCurrentFolderItems(application);
    return items && OpenPdfAttachments(addin, items.Get(), workingFolder);
}

bool OpenPdfAttachments(const AddinState& addin, IDispatch* items, const std::wstring& workingFolder) {
    const HWND owner = GetOwnerWindow(addin);
    std::vector<std::wstring> files;
    ForEachItem(owner, items, GetNumberProperty(items, L"Count").value_or(0), [&](IDispatch* item) {
        std::vector<std::wstring> saved = SaveMailAttachments(item, workingFolder, true);
        files.insert(files.end(), std::make_move_iterator(saved.begin()), std::make_move_iterator(saved.end()));
    });
    return OpenInCompanion(addin, files, L"There are no PDF attachments that can be opened");
}
