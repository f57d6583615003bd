// Mails to PDFs: Outlook saves a mail as a Word document, Word exports that, and the mail's attachments are embedded.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <vector>

#include "src/base/AddinState.h"
#include "src/outlook/MailCommand.h"
#include "src/outlook/MailRecord.h"

// Converts the mails of a collection, and gives a record for each that has a PDF, in their order. A mail whose PDF the
// add-in has made before, and that is still there, is not converted again. Other items, and mails that fail on the way,
// are left out silently, but for those that the command tells of.
std::vector<MailRecord> ConvertMailsToPdf(AddinState& addin, IDispatch* items, MailCommand& command);
