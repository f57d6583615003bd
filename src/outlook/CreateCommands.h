// The commands that turn mails into PDFs, one each or merged, and show them in the companion application.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <string>

#include "src/base/AddinState.h"

// One PDF for each selected mail, in the order of the selection. False, without a message, when Outlook does not give
// the items; else what the companion launcher answers. The same holds for the other command.
bool CreatePdfFromSelection(AddinState& addin, IDispatch* application, const std::wstring& workingFolder);

// One PDF for each mail of the folder shown, oldest first; with `merge` one for all of them. A merged PDF of the folder
// that is there already is opened as it is.
bool CreatePdfFromFolder(AddinState& addin, IDispatch* application, const std::wstring& workingFolder, bool merge);
