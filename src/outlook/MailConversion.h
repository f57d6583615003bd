// Mails to PDFs: Outlook saves a mail as a Word document, Word exports that, and the mail's attachments are embedded.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <string>
#include <vector>

#include "src/base/AddinState.h"
#include "src/outlook/MailRecord.h"
#include "src/outlook/WorkFiles.h"

// The key of the message for when no mail could be shown as a PDF.
inline constexpr wchar_t noMailsMessage[] = L"There are no emails that can be created as PDFs";

// Converts the mails of a collection, and gives a record for each that has a PDF, in their order. A mail whose PDF the
// add-in has made before, and that is still there, is not converted again. Other items, and mails that fail on the way,
// are left out silently.
std::vector<MailRecord> ConvertMailsToPdf(AddinState& addin, IDispatch* items, const std::wstring& workingFolder);

// Saves a mail in the folder under its subject, as Outlook's save type `saveAsType`. The path, or empty for an item
// that is no mail, a subject that cannot be a file's name and a file that was not written. With `workFiles` it counts
// among these, and what was there before makes room first.
std::wstring SaveMailAs(IDispatch* item, const std::wstring& folder, LONG saveAsType, WorkFiles* workFiles = nullptr);

// The PDF path of a mail with that key in the working folder, a free one with `unique`; the folder for it is made.
// Empty where its subject cannot be a file's name.
std::wstring MailPdfPath(IDispatch* item, const std::wstring& workingFolder, const std::wstring& key, bool unique);
