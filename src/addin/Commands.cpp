// Which button runs which command.
#include "src/addin/Commands.h"

#include "src/base/ControlIds.h"
#include "src/export/CreatePdf.h"

namespace {

struct Command {
    std::wstring_view controlId;
    void (*run)(AddinState&);
};

constexpr Command commands[] = {
    {BUTTON_ID_CREATE, [](AddinState& addin) { CreatePdf(addin, false); }},
    {BUTTON_ID_CREATE_AND_SHARE, [](AddinState& addin) { CreatePdf(addin, true); }},
};

}  // namespace

void RunCommand(AddinState& addin, std::wstring_view controlId) {
    for (const Command& command : commands) {
        if (command.controlId == controlId) return command.run(addin);
    }
}
