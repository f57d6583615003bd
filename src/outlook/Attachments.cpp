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
    std::wstring destination;
    ForEachItem(attachments.Get(), [&](IDispatch* attachment) {
        if (destination.empty()) {
            destination = pdfOnly ? folder + L"\\" + GetMailKey(item) : folder;
            if (pdfOnly) MakeFolder(destination);
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
    if (!IsPlainWholeFileName(*name)) return {};
    std::wstring path = PathInFolder(folder, *name);
    const Bstr target(path);
    if (path.empty() || !target.Get()) return {};
    if (workFiles && !workFiles->AddAttachment(path)) return {};
    AutomationCallMethod1(attachment, L"SaveAsFile", nullptr, TextArgument(target));  // the file is what counts
    if (Exists(path)) return path;
    if (workFiles) workFiles->ForgetAttachment(path);
    return {};
}
