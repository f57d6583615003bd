// The commands that open the PDF files attached to mails in the companion application.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <string>

#include "src/base/AddinState.h"

// Opens the PDF attachments of the selected mails, or of all mails of the folder shown. False, without a message, when
// Outlook does not give these items; else what the companion launcher answers.
bool OpenPdfAttachmentsFromSelection(const AddinState& addin, IDispatch* application,
                                     const std::wstring& workingFolder);
bool OpenPdfAttachmentsFromFolder(const AddinState& addin, IDispatch* application, const std::wstring& workingFolder);

bool OpenPdfAttachments(const AddinState& addin, IDispatch* items, const std::wstring& workingFolder);
