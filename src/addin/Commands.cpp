// Which button runs which command.
#include "src/addin/Commands.h"

#include <oaidl.h>
#include <wrl/client.h>

#include <string>

#include "src/base/ControlIds.h"
#include "src/base/Paths.h"
#include "src/export/CreatePdf.h"
#include "src/outlook/CreateCommands.h"
#include "src/outlook/FileNames.h"
#include "src/outlook/OpenAttachments.h"
#include "src/outlook/Portfolio.h"

namespace {

// `folder` is the working folder of an Outlook command.
struct Command {
    std::wstring_view controlId;
    void (*run)(AddinState& addin, IDispatch* application, const std::wstring& folder);
};

template <auto Run, auto... Options>
constexpr void (*outlookCommand)(AddinState&, IDispatch*, const std::wstring&) =
    [](AddinState& addin, IDispatch* application, const std::wstring& folder) {
        if (folder.empty()) return;                   // no Documents folder, so nowhere to work
        Run(addin, application, folder, Options...);  // reports its own failures; its answer is nobody's
    };

constexpr Command commands[] = {
    {BUTTON_ID_CREATE, [](AddinState& addin, IDispatch*, const std::wstring&) { CreatePdf(addin, false); }},
    {BUTTON_ID_CREATE_AND_SHARE, [](AddinState& addin, IDispatch*, const std::wstring&) { CreatePdf(addin, true); }},
    {Button_ID_OpenFromMail, outlookCommand<OpenPdfAttachmentsFromSelection>},
    {Button_ID_OpenFromFolder, outlookCommand<OpenPdfAttachmentsFromFolder>},
    {Button_ID_CreateByMail, outlookCommand<CreatePdfFromSelection>},
    {Button_ID_CreateByFolder, outlookCommand<CreatePdfFromFolder, false>},
    {Button_ID_CreateMergeByFolder, outlookCommand<CreatePdfFromFolder, true>},
    {Button_ID_CreatePortfolioByMail, outlookCommand<CreatePortfolioFromSelection>},
};

}  // namespace

void RunCommand(AddinState& addin, std::wstring_view controlId) {
    const std::wstring folder = GetOutlookWorkingFolder(controlId);
    if (!folder.empty()) MakeFolder(folder);
    // A disconnection may come in while a command runs.
    const Microsoft::WRL::ComPtr<IDispatch> application = addin.application;
    for (const Command& command : commands) {
        if (command.controlId == controlId) return command.run(addin, application.Get(), folder);
    }
}
