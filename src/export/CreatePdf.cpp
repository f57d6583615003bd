#include "src/export/CreatePdf.h"

#include "src/export/ActiveDocument.h"
#include "src/export/Companion.h"
#include "src/export/ExportToPdf.h"
#include "src/export/MailHandOff.h"
#include "src/export/OwnerWindow.h"
#include "src/export/SaveDialog.h"

using Microsoft::WRL::ComPtr;

void CreatePdf(const AddinState& addin, bool sendAfter) {
    // A disconnection may come in while the dialog or a call to the host pumps messages.
    const ComPtr<IDispatch> application = addin.application;

    const HWND owner = GetOwnerWindow(addin);
    const std::wstring fullName = GetActiveDocumentFullName(addin);
    const std::wstring path = AskPdfSavePath(owner, fullName);
    if (path.empty()) return;

    const ComPtr<IDispatch> document = GetActiveDocument(addin, application.Get());
    if (!ExportAsPdf(addin, document.Get(), path) || !addin.settings.openAfterExport) return;

    const std::wstring exe = FindCompanionExecutable();
    if (exe.empty()) return;
    ShowFilesInCompanion(exe, {path});
    if (sendAfter) SendFileByMail(owner, path);
}
