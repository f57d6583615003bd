// PowerPoint's object model, as far as the add-in uses it: Application, Presentations, Presentation, DocumentWindow.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <string>

// PowerPoint's application with the presentation at `documentPath` open and active, or with none when the path is
// empty. Its window object has no window handle.
Microsoft::WRL::ComPtr<IDispatch> MakePowerPointApplication(const std::wstring& documentPath, HWND window);
