#include "src/outlook/CreateCommands.h"

#include <utility>
#include <vector>

#include "src/automation/AutomationCalls.h"
#include "src/base/Paths.h"
#include "src/export/PdfEngine.h"
#include "src/outlook/FileNames.h"
#include "src/outlook/MailCommand.h"
#include "src/outlook/MailConversion.h"
#include "src/outlook/OutlookItems.h"

using Microsoft::WRL::ComPtr;

namespace {

std::vector<std::wstring> PdfPaths(std::vector<MailRecord>&& records) {
    std::vector<std::wstring> paths;
    paths.reserve(records.size());
    for (MailRecord& record : records) paths.push_back(std::move(record.pdfPath));
    return paths;
}

// The path of the folder's merged PDF, which is made unless there is one: it is kept as it stands, on purpose, also
// when the folder has gained mails since. Where the merge fails, or the folder's name cannot be a file's, the path
// leads nowhere.
std::wstring MergedPdf(IDispatch* folder, const std::wstring& workingFolder, const std::vector<std::wstring>& paths) {
    const std::wstring mergedFolder = workingFolder + L"\\" + GetMailKey(folder);
    MakeFolder(mergedFolder);
    const std::wstring name = GetItemName(folder) + L".pdf";
    std::wstring merged = PathInFolder(mergedFolder, name);
    if (merged.empty()) return mergedFolder + L"\\" + name;
    // What a failed merge may have left would be taken for the merged PDF ever after.
    if (!Exists(merged) && !MergePdfFiles(merged, paths)) DeleteFileW(merged.c_str());
    return merged;
}

}  // namespace

bool CreatePdfFromSelection(AddinState& addin, IDispatch* application, const std::wstring& workingFolder) {
    MailCommand command(addin, workingFolder);
    const ComPtr<IDispatch> items = GetSelectedItems(application);
    return items && command.Finish(PdfPaths(ConvertMailsToPdf(addin, items.Get(), command)));
}

bool CreatePdfFromFolder(AddinState& addin, IDispatch* application, const std::wstring& workingFolder, bool merge) {
    MailCommand command(addin, workingFolder);
    const ComPtr<IDispatch> folder = GetCurrentFolder(application);
    const ComPtr<IDispatch> items = GetObjectProperty(folder.Get(), L"Items");
    if (!items) return false;
    std::vector<MailRecord> records = ConvertMailsToPdf(addin, items.Get(), command);
    SortByReceivedTime(records);
    std::vector<std::wstring> paths = PdfPaths(std::move(records));
    if (merge && paths.size() > 1) paths = {MergedPdf(folder.Get(), workingFolder, paths)};
    return command.Finish(paths);
}
