// Attachments of a mail.
#include "src/outlook/Attachments.h"

#include <optional>

#include "src/automation/AutomationCalls.h"
#include "src/base/Paths.h"
#include "src/outlook/FileNames.h"
#include "src/outlook/OutlookItems.h"

using Microsoft::WRL::ComPtr;

std::vector<std::wstring> SaveMailAttachments(IDispatch* item, const std::wstring& folder, bool pdfOnly,
                                              WorkFiles* workFiles) {
    std::vector<std::wstring> saved;
    if (!IsMailItem(item)) return saved;
    const ComPtr<IDispatch> attachments = GetObjectProperty(item, L"Attachments");
    ForEachItem(attachments.Get(), [&](IDispatch* attachment) {
        std::wstring destination = folder;
        if (pdfOnly) {
            destination += L"\\" + GetMailKey(item);
            MakeFolder(destination);
        }
        std::wstring path = SaveAttachment(attachment, destination, pdfOnly, workFiles);
        if (!path.empty()) saved.push_back(std::move(path));
    });
    return saved;
}

std::wstring SaveAttachment(IDispatch* attachment, const std::wstring& folder, bool pdfOnly, WorkFiles* workFiles) {
    const std::optional<std::wstring> name = GetTextProperty(attachment, L"FileName");
    if (!name) return {};
    if (pdfOnly) {
        // These two forms alone, on purpose: an attachment named Report.Pdf is not opened.
        const std::wstring extension = GetExtensionOfPath(*name);
        if (extension != L".pdf" && extension != L".PDF") return {};
    }
    std::wstring path = folder + L"\\" + *name;
    if (!IsPlainWholeFileName(*name) || !IsShortEnough(path)) return {};
    if (workFiles && !workFiles->AddAttachment(path)) return {};
    const Bstr target(path);
    if (!target.Get()) return {};
    AutomationCallMethod1(attachment, L"SaveAsFile", nullptr, TextArgument(target));  // the file is what counts
    return Exists(path) ? path : std::wstring();
}
