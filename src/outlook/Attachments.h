// Saving what is attached to a mail.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <string>
#include <vector>

#include "src/outlook/FileNames.h"

// Saves the attachments of one mail and gives the paths of those that were written, in their order; none for an item
// that is no mail. With `pdfOnly` only PDF files, into a subfolder of `folder` of the mail's key; else all of them,
// straight into `folder`. Each is written over a file of its name.
std::vector<std::wstring> SaveMailAttachments(IDispatch* item, const std::wstring& folder, bool pdfOnly);

// The same for all of them, each at the path that `pathForName` gives it.
std::vector<std::wstring> SaveMailAttachments(IDispatch* item, const PathForName& pathForName);

// Saves one attachment and gives its path; empty when it was skipped or not written.
std::wstring SaveAttachment(IDispatch* attachment, const std::wstring& folder, bool pdfOnly);
