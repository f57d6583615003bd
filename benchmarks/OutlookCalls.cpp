// How many automation calls into Outlook and Word each of Outlook's commands makes for a mail, beside the least that
// its steps allow. A call costs what the host takes for it, and out of process a millisecond; their number is what the
// add-in can help.
#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "src/base/ControlIds.h"
#include "tests/integration/OutlookSession.h"
#include "tests/support/CompanionProbe.h"

namespace {

// A mail of the measured folder has two attachments, one of them a PDF.
constexpr size_t attachments = 2;
constexpr size_t pdfAttachments = 1;

// The least, in invocations. Each member is reached by its name, so each takes a look-up besides.

// A selection: ActiveExplorer, Selection, Count. A folder: ActiveExplorer, CurrentFolder, Items, Count.
constexpr size_t selection = 3;
constexpr size_t folder = 4;
// The folder's EntryID and Name, from which the merged PDF has its path.
constexpr size_t mergedName = 2;

// The item itself, and its MessageClass, without which it is no mail.
constexpr size_t item = 1;
constexpr size_t isMail = 1;
// EntryID, the name of the mail's folder: once a mail. ReceivedTime, its place among the others: once.
constexpr size_t key = 1;
constexpr size_t received = 1;

// Opening: the mail's Attachments and their Count; each one's object and its FileName; SaveAsFile for a PDF.
constexpr size_t open = item + isMail + key + 2 + attachments * 2 + pdfAttachments;

// Saving as a document: MessageClass, Subject, SaveAs. The PDF's name: Subject once more.
constexpr size_t saveDocument = isMail + 2 + 1;
// One Word: Visible and DisplayAlerts off, Documents, Open, ExportAsFixedFormat, Quit.
constexpr size_t word = 6;
// All attachments: MessageClass, Attachments, Count; each one's object, FileName, SaveAsFile.
constexpr size_t saveAttachments = isMail + 2 + attachments * 3;

constexpr size_t convert = item + key + saveDocument + word + saveAttachments;
constexpr size_t create = convert + received;
constexpr size_t createAgain = item + key + received;  // the PDF is there already

struct Command {
    const char* name;
    std::wstring_view controlId;
    bool again;  // the second click of one add-in
    size_t leastForAMail;
    size_t leastForAClick;  // besides
};

constexpr Command commands[] = {
    {"open attachments, selection", Button_ID_OpenFromMail, false, open, selection},
    {"open attachments, folder", Button_ID_OpenFromFolder, false, open, folder},
    {"PDFs, selection", Button_ID_CreateByMail, false, create, selection},
    {"PDFs, folder", Button_ID_CreateByFolder, false, create, folder},
    {"merged PDF, folder", Button_ID_CreateMergeByFolder, false, create, folder + mergedName},
    {"portfolio, selection", Button_ID_CreatePortfolioByMail, false, convert, selection},
    {"PDFs, selection, again", Button_ID_CreateByMail, true, createAgain, selection},
    {"PDFs, folder, again", Button_ID_CreateByFolder, true, createAgain, folder},
    {"merged PDF, folder, again", Button_ID_CreateMergeByFolder, true, createAgain, folder + mergedName},
};

struct Counted {
    size_t invocations = 0;
    size_t lookUps = 0;
};

Counted CallsOf(const Command& command, size_t mails) {
    const OutlookFiles files;
    OutlookFolder mailFolder = {L"Inbox", L"id of the folder", {}};
    std::vector<size_t> selected;
    for (size_t i = 0; i < mails; ++i) {
        const std::wstring number = std::to_wstring(i);
        mailFolder.items.push_back(MakeMail(L"Mail " + number, L"id " + number, 45000.0 + static_cast<double>(i),
                                            {L"report.pdf", L"notes.txt"}));
        selected.push_back(i);
    }
    OutlookSession session(std::move(mailFolder), std::move(selected));
    const AddinObject addin;
    session.Connect(*addin.Get());
    session.faults.recording = true;
    for (int click = 0; click < (command.again ? 2 : 1); ++click) {
        session.faults.Restart();
        session.Click(*addin.Get(), command.controlId);
    }
    Counted counted;
    for (const CountedCall& call : session.faults.calls) ++(call.isLookUp ? counted.lookUps : counted.invocations);
    return counted;
}

}  // namespace

int main() {
    const CompanionProbe companion(0, CompanionProbe::OwnFolder().parent_path() / L"tests");
    companion.MakePortfolios(L"portfolio");
    EngineRecorder engine;  // what the engine does is not counted
    engine.recording = false;
    printf("automation calls for a mail with %zu attachments, %zu of them a PDF, and for a click besides;\n",
           attachments, pdfAttachments);
    printf("each is an invocation after a look-up of its name\n");
    printf("  %-28s %12s %6s %10s %14s %6s\n", "", "for a mail", "least", "look-ups", "for a click", "least");
    for (const Command& command : commands) {
        constexpr size_t few = 5;
        constexpr size_t many = 15;
        const Counted small = CallsOf(command, few);
        const Counted large = CallsOf(command, many);
        const auto forAMail = static_cast<double>(large.invocations - small.invocations) / (many - few);
        printf("  %-28s %12.1f %6zu %10.1f %14.1f %6zu\n", command.name, forAMail, command.leastForAMail,
               static_cast<double>(large.lookUps - small.lookUps) / (many - few),
               static_cast<double>(small.invocations) - forAMail * few, command.leastForAClick);
    }
}
