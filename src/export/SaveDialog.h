// The dialog in which the user picks the PDF's place.
#pragma once

#include <windows.h>

#include <string>

// Proposes the document's folder and name with ".pdf"; the dialog itself asks before an existing file is named. Empty
// when the user cancels or the dialog fails. `fullName` is the document's path, or its bare name while it was never
// saved.
std::wstring AskPdfSavePath(HWND owner, const std::wstring& fullName);

// The text that the dialog starts with, at most MAX_PATH - 1 characters. The name is shortened where the whole is too
// long; where not even the folder fits, the name alone is proposed.
std::wstring ProposedPdfPath(const std::wstring& fullName);
