#include "src/outlook/Attachments.h"

#include <functional>
#include <optional>

#include "src/automation/AutomationCalls.h"
#include "src/base/Paths.h"
#include "src/outlook/OutlookItems.h"

using Microsoft::WRL::ComPtr;

namespace {

// What `save` gives for each attachment of a mail, unless it is empty.
std::vector<std::wstring> SaveEach(IDispatch* item, const std::function<std::wstring(IDispatch*)>& save) {
    std::vector<std::wstring> saved;
    if (!IsMailItem(item)) return saved;
    const ComPtr<IDispatch> attachments = GetObjectProperty(item, L"Attachments");
    ForEachItem(attachments.Get(), [&](IDispatch* attachment) {
        std::wstring path = save(attachment);
        if (!path.empty()) saved.push_back(std::move(path));
    });
    return saved;
}

std::wstring SaveOne(IDispatch* attachment, const PathForName& pathForName, bool pdfOnly) {
    const std::optional<std::wstring> name = GetTextProperty(attachment, L"FileName");
    if (!name) return {};
    if (pdfOnly) {
        // These two forms alone, on purpose: an attachment named Report.Pdf is not opened.
        const std::wstring extension = GetExtensionOfPath(*name);
        if (extension != L".pdf" && extension != L".PDF") return {};
    }
    if (!IsPlainWholeFileName(*name)) return {};
    std::wstring path = pathForName(*name);
    const Bstr target(path);
    if (path.empty() || !target.Get()) return {};
    AutomationCallMethod1(attachment, L"SaveAsFile", nullptr, TextArgument(target));  // the file is what counts
    return Exists(path) ? path : std::wstring();
}

}  // namespace

std::vector<std::wstring> SaveMailAttachments(IDispatch* item, const std::wstring& folder, bool pdfOnly) {
    std::wstring destination;
    return SaveEach(item, [&](IDispatch* attachment) {
        if (destination.empty()) {
            destination = pdfOnly ? folder + L"\\" + GetMailKey(item) : folder;
            if (pdfOnly) MakeFolder(destination);
        }
        return SaveAttachment(attachment, destination, pdfOnly);
    });
}

std::vector<std::wstring> SaveMailAttachments(IDispatch* item, const PathForName& pathForName) {
    return SaveEach(item, [&](IDispatch* attachment) { return SaveOne(attachment, pathForName, false); });
}

std::wstring SaveAttachment(IDispatch* attachment, const std::wstring& folder, bool pdfOnly) {
    return SaveOne(
        attachment, [&](const std::wstring& name) { return PathInFolder(folder, name); }, pdfOnly);
}
