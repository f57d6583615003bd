// A folder of mails as Outlook's stand-in shows it, from what standins/outlook/prepare.py made of .eml files.
#pragma once

#include <string>

#include "standins/office/OutlookModel.h"

// Reads a prepared folder; throws std::runtime_error when it is none. An item's SaveAs writes Word documents only
// (olDoc), through the bridge. It and SaveAsFile refuse a path that Windows refuses, and write over a file that is
// there. The journal says what they did.
OutlookFolder ReadOutlookFolder(const std::wstring& preparedFolder);
