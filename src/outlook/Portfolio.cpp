// A portfolio of mails.
#include "src/outlook/Portfolio.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

#include "src/automation/AutomationCalls.h"
#include "src/base/Barrier.h"
#include "src/base/Paths.h"
#include "src/export/Companion.h"
#include "src/export/PdfEngine.h"
#include "src/outlook/Attachments.h"
#include "src/outlook/FileNames.h"
#include "src/outlook/MailConversion.h"
#include "src/outlook/OutlookItems.h"
#include "src/outlook/WordConversion.h"
#include "src/outlook/WorkFiles.h"
#include "src/ui/StringTable.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr wchar_t portfolioName[] = L"Portfolio";  // of the file, in every language

// The portfolio that a command makes. One that stays empty is deleted.
class NewPortfolio {
public:
    explicit NewPortfolio(std::wstring path) : path_(std::move(path)) {}
    NewPortfolio(const NewPortfolio&) = delete;
    NewPortfolio& operator=(const NewPortfolio&) = delete;
    ~NewPortfolio() {
        if (!hasMails_) DeleteFileW(path_.c_str());
    }

    const std::wstring& Path() const { return path_; }
    bool HasMails() const { return hasMails_; }

    void SetHasMails() { hasMails_ = true; }
    void MoveTo(std::wstring path) { path_ = std::move(path); }

private:
    std::wstring path_;
    bool hasMails_ = false;
};

// A copy of the portfolio for the time that something is embedded into it. Attachments may want the place of either, so
// both are followed.
class SafetyCopy {
public:
    SafetyCopy(WorkFiles& workFiles, const std::wstring& portfolio, const std::wstring& path)
        : portfolio_(portfolio),
          copy_(workFiles.Follow(path)),
          made_(CopyFileW(portfolio.c_str(), path.c_str(), FALSE)) {}
    SafetyCopy(const SafetyCopy&) = delete;
    SafetyCopy& operator=(const SafetyCopy&) = delete;
    ~SafetyCopy() {
        if (!isNeeded_) DeleteFileW(copy_.c_str());
    }

    explicit operator bool() const { return made_; }
    // At once, because a copy could end in the middle. A copy that could not be put back stays.
    void PutBack() { isNeeded_ = !MoveFileExW(copy_.c_str(), portfolio_.c_str(), MOVEFILE_REPLACE_EXISTING); }

private:
    const std::wstring& portfolio_;
    const std::wstring& copy_;
    const bool made_;
    bool isNeeded_ = false;
};

// One language's word has characters that file names forbid.
std::wstring SafetyCopyName(const std::wstring& key) {
    return WithoutForbiddenCharacters(Localize(GetLocalizedStringTable(), L"Portfolio") + L"_" + key + L".pdf");
}

// Embeds the mail's PDF and its attachments.
bool Embed(IDispatch* item, const std::wstring& pdf, const std::wstring& key, const std::wstring& workingFolder,
           const std::wstring& portfolio, WorkFiles& workFiles) {
    const std::wstring copy = PathInFolder(workingFolder, SafetyCopyName(key));
    if (copy.empty() || !workFiles.MakeRoom(copy)) return false;
    SafetyCopy safety(workFiles, portfolio, copy);
    if (!safety) return false;

    std::vector<std::wstring> attachments = SaveMailAttachments(item, workingFolder, false, &workFiles);
    bool embedded = false;
    Barrier([&]() -> HRESULT {
        std::vector<std::wstring> files = {pdf};
        std::move(attachments.begin(), attachments.end(), std::back_inserter(files));
        embedded = AttachFilesToPdf(portfolio, files, true);
        return S_OK;
    });
    if (!embedded) safety.PutBack();
    return embedded;
}

// Converts the mail and embeds it. PDFs of earlier commands are not used: those have the attachments inside already.
void AddMail(const AddinState& addin, IDispatch* item, const std::wstring& workingFolder, NewPortfolio& newPortfolio) {
    WorkFiles workFiles;
    const std::wstring key = GetMailKey(item);
    const std::wstring document = SaveMailAs(item, workingFolder, olDoc, &workFiles);
    if (document.empty()) return;
    const std::wstring pdfPath = MailPdfPath(item, workingFolder, key, true);
    if (pdfPath.empty() || !ConvertWithWord(addin, document, pdfPath) || !Exists(pdfPath)) return;

    const std::wstring& pdf = workFiles.Follow(pdfPath);
    std::wstring& portfolio = workFiles.Follow(newPortfolio.Path());
    if (Embed(item, pdf, key, workingFolder, portfolio, workFiles)) newPortfolio.SetHasMails();
    workFiles.Finish();
    newPortfolio.MoveTo(std::move(portfolio));
}

}  // namespace

bool CreatePortfolioFromSelection(const AddinState& addin, IDispatch* application, const std::wstring& workingFolder) {
    const ComPtr<IDispatch> items = GetSelectedItems(application);
    const std::optional<LONG> count = GetNumberProperty(items.Get(), L"Count");
    if (!count || *count < 1) return false;
    std::wstring path = MakeUniquePath(0, workingFolder + L"\\" + portfolioName + L".pdf");
    if (!CreateEmptyPortfolio(application, path)) return false;

    std::vector<std::wstring> files;
    {
        NewPortfolio portfolio(std::move(path));  // a copy could fail and leave the file behind
        ForEachItem(items.Get(), *count, [&](IDispatch* item) { AddMail(addin, item, workingFolder, portfolio); });
        if (portfolio.HasMails()) files.push_back(portfolio.Path());
    }
    return OpenInCompanion(addin, files, noMailsMessage);
}

bool CreateEmptyPortfolio(IDispatch*, const std::wstring& path) { return RunCompanionCommand(path); }
