// Word's object model, as far as the add-in uses it: Application, Documents, Document, Window.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <string>

#include "standins/office/DynamicObject.h"

// Word's application with the document at `documentPath` open and active, or with none when the path is empty. `window`
// is the application's main window.
Microsoft::WRL::ComPtr<IDispatch> MakeWordApplication(const std::wstring& documentPath, HWND window);

// Document.ExportAsFixedFormat for the document at that path. Throws like a member.
void ExportWordDocument(const std::wstring& document, const Arguments& arguments);
