// The companion desktop application: finding it, showing files in it, running a command word in it, and the message box
// that tells a user that there was nothing to show.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

#include "src/base/AddinState.h"

// The path of ZAVO.exe from the registry value "InstallPath": the user's own key first, then the machine's 32-bit and
// 64-bit ones. Empty when none of them has the value. Whether the file exists is not looked at.
std::wstring FindCompanionExecutable();

// Starts `exe` with each file in quotation marks. Whether it starts is not looked at.
void ShowFilesInCompanion(const std::wstring& exe, const std::vector<std::wstring>& files);

// Opens the files in the companion; silent where that is not installed. An empty list instead shows the message whose
// key in the string table is `messageKey`, and gives false.
bool OpenInCompanion(const AddinState& addin, const std::vector<std::wstring>& files, std::wstring_view messageKey);

// Runs the companion's portfolio command for `path` and waits for its end without a limit, with no messages pumped.
// True only when it ended with its success code.
bool RunCompanionCommand(const std::wstring& path);

void ShowMessage(HWND owner, const std::wstring& text, const std::wstring& caption, UINT flags);
