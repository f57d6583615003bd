// The Create PDF command of Word, Excel and PowerPoint.
#pragma once

#include "src/base/AddinState.h"

// Asks for a place, exports the active document there and, where the option is set, shows the PDF in the companion.
// Every failure ends the command silently. `sendAfter`, for "Create and send", then hands the PDF to the mail program:
// only when it was also shown.
void CreatePdf(const AddinState& addin, bool sendAfter);
