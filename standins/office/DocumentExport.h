// What the three document models share: checking an export's arguments, and the rendering.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <functional>
#include <initializer_list>
#include <optional>
#include <string>

#include "standins/office/DynamicObject.h"

// Office's "Command failed".
inline constexpr HRESULT commandFailed = static_cast<HRESULT>(0x800A1066);

// The value of a mandatory argument; throws DISP_E_PARAMNOTOPTIONAL.
template <typename T>
T Required(const std::optional<T>& argument) {
    if (!argument) throw static_cast<HRESULT>(DISP_E_PARAMNOTOPTIONAL);
    return *argument;
}

// One of the allowed values of an enumeration; throws AutomationError for another.
LONG OneOf(LONG value, std::initializer_list<LONG> allowed, const wchar_t* name);

struct ExportOptions {
    bool properties = false;  // title, author and so on
    bool bookmarks = false;   // from headings
    bool tags = false;
    bool pdfA = false;
    bool comments = false;
    bool screen = false;  // pictures for the screen, not for print
    bool hiddenSlides = false;
    std::optional<std::pair<LONG, LONG>> pages = std::nullopt;  // first and last, from 1
    bool open = false;                                          // in the program that shows PDFs
};

// Renders the document as a PDF; throws AutomationError with the reason, which it also prints. The journal says either.
void ExportDocument(const std::wstring& document, const std::wstring& target, const ExportOptions& options);

// The object of one open document: FullName, Name, Path, Saved and ExportAsFixedFormat, which calls `exportAs` with the
// document's path.
Microsoft::WRL::ComPtr<IDispatch> MakeDocument(const std::wstring& kind, const std::wstring& path,
                                               std::function<void(const std::wstring&, const Arguments&)> exportAs);

// The names under which an application shows its documents.
struct ApplicationNames {
    const wchar_t* name;        // "Microsoft Word"
    const wchar_t* collection;  // "Documents"
    const wchar_t* active;      // "ActiveDocument"
};

// The application with that document open, or with none when it is null. `window` is shown as ActiveWindow.hwnd, null
// where the host's window object has no such property.
Microsoft::WRL::ComPtr<IDispatch> MakeApplication(const ApplicationNames& names,
                                                  const Microsoft::WRL::ComPtr<IDispatch>& document, HWND window);
