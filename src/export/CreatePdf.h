// The Create PDF command of Word, Excel and PowerPoint.
#pragma once

#include "src/base/AddinState.h"

// Asks for a place, exports the active document there and, where the option is set, shows the PDF in the companion.
// Every failure ends the command silently. `sendAfter` is true for "Create and send".
void CreatePdf(const AddinState& addin, bool sendAfter);
