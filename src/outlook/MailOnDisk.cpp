#include "src/outlook/MailOnDisk.h"

#include <stdexcept>

#include "src/automation/AutomationCalls.h"
#include "src/base/Paths.h"
#include "src/outlook/FileNames.h"
#include "src/outlook/OutlookItems.h"
#include "src/outlook/WordConversion.h"

namespace {

constexpr wchar_t ownFolderName[] = L"temp";
constexpr wchar_t filesFolderEnding[] = L".files";

std::wstring FilesFolderOf(const std::wstring& documentPath) {
    return documentPath.substr(0, documentPath.size() - GetExtensionOfPath(documentPath).size()) + filesFolderEnding;
}

void AddDocument(ScratchFiles& scratch, const std::wstring& path) {
    scratch.AddFile(path);
    scratch.AddFolder(FilesFolderOf(path));
}

}  // namespace

MailOnDisk::MailOnDisk(IDispatch* item, MailCommand& command) : item_(item), command_(command) {}

MailOnDisk::~MailOnDisk() { scratch_.DeleteOrLeaveTo(command_.later); }

std::wstring MailOnDisk::MakePdf(const std::wstring& key, bool unique) {
    const std::wstring document = SaveMailAs(
        item_, [this](const std::wstring& name) { return DocumentPath(name); }, olDoc);
    if (document.empty()) return {};
    const std::wstring subject = GetMailSubject(item_);
    if (subject.empty()) return {};
    std::wstring pdfPath = MailPdfPath(subject, command_.workingFolder, key, unique);
    if (pdfPath.empty()) command_.leftOut.Add(subject);
    if (pdfPath.empty() || !ConvertWithWord(command_.addin, document, pdfPath)) return {};
    return pdfPath;
}

std::vector<std::wstring> MailOnDisk::SaveAttachments() {
    return SaveMailAttachments(item_, [this](const std::wstring& name) { return AttachmentPath(name); });
}

// A document has its place together with the folder that Outlook may leave beside it.
std::wstring MailOnDisk::DocumentPath(const std::wstring& name) {
    std::wstring path = PathInFolder(command_.workingFolder, name);
    if (!path.empty()) {
        if (IsTaken(path) || IsTaken(FilesFolderOf(path))) {
            path = PathInFolder(OwnFolder(), name);
        } else {
            AddDocument(scratch_, path);
        }
    }
    if (path.empty()) command_.leftOut.Add(name.substr(0, name.rfind(L'.')));
    return path;
}

std::wstring MailOnDisk::AttachmentPath(const std::wstring& name) {
    std::wstring path = PathInFolder(command_.workingFolder, name);
    if (path.empty()) return path;
    if (IsTaken(path)) return PathInFolder(OwnFolder(), name);
    if (!scratch_.HasFile(path)) scratch_.AddFile(path);
    return path;
}

bool MailOnDisk::IsTaken(const std::wstring& path) const { return Exists(path) && !scratch_.HasFile(path); }

const std::wstring& MailOnDisk::OwnFolder() {
    if (ownFolder_.empty()) {
        std::wstring path = MakeUniquePath(0, command_.workingFolder + L"\\" + ownFolderName);
        if (!scratch_.MakeFolder(path)) throw std::runtime_error("no folder for a mail's files");
        ownFolder_.swap(path);
    }
    return ownFolder_;
}

std::wstring SaveMailAs(IDispatch* item, const std::wstring& folder, LONG saveAsType) {
    return SaveMailAs(
        item, [&](const std::wstring& name) { return PathInFolder(folder, name); }, saveAsType);
}

std::wstring SaveMailAs(IDispatch* item, const PathForName& pathForName, LONG saveAsType) {
    if (!IsMailItem(item)) return {};
    const std::wstring subject = GetMailSubject(item);
    if (subject.empty()) return {};
    std::wstring path = pathForName(subject + SaveAsExtension(saveAsType));
    const Bstr target(path);
    if (path.empty() || !target.Get()) return {};
    const VARIANT arguments[] = {TextArgument(target), MakeVariantInt(saveAsType)};
    AutomationCallMethod(item, L"SaveAs", nullptr, ARRAYSIZE(arguments), arguments);  // the file is what counts
    return Exists(path) ? path : std::wstring();
}

void RemoveSavedDocument(const std::wstring& documentPath) {
    ScratchFiles scratch;
    AddDocument(scratch, documentPath);
}

std::wstring MailPdfPath(const std::wstring& subject, const std::wstring& workingFolder, const std::wstring& key,
                         bool unique) {
    const std::wstring folder = key.empty() ? workingFolder : workingFolder + L"\\" + key;
    std::wstring path = PathInFolder(folder, subject + L".pdf");
    if (path.empty()) return {};
    MakeFolder(folder);
    if (unique) path = MakeUniquePath(0, path);
    return IsShortEnough(path) ? path : std::wstring();
}
