// The command that gathers mails, with their attachments, in a PDF portfolio.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <string>

#include "src/base/AddinState.h"

// A new portfolio of the selected mails. False, without a message, when nothing is selected, Outlook does not give the
// items, or the companion does not make the portfolio; else what the companion launcher answers.
bool CreatePortfolioFromSelection(const AddinState& addin, IDispatch* application, const std::wstring& workingFolder);

// Has the companion application write an empty portfolio, and waits for it. The application object is not used.
bool CreateEmptyPortfolio(IDispatch* application, const std::wstring& path);
