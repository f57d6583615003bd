// An Outlook that is ended in the middle of a command: clicks a button and ends itself, with exit code 42 and nothing
// tidied up, when the given step is reached. A step is the moment in which a call into Outlook or Word comes in, or
// that in which it goes out. Without as many steps it ends with 0.
//
//   killed_click BUTTON STEP
#include <windows.h>

#include <string>

#include "standins/office/DialogRobot.h"
#include "tests/integration/OutlookSession.h"

int wmain(int count, wchar_t** arguments) {
    if (count != 3) return 1;
    long stepsLeft = std::stol(arguments[2]);
    EngineRecorder engine;
    OutlookSession session(MixedFolder(), {0, 1, 2, 3, 4, 5});
    const AddinObject addin;
    session.Connect(*addin.Get());
    const DialogRobot robot({});
    session.faults.onHost = [&](bool) {
        if (stepsLeft-- != 0) return;
        session.word.Revoke();  // Wine would send others to it for ever
        TerminateProcess(GetCurrentProcess(), 42);
    };
    const HRESULT answer = session.Click(*addin.Get(), arguments[1]);
    session.faults.onHost = nullptr;
    return answer == S_OK ? 0 : 2;
}
