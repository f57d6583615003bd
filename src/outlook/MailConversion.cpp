// The conversion of mails.
#include "src/outlook/MailConversion.h"

#include <optional>

#include "src/automation/AutomationCalls.h"
#include "src/base/Barrier.h"
#include "src/base/Paths.h"
#include "src/export/PdfEngine.h"
#include "src/outlook/Attachments.h"
#include "src/outlook/FileNames.h"
#include "src/outlook/OutlookItems.h"
#include "src/outlook/WordConversion.h"

namespace {

// The path of the PDF that was made for that mail and is still there.
std::optional<std::wstring> CachedPdf(const AddinState& addin, const std::wstring& key) {
    if (!IsDistinctKey(key)) return std::nullopt;
    const auto known = addin.conversionCache.find(key);
    if (known == addin.conversionCache.end() || !Exists(known->second)) return std::nullopt;
    return known->second;
}

// Makes the mail's PDF and gives its path; empty where it did not work.
std::wstring ConvertMail(AddinState& addin, IDispatch* item, const std::wstring& workingFolder,
                         const std::wstring& key) {
    WorkFiles workFiles;
    const std::wstring document = SaveMailAs(item, workingFolder, olDoc, &workFiles);
    if (document.empty()) return {};
    // Mails without a key of their own share a folder.
    const std::wstring pdfPath = MailPdfPath(item, workingFolder, key, !IsDistinctKey(key));
    if (pdfPath.empty() || !ConvertWithWord(addin, document, pdfPath)) return {};
    if (IsDistinctKey(key)) addin.conversionCache[key] = pdfPath;

    // A failed embedding leaves the PDF as it is, whatever failed.
    const std::wstring& pdf = workFiles.Follow(pdfPath);
    Barrier([&]() -> HRESULT {
        const std::vector<std::wstring> attachments = SaveMailAttachments(item, workingFolder, false, &workFiles);
        if (!attachments.empty()) AttachFilesToPdf(pdf, attachments, false);
        return S_OK;
    });
    workFiles.Finish();
    return pdf;
}

}  // namespace

std::vector<MailRecord> ConvertMailsToPdf(AddinState& addin, IDispatch* items, const std::wstring& workingFolder) {
    std::vector<MailRecord> records;
    ForEachItem(items, [&](IDispatch* item) {
        const std::wstring key = GetMailKey(item);
        const SYSTEMTIME received = GetReceivedTime(item);
        const std::optional<std::wstring> cached = CachedPdf(addin, key);
        const std::wstring pdfPath = cached ? *cached : ConvertMail(addin, item, workingFolder, key);
        if (!pdfPath.empty()) records.push_back({item, key, pdfPath, received});
    });
    return records;
}

std::wstring SaveMailAs(IDispatch* item, const std::wstring& folder, LONG saveAsType, WorkFiles* workFiles) {
    if (!IsMailItem(item)) return {};
    const std::wstring subject = GetMailSubject(item);
    if (subject.empty()) return {};
    std::wstring path = PathInFolder(folder, subject + SaveAsExtension(saveAsType));
    const Bstr target(path);
    if (path.empty() || !target.Get()) return {};
    if (workFiles && !workFiles->AddDocument(path)) return {};
    const VARIANT arguments[] = {TextArgument(target), MakeVariantInt(saveAsType)};
    AutomationCallMethod(item, L"SaveAs", nullptr, ARRAYSIZE(arguments), arguments);  // the file is what counts
    return Exists(path) ? path : std::wstring();
}

std::wstring MailPdfPath(IDispatch* item, const std::wstring& workingFolder, const std::wstring& key, bool unique) {
    const std::wstring subject = GetMailSubject(item);
    if (subject.empty()) return {};
    const std::wstring folder = key.empty() ? workingFolder : workingFolder + L"\\" + key;
    std::wstring path = PathInFolder(folder, subject + L".pdf");
    if (path.empty()) return {};
    MakeFolder(folder);
    if (unique) path = MakeUniquePath(0, path);
    return IsShortEnough(path) ? path : std::wstring();
}
