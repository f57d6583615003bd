// The document that the host shows.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <string>

#include "src/base/AddinState.h"

// The active document, workbook or presentation; null when there is none. Throws std::out_of_range in a host that has
// no such property (Outlook, unknown).
Microsoft::WRL::ComPtr<IDispatch> GetActiveDocument(const AddinState& addin, IDispatch* application);

// Its `FullName`, or an empty text.
std::wstring GetActiveDocumentFullName(const AddinState& addin);
