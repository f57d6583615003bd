#include "src/outlook/MailConversion.h"

#include <optional>
#include <string>

#include "src/automation/AutomationCalls.h"
#include "src/base/Barrier.h"
#include "src/base/Paths.h"
#include "src/export/PdfEngine.h"
#include "src/outlook/FileNames.h"
#include "src/outlook/MailOnDisk.h"
#include "src/outlook/OutlookItems.h"

namespace {

// The path of the PDF that was made for that mail and is still there.
std::optional<std::wstring> CachedPdf(const AddinState& addin, const std::wstring& key) {
    if (!IsDistinctKey(key)) return std::nullopt;
    const auto known = addin.conversionCache.find(key);
    if (known == addin.conversionCache.end() || !Exists(known->second)) return std::nullopt;
    return known->second;
}

// Makes the mail's PDF and gives its path; empty where it did not work.
std::wstring ConvertMail(AddinState& addin, IDispatch* item, MailCommand& command, const std::wstring& key) {
    MailOnDisk mail(item, command);
    std::wstring pdf = mail.MakePdf(key, !IsDistinctKey(key));  // mails without a key of their own share a folder
    if (pdf.empty()) return pdf;
    if (IsDistinctKey(key)) addin.conversionCache[key] = pdf;
    // A failed embedding leaves the PDF as it is, whatever failed.
    Barrier([&]() -> HRESULT {
        const std::vector<std::wstring> attachments = mail.SaveAttachments();
        if (!attachments.empty()) AttachFilesToPdf(pdf, attachments, false);
        return S_OK;
    });
    return pdf;
}

}  // namespace

std::vector<MailRecord> ConvertMailsToPdf(AddinState& addin, IDispatch* items, MailCommand& command) {
    std::vector<MailRecord> records;
    const LONG count = GetNumberProperty(items, L"Count").value_or(0);
    command.ForEachMail(items, count, [&](IDispatch* item) {
        const std::wstring key = GetMailKey(item);
        const SYSTEMTIME received = GetReceivedTime(item);
        const std::optional<std::wstring> cached = CachedPdf(addin, key);
        const std::wstring pdfPath = cached ? *cached : ConvertMail(addin, item, command, key);
        if (!pdfPath.empty()) records.push_back({nullptr, key, pdfPath, received});
    });
    return records;
}
