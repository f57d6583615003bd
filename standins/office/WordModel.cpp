// Word's object model.
#include "standins/office/WordModel.h"

#include <shellapi.h>
#include <shlwapi.h>

#include "standins/bridge/Bridge.h"
#include "standins/common/Text.h"
#include "standins/office/DynamicObject.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr HRESULT commandFailed = static_cast<HRESULT>(0x800A1066);  // Word's "Command failed"
constexpr HRESULT noDocument = static_cast<HRESULT>(0x800A1098);     // Word's "no document is open"

std::wstring FileName(const std::wstring& path) { return PathFindFileNameW(path.c_str()); }

std::wstring Folder(const std::wstring& path) {
    const std::wstring name = FileName(path);
    const std::wstring folder = path.substr(0, path.size() - name.size());
    return folder.empty() ? folder : folder.substr(0, folder.size() - 1);
}

// The value of a mandatory argument; Word refuses the call without it.
template <typename T>
T Required(const std::optional<T>& argument) {
    if (!argument) throw static_cast<HRESULT>(DISP_E_PARAMNOTOPTIONAL);
    return *argument;
}

// One of a few allowed values of an enumeration.
LONG OneOf(LONG value, std::initializer_list<LONG> allowed, const wchar_t* name) {
    for (const LONG candidate : allowed) {
        if (value == candidate) return value;
    }
    throw AutomationError{E_INVALIDARG, std::wstring(name) + L" " + std::to_wstring(value) + L" is not supported"};
}

std::wstring Flag(bool value) { return value ? L"1" : L"0"; }

// Document.ExportAsFixedFormat.
HRESULT ExportAsFixedFormat(const std::wstring& document, const Arguments& arguments) {
    if (arguments.Count() > 15) return DISP_E_BADPARAMCOUNT;
    const std::wstring target = Required(arguments.Text(1));
    OneOf(Required(arguments.Number(2)), {17}, L"ExportFormat");  // wdExportFormatPDF; there is no XPS here
    const bool open = arguments.Boolean(3).value_or(false);
    const LONG optimize = OneOf(arguments.Number(4).value_or(0), {0, 1}, L"OptimizeFor");  // for print, on screen
    // All, current page, from-to; nothing is ever selected here.
    const LONG range = OneOf(arguments.Number(5).value_or(0), {0, 2, 3}, L"Range");
    const LONG from = arguments.Number(6).value_or(1);
    const LONG to = arguments.Number(7).value_or(1);
    const LONG item = OneOf(arguments.Number(8).value_or(0), {0, 7}, L"Item");  // content, with mark-up
    const bool includeProperties = arguments.Boolean(9).value_or(false);
    arguments.Boolean(10);  // KeepIRM: documents here carry no rights
    // None or headings; a bookmark of Word's own has no counterpart in LibreOffice's export.
    const LONG bookmarks = OneOf(arguments.Number(11).value_or(0), {0, 1}, L"CreateBookmarks");
    const bool tags = arguments.Boolean(12).value_or(true);
    arguments.Boolean(13);  // BitmapMissingFonts: LibreOffice embeds every font that it draws with
    const bool pdfA = arguments.Boolean(14).value_or(false);
    if (target.empty()) throw AutomationError{commandFailed, L"There is no file name"};
    if (range == 3 && (from < 1 || to < from)) throw AutomationError{commandFailed, L"The page range is not valid"};

    BridgeRequest request = {
        {"command", L"render"},
        {"source", LinuxPath(document)},
        {"target", LinuxPath(target)},
        {"properties", Flag(includeProperties)},
        {"bookmarks", Flag(bookmarks == 1)},
        {"tags", Flag(tags)},
        {"pdfa", Flag(pdfA)},
        {"comments", Flag(item == 7)},
        {"screen", Flag(optimize == 1)},
    };
    if (range != 0) {
        request.push_back({"first", std::to_wstring(range == 3 ? from : 1)});
        request.push_back({"last", std::to_wstring(range == 3 ? to : 1)});
    }
    const BridgeAnswer answer = AskBridge(request);
    if (!answer.ok) {
        // The caller may not ask for the reason; who watches the console should know it all the same.
        PrintLine(L"Word could not export: " + answer.text);
        throw AutomationError{commandFailed, answer.text};
    }
    if (open) ShellExecuteW(nullptr, L"open", target.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
    return S_OK;
}

ComPtr<IDispatch> MakeDocument(const std::wstring& path) {
    const auto document = MakeObject(L"Document");
    Members& members = document->members;
    members.AddProperty(L"FullName", [path](VARIANT* result) { return GiveText(result, path); });
    members.AddProperty(L"Name", [path](VARIANT* result) { return GiveText(result, FileName(path)); });
    members.AddProperty(L"Path", [path](VARIANT* result) { return GiveText(result, Folder(path)); });
    members.AddProperty(L"Saved", [](VARIANT* result) { return GiveBoolean(result, true); });
    members.AddMethod(L"ExportAsFixedFormat",
                      [path](const Arguments& arguments, VARIANT*) { return ExportAsFixedFormat(path, arguments); });
    return document;
}

ComPtr<IDispatch> MakeDocuments(const ComPtr<IDispatch>& document) {
    const auto documents = MakeObject(L"Documents");
    const LONG count = document ? 1 : 0;
    documents->members.AddProperty(L"Count", [count](VARIANT* result) { return GiveNumber(result, count); });
    documents->members.AddMethod(L"Item", [document](const Arguments& arguments, VARIANT* result) {
        if (!document || Required(arguments.Number(1)) != 1) throw AutomationError{noDocument, L"No such document"};
        return GiveObject(result, document.Get());
    });
    return documents;
}

ComPtr<IDispatch> MakeWindow(HWND window) {
    const auto object = MakeObject(L"Window");
    object->members.AddProperty(L"hwnd", [window](VARIANT* result) {
        return GiveNumber(result, static_cast<LONG>(reinterpret_cast<LONG_PTR>(window)));
    });
    return object;
}

}  // namespace

ComPtr<IDispatch> MakeWordApplication(const std::wstring& documentPath, HWND window) {
    const ComPtr<IDispatch> document = documentPath.empty() ? nullptr : MakeDocument(documentPath);
    const ComPtr<IDispatch> documents = MakeDocuments(document);
    const ComPtr<IDispatch> windowObject = MakeWindow(window);

    const auto application = MakeObject(L"Application");
    Members& members = application->members;
    members.AddProperty(L"Name", [](VARIANT* result) { return GiveText(result, L"Microsoft Word"); });
    members.AddProperty(L"Version", [](VARIANT* result) { return GiveText(result, L"16.0"); });
    members.AddProperty(L"Documents", [documents](VARIANT* result) { return GiveObject(result, documents.Get()); });
    const auto whileOpen = [hasDocument = document != nullptr](const ComPtr<IDispatch>& object) {
        return [hasDocument, object](VARIANT* result) {
            if (!hasDocument) throw AutomationError{noDocument, L"No document is open"};
            return GiveObject(result, object.Get());
        };
    };
    members.AddProperty(L"ActiveDocument", whileOpen(document));
    members.AddProperty(L"ActiveWindow", whileOpen(windowObject));
    return application;
}
