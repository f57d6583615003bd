// Arguments, rendering and the objects around a document.
#include "standins/office/DocumentExport.h"

#include <shellapi.h>
#include <shlwapi.h>

#include <utility>

#include "standins/bridge/Bridge.h"
#include "standins/common/Journal.h"
#include "standins/common/Text.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr HRESULT noDocument = static_cast<HRESULT>(0x800A1098);  // Office's "no document is open"

std::wstring FileName(const std::wstring& path) { return PathFindFileNameW(path.c_str()); }

std::wstring Folder(const std::wstring& path) {
    const std::wstring name = FileName(path);
    const std::wstring folder = path.substr(0, path.size() - name.size());
    return folder.empty() ? folder : folder.substr(0, folder.size() - 1);
}

std::wstring Flag(bool value) { return value ? L"1" : L"0"; }

}  // namespace

LONG OneOf(LONG value, std::initializer_list<LONG> allowed, const wchar_t* name) {
    for (const LONG candidate : allowed) {
        if (value == candidate) return value;
    }
    throw AutomationError{E_INVALIDARG, std::wstring(name) + L" " + std::to_wstring(value) + L" is not supported"};
}

void ExportDocument(const std::wstring& document, const std::wstring& target, const ExportOptions& options) {
    if (target.empty()) throw AutomationError{commandFailed, L"There is no file name"};
    BridgeRequest request = {
        {"command", L"render"},
        {"source", LinuxPath(document)},
        {"target", LinuxPath(target)},
        {"properties", Flag(options.properties)},
        {"bookmarks", Flag(options.bookmarks)},
        {"tags", Flag(options.tags)},
        {"pdfa", Flag(options.pdfA)},
        {"comments", Flag(options.comments)},
        {"screen", Flag(options.screen)},
        {"hidden", Flag(options.hiddenSlides)},
    };
    if (options.pages) {
        request.push_back({"first", std::to_wstring(options.pages->first)});
        request.push_back({"last", std::to_wstring(options.pages->second)});
    }
    const BridgeAnswer answer = AskBridge(request);
    if (!answer.ok) {
        // The caller may not ask for the reason; who watches the console should know it all the same.
        PrintLine(L"the host could not export: " + answer.text);
        WriteJournal({L"not exported", document, answer.text});
        throw AutomationError{commandFailed, answer.text};
    }
    WriteJournal({L"exported", document, target});
    if (options.open) ShellExecuteW(nullptr, L"open", target.c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}

ComPtr<IDispatch> MakeDocument(const std::wstring& kind, const std::wstring& path,
                               std::function<void(const std::wstring&, const Arguments&)> exportAs) {
    const auto document = MakeObject(kind);
    Members& members = document->members;
    members.AddProperty(L"FullName", [path](VARIANT* result) { return GiveText(result, path); });
    members.AddProperty(L"Name", [path](VARIANT* result) { return GiveText(result, FileName(path)); });
    members.AddProperty(L"Path", [path](VARIANT* result) { return GiveText(result, Folder(path)); });
    members.AddProperty(L"Saved", [](VARIANT* result) { return GiveBoolean(result, true); });
    members.AddMethod(L"ExportAsFixedFormat",
                      [path, exportAs = std::move(exportAs)](const Arguments& arguments, VARIANT*) {
                          exportAs(path, arguments);
                          return S_OK;
                      });
    return document;
}

namespace {

ComPtr<IDispatch> MakeCollection(const wchar_t* name, const ComPtr<IDispatch>& document) {
    const auto collection = MakeObject(name);
    const LONG count = document ? 1 : 0;
    collection->members.AddProperty(L"Count", [count](VARIANT* result) { return GiveNumber(result, count); });
    collection->members.AddMethod(L"Item", [document](const Arguments& arguments, VARIANT* result) {
        if (!document || Required(arguments.Number(1)) != 1) throw AutomationError{noDocument, L"No such document"};
        return GiveObject(result, document.Get());
    });
    return collection;
}

ComPtr<IDispatch> MakeWindow(HWND window) {
    const auto object = MakeObject(L"Window");
    if (window) {
        object->members.AddProperty(L"hwnd", [window](VARIANT* result) {
            return GiveNumber(result, static_cast<LONG>(reinterpret_cast<LONG_PTR>(window)));
        });
    }
    return object;
}

}  // namespace

ComPtr<IDispatch> MakeApplication(const ApplicationNames& names, const ComPtr<IDispatch>& document, HWND window) {
    const ComPtr<IDispatch> collection = MakeCollection(names.collection, document);
    const ComPtr<IDispatch> windowObject = MakeWindow(window);

    const auto application = MakeObject(L"Application");
    Members& members = application->members;
    members.AddProperty(L"Name", [name = names.name](VARIANT* result) { return GiveText(result, name); });
    members.AddProperty(L"Version", [](VARIANT* result) { return GiveText(result, L"16.0"); });
    members.AddProperty(names.collection,
                        [collection](VARIANT* result) { return GiveObject(result, collection.Get()); });
    const auto whileOpen = [hasDocument = document != nullptr](const ComPtr<IDispatch>& object) {
        return [hasDocument, object](VARIANT* result) {
            if (!hasDocument) throw AutomationError{noDocument, L"No document is open"};
            return GiveObject(result, object.Get());
        };
    };
    members.AddProperty(names.active, whileOpen(document));
    members.AddProperty(L"ActiveWindow", whileOpen(windowObject));
    return application;
}
