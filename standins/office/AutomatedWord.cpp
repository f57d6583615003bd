// Word's objects for automation.
#include "standins/office/AutomatedWord.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "src/base/Handles.h"
#include "standins/office/DocumentExport.h"
#include "standins/office/DynamicObject.h"
#include "standins/office/WordModel.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr HRESULT fileNotFound = static_cast<HRESULT>(0x800A1436);  // Word's 5174
constexpr HRESULT noSuchMember = static_cast<HRESULT>(0x800A1735);  // Word's 5941
constexpr LONG wdAlertsNone = 0;
constexpr LONG wdAlertsMessageBox = -2;
constexpr LONG wdAlertsAll = -1;

// Lives as long as any of its objects, and has an end when Word is told to quit or when the last of them goes.
struct Session {
    explicit Session(std::function<void()> onQuit) : quit(std::move(onQuit)) {}
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() { quit(); }

    const std::function<void()> quit;
    bool visible = false;
    LONG alerts = wdAlertsAll;
    std::vector<std::wstring> documents;  // the paths of the open ones
};

using SharedSession = std::shared_ptr<Session>;

ComPtr<IDispatch> MakeSessionDocument(const SharedSession& session, const std::wstring& path) {
    return MakeDocument(L"Document", path, [session](const std::wstring& document, const Arguments& arguments) {
        ExportWordDocument(document, arguments);
    });
}

// The kinds of the arguments of Documents.Open. Those beside the file name are checked for their types only: a
// document's password, its format and so on make no difference here.
enum class Kind { Text, Number, Boolean };

constexpr Kind openArguments[] = {
    Kind::Text,     // FileName
    Kind::Boolean,  // ConfirmConversions
    Kind::Boolean,  // ReadOnly
    Kind::Boolean,  // AddToRecentFiles
    Kind::Text,     // PasswordDocument
    Kind::Text,     // PasswordTemplate
    Kind::Boolean,  // Revert
    Kind::Text,     // WritePasswordDocument
    Kind::Text,     // WritePasswordTemplate
    Kind::Number,   // Format
    Kind::Number,   // Encoding
    Kind::Boolean,  // Visible
    Kind::Boolean,  // OpenAndRepair
    Kind::Number,   // DocumentDirection
    Kind::Boolean,  // NoEncodingDialog
    Kind::Text,     // XMLTransform
};

void CheckOpenArguments(const Arguments& arguments) {
    if (arguments.Count() > std::size(openArguments)) throw static_cast<HRESULT>(DISP_E_BADPARAMCOUNT);
    for (UINT position = 1; position <= std::size(openArguments); ++position) {
        switch (openArguments[position - 1]) {
            case Kind::Text: arguments.Text(position); break;
            case Kind::Number: arguments.Number(position); break;
            case Kind::Boolean: arguments.Boolean(position); break;
        }
    }
}

// Documents.Open.
HRESULT Open(const SharedSession& session, const Arguments& arguments, VARIANT* result) {
    CheckOpenArguments(arguments);
    const std::wstring given = Required(arguments.Text(1));
    wchar_t path[MAX_PATH] = {};
    const DWORD length = GetFullPathNameW(given.c_str(), MAX_PATH, path, nullptr);
    const DWORD attributes = length == 0 || length >= MAX_PATH ? INVALID_FILE_ATTRIBUTES : GetFileAttributesW(path);
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        throw AutomationError{fileNotFound, L"This file could not be found.\r(" + given + L")"};
    }
    std::vector<std::wstring>& documents = session->documents;
    if (std::find(documents.begin(), documents.end(), path) == documents.end()) documents.emplace_back(path);
    return GiveObject(result, MakeSessionDocument(session, path).Get());
}

ComPtr<IDispatch> MakeDocuments(const SharedSession& session) {
    const auto documents = MakeObject(L"Documents");
    documents->members.AddProperty(L"Count", [session](VARIANT* result) {
        return GiveNumber(result, static_cast<LONG>(session->documents.size()));
    });
    documents->members.AddMethod(L"Item", [session](const Arguments& arguments, VARIANT* result) {
        const LONG index = Required(arguments.Number(1));
        if (index < 1 || static_cast<size_t>(index) > session->documents.size()) {
            throw AutomationError{noSuchMember, L"The requested member of the collection does not exist."};
        }
        const std::wstring& path = session->documents[static_cast<size_t>(index) - 1];
        return GiveObject(result, MakeSessionDocument(session, path).Get());
    });
    documents->members.AddMethod(
        L"Open", [session](const Arguments& arguments, VARIANT* result) { return Open(session, arguments, result); });
    return documents;
}

// The value of a property as an argument, which knows the conversions.
template <typename T>
T ValueOf(const VARIANT& value, std::optional<T> (Arguments::*read)(UINT) const) {
    VARIANT borrowed = value;
    const DISPPARAMS params = {&borrowed, nullptr, 1, 0};
    return Required((Arguments(&params).*read)(1));
}

}  // namespace

ComPtr<IDispatch> MakeAutomatedWord(std::function<void()> quit) {
    const auto session = std::make_shared<Session>(std::move(quit));
    const auto application = Adopt(new DynamicObject<>(L"Application", {wordApplicationIid}));
    Members& members = application->members;
    members.AddProperty(L"Name", [](VARIANT* result) { return GiveText(result, L"Microsoft Word"); });
    members.AddProperty(L"Version", [](VARIANT* result) { return GiveText(result, L"16.0"); });
    members.AddProperty(
        L"Visible", [session](VARIANT* result) { return GiveBoolean(result, session->visible); },
        [session](const VARIANT& value) {
            session->visible = ValueOf(value, &Arguments::Boolean);
            return S_OK;
        });
    members.AddProperty(
        L"DisplayAlerts", [session](VARIANT* result) { return GiveNumber(result, session->alerts); },
        [session](const VARIANT& value) {
            session->alerts = OneOf(ValueOf(value, &Arguments::Number), {wdAlertsNone, wdAlertsMessageBox, wdAlertsAll},
                                    L"DisplayAlerts");
            return S_OK;
        });
    members.AddProperty(L"Documents",
                        [session](VARIANT* result) { return GiveObject(result, MakeDocuments(session).Get()); });
    members.AddMethod(L"Quit", [session](const Arguments& arguments, VARIANT*) {
        if (arguments.Count() > 3) throw static_cast<HRESULT>(DISP_E_BADPARAMCOUNT);
        session->quit();  // nothing was changed, so nothing is saved
        return S_OK;
    });
    return application;
}
