// Handing a PDF to the user's mail program.
#pragma once

#include <windows.h>

#include <string>

// Opens a new mail with the PDF at `path` attached, and returns when it is sent or closed; then makes a second hand-off
// on a worker thread, draining the calling thread's input meanwhile. Silent where there is no mail program. The mail
// itself is the user's to send.
void SendFileByMail(HWND owner, const std::wstring& path);
