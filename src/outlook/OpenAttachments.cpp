// Opening PDF attachments.
#include "src/outlook/OpenAttachments.h"

#include <iterator>
#include <vector>

#include "src/export/Companion.h"
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
    std::vector<std::wstring> files;
    ForEachItem(items, [&](IDispatch* item) {
        std::vector<std::wstring> saved = SaveMailAttachments(item, workingFolder, true);
        files.insert(files.end(), std::make_move_iterator(saved.begin()), std::make_move_iterator(saved.end()));
    });
    return OpenInCompanion(addin, files, L"There are no PDF attachments that can be opened");
}
