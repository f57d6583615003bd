#include "src/outlook/Portfolio.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <vector>

#include "src/automation/AutomationCalls.h"
#include "src/base/Barrier.h"
#include "src/base/Paths.h"
#include "src/export/Companion.h"
#include "src/export/PdfEngine.h"
#include "src/outlook/FileNames.h"
#include "src/outlook/MailCommand.h"
#include "src/outlook/MailOnDisk.h"
#include "src/outlook/OutlookItems.h"
#include "src/ui/StringTable.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr wchar_t portfolioName[] = L"Portfolio";  // of the file, in every language

// A copy of the portfolio for the time that something is embedded into it.
class SafetyCopy {
public:
    SafetyCopy(MailCommand& command, const std::wstring& portfolio, const std::wstring& path)
        : command_(command), portfolio_(portfolio), path_(path) {
        scratch_.AddFile(path);
        made_ = CopyFileW(portfolio.c_str(), path.c_str(), FALSE);
    }
    SafetyCopy(const SafetyCopy&) = delete;
    SafetyCopy& operator=(const SafetyCopy&) = delete;
    ~SafetyCopy() { scratch_.DeleteOrLeaveTo(command_.later); }

    explicit operator bool() const { return made_; }
    // At once, because a copy could end in the middle. A copy that could not be put back stays.
    void PutBack() {
        MoveFileExW(path_.c_str(), portfolio_.c_str(), MOVEFILE_REPLACE_EXISTING);
        scratch_.Forget();
    }

private:
    MailCommand& command_;
    const std::wstring& portfolio_;
    const std::wstring& path_;
    ScratchFiles scratch_;
    bool made_ = false;
};

// A free path, as the file that is there already may be the user's. One language's word has characters that file names
// forbid.
std::wstring SafetyCopyPath(const std::wstring& folder, const std::wstring& key) {
    const std::wstring word = Localize(GetLocalizedStringTable(), L"Portfolio");
    std::wstring path = PathInFolder(folder, WithoutForbiddenCharacters(word + L"_" + key + L".pdf"));
    if (!path.empty()) path = MakeUniquePath(0, path);
    return path;
}

// Embeds the mail's PDF and its attachments.
bool Embed(MailOnDisk& mail, const std::wstring& pdf, SafetyCopy& safety, const std::wstring& portfolio) {
    if (!safety) return false;
    std::vector<std::wstring> attachments = mail.SaveAttachments();
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

// Converts the mail and embeds it; whether that worked. PDFs of earlier commands are not used: those have the
// attachments inside already.
bool AddMail(IDispatch* item, MailCommand& command, const std::wstring& portfolio) {
    MailOnDisk mail(item, command);
    const std::wstring key = GetMailKey(item);
    const std::wstring pdf = mail.MakePdf(key, true);
    if (pdf.empty() || !Exists(pdf)) return false;
    const std::wstring copyPath = SafetyCopyPath(command.workingFolder, key);
    if (copyPath.empty()) return false;
    SafetyCopy safety(command, portfolio, copyPath);
    return Embed(mail, pdf, safety, portfolio);
}

}  // namespace

bool CreatePortfolioFromSelection(const AddinState& addin, IDispatch* application, const std::wstring& workingFolder) {
    MailCommand command(addin, workingFolder);
    const ComPtr<IDispatch> items = GetSelectedItems(application);
    const std::optional<LONG> count = GetNumberProperty(items.Get(), L"Count");
    if (!count || *count < 1) return false;
    const std::wstring path = MakeUniquePath(0, workingFolder + L"\\" + portfolioName + L".pdf");
    std::vector<std::wstring> files = {path};
    ScratchFiles empty;  // the portfolio, as long as it holds no mail
    empty.AddFile(path);
    if (!CreateEmptyPortfolio(application, path)) {
        empty.Forget();  // what is there now is not known
        return false;
    }
    command.ForEachMail(items.Get(), *count, [&](IDispatch* item) {
        if (AddMail(item, command, path)) empty.Forget();
    });
    if (empty.HasFile(path)) files.clear();
    empty.Delete();
    empty.Forget();
    return command.Finish(files);
}

bool CreateEmptyPortfolio(IDispatch*, const std::wstring& path) { return RunCompanionCommand(path); }
