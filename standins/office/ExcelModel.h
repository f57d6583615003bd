// Excel's object model, as far as the add-in uses it: Application, Workbooks, Workbook, Window.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <string>

// Excel's application with the workbook at `documentPath` open and active, or with none when the path is empty.
Microsoft::WRL::ComPtr<IDispatch> MakeExcelApplication(const std::wstring& documentPath, HWND window);
