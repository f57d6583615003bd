// The hosts that the stand-in plays.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <string>

struct OfficeHost {
    const wchar_t* name;         // as in the registry: "Word"
    const wchar_t* extensions;   // of its documents, each with its dot and a blank after it
    const wchar_t* ribbonId;     // what the ribbon of its documents, or of its main window, is called
    const wchar_t* windowClass;  // of its main window
    COLORREF accent;             // the colour that it is recognised by
    int zoom;                    // at which its window shows a page, in per cent
    // Null for Outlook, which has a folder instead of a document.
    Microsoft::WRL::ComPtr<IDispatch> (*makeApplication)(const std::wstring& documentPath, HWND window);
};

// The host that opens the document, by its extension; Word for no document. Null for an extension that none opens.
const OfficeHost* HostOfDocument(const std::wstring& path);

const OfficeHost& OutlookHost();
