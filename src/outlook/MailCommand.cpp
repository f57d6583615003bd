#include "src/outlook/MailCommand.h"

#include <utility>

#include "src/export/Companion.h"
#include "src/export/OwnerWindow.h"

MailCommand::MailCommand(const AddinState& state, std::wstring folder)
    : addin(state), workingFolder(std::move(folder)), owner_(GetOwnerWindow(state)) {}

void MailCommand::ForEachMail(IDispatch* items, LONG count, const ItemAction& action) {
    ForEachItem(owner_, items, count, action);
    later.Delete();
    later.Forget();  // what is open even now stays
}

bool MailCommand::Finish(const std::vector<std::wstring>& files) {
    const bool answer = OpenInCompanion(addin, files, L"There are no emails that can be created as PDFs");
    leftOut.Tell(owner_);
    return answer;
}
