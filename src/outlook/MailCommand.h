// One run of a command that makes PDFs of mails: what its mails share, and how it ends.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <string>
#include <vector>

#include "src/base/AddinState.h"
#include "src/outlook/LeftOutMails.h"
#include "src/outlook/OutlookItems.h"
#include "src/outlook/ScratchFiles.h"

class MailCommand {
public:
    // Made when the click comes: what is told in the end belongs to the window in front then, not to the companion.
    MailCommand(const AddinState& state, std::wstring folder);
    MailCommand(const MailCommand&) = delete;
    MailCommand& operator=(const MailCommand&) = delete;

    // Calls `action` for each item and shows the progress. Then it deletes, once more, what could not be deleted.
    void ForEachMail(IDispatch* items, LONG count, const ItemAction& action);

    // Shows the files in the companion, or the message that there are none; then tells of the mails that were left out.
    // The companion launcher's answer.
    bool Finish(const std::vector<std::wstring>& files);

    const AddinState& addin;
    const std::wstring workingFolder;
    ScratchFiles later;  // what something still had open when its mail was done
    LeftOutMails leftOut;

private:
    const HWND owner_;
};
