// The host's own export to PDF.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <string>

#include "src/base/AddinState.h"

// Calls `ExportAsFixedFormat` on the document, workbook or presentation with its host's argument list. Outlook's list
// is Word's, because mails are exported through a Word document. False for no document and when the call failed.
bool ExportAsPdf(const AddinState& addin, IDispatch* document, const std::wstring& path);
