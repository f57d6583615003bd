// A saved mail's way through Word.
#pragma once

#include <string>

#include "src/base/AddinState.h"

// Opens the document in a Word of its own, which nobody sees, and exports it as a PDF. True only when the export
// succeeded. That Word has ended, or is about to, in any case.
bool ConvertWithWord(const AddinState& addin, const std::wstring& documentPath, const std::wstring& pdfPath);
