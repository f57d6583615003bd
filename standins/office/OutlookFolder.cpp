// Prepared folders, and the saving of what is in them.
#include "standins/office/OutlookFolder.h"

#include <algorithm>
#include <cwctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>

#include "standins/bridge/Bridge.h"
#include "standins/common/Journal.h"
#include "standins/common/Text.h"
#include "standins/office/DynamicObject.h"

namespace {

constexpr LONG olDoc = 4;
constexpr HRESULT operationFailed = static_cast<HRESULT>(0x80004005);  // Outlook's answer to most of what goes wrong

// --- Paths ---

bool IsDevice(std::wstring name) {
    name = name.substr(0, name.find(L'.'));
    name.erase(name.find_last_not_of(L' ') + 1);
    std::transform(name.begin(), name.end(), name.begin(), towupper);
    if (name.size() == 4 && (name.starts_with(L"COM") || name.starts_with(L"LPT"))) {
        return std::wstring_view(L"0123456789\u00B9\u00B2\u00B3").find(name[3]) != std::wstring_view::npos;
    }
    const std::wstring_view plain = name;
    return plain == L"CON" || plain == L"PRN" || plain == L"AUX" || plain == L"NUL" || plain == L"CONIN$" ||
           plain == L"CONOUT$";
}

// Throws where Windows could not open the path. Wine and the file system under it take more than Windows does, and
// would write files here that could not be there.
void CheckPath(const std::wstring& path) {
    const auto refuse = [&](const wchar_t* reason) { throw AutomationError{operationFailed, reason + (L": " + path)}; };
    if (path.size() >= MAX_PATH) refuse(L"The path is too long");
    if (path.size() < 4 || path[1] != L':' || path[2] != L'\\') refuse(L"There is no full path");
    for (size_t start = 3; start <= path.size();) {
        const size_t end = std::min(path.find(L'\\', start), path.size());
        const std::wstring name = path.substr(start, end - start);
        const auto isForbidden = [](wchar_t c) { return c < 32 || std::wstring_view(L"<>:\"/|?*").find(c) < 8; };
        if (std::any_of(name.begin(), name.end(), isForbidden)) refuse(L"File names cannot hold these characters");
        if (IsDevice(name)) refuse(L"The path names a device");
        start = end + 1;
    }
}

// Copies over what is there, unless that is write-protected. The system's superuser may write such a file under Wine.
void CopyTo(const std::wstring& source, const std::wstring& path) {
    CheckPath(path);
    const DWORD attributes = GetFileAttributesW(path.c_str());
    const bool isProtected = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
    if (isProtected || !CopyFileW(source.c_str(), path.c_str(), FALSE)) {
        const HRESULT error = HRESULT_FROM_WIN32(isProtected ? ERROR_ACCESS_DENIED : GetLastError());
        throw AutomationError{error, L"The file cannot be written (" + HexText(error) + L"): " + path};
    }
}

// --- Saving ---

// Calls `save` and writes into the journal how it went.
template <typename Save>
void Journalled(const wchar_t* done, const wchar_t* failed, const std::wstring& what, const std::wstring& path,
                Save&& save) {
    try {
        save();
    } catch (const AutomationError& error) {
        WriteJournal({failed, what, path, error.text});
        throw;
    }
    WriteJournal({done, what, path});
}

// The document is made once, in the prepared folder, and then copied.
void SavePage(const std::wstring& page, const std::wstring& path, LONG type) {
    if (type != olDoc) throw AutomationError{E_NOTIMPL, L"This Outlook saves Word documents only"};
    CheckPath(path);
    const std::wstring document = page + L".doc";
    if (GetFileAttributesW(document.c_str()) == INVALID_FILE_ATTRIBUTES) {
        const BridgeAnswer answer = AskBridge({{"command", L"convert"},
                                               {"source", LinuxPath(page)},
                                               {"reader", L"HTML (StarWriter)"},
                                               {"target", LinuxPath(document)},
                                               {"filter", L"MS Word 97"}});
        if (!answer.ok) throw AutomationError{operationFailed, answer.text};
    }
    CopyTo(document, path);
}

// --- Reading ---

std::wstring ReadText(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file) throw std::runtime_error("no prepared folder of mails: " + Utf8(path));
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    bytes.copy(reinterpret_cast<char*>(text.data()), text.size() * sizeof(wchar_t));
    return text;
}

std::wstring Unescaped(std::wstring_view value) {
    std::wstring text;
    for (size_t i = 0; i < value.size(); ++i) {
        const bool escaped = value[i] == L'\\' && i + 1 < value.size();
        const wchar_t unit = value[escaped ? ++i : i];
        text += escaped && unit == L'n' ? L'\n' : unit;
    }
    return text;
}

class FolderReader {
public:
    explicit FolderReader(std::wstring preparedFolder) : path_(std::move(preparedFolder)) {}

    void Take(std::wstring_view name, const std::wstring& value) {
        if (name == L"folder") {
            folder_.name = value;
        } else if (name == L"folder-id") {
            folder_.entryId = value;
        } else if (name == L"item") {
            folder_.items.emplace_back();
        } else if (folder_.items.empty()) {
            throw std::runtime_error("the prepared folder is not whole");
        } else {
            TakeOfItem(folder_.items.back(), name, value);
        }
    }

    OutlookFolder Folder() && { return std::move(folder_); }

private:
    void TakeOfItem(OutlookItem& item, std::wstring_view name, const std::wstring& value) const {
        const std::wstring number = std::to_wstring(folder_.items.size());
        if (name == L"class") {
            item.messageClass = value;
        } else if (name == L"subject") {
            item.subject = value;
        } else if (name == L"id") {
            item.entryId = value;
        } else if (name == L"sender") {
            item.sender = value;
        } else if (name == L"received") {
            item.received = wcstod(value.c_str(), nullptr);
        } else if (name == L"page") {
            item.page = path_ + L"\\" + value;
            item.saveAs = [page = item.page, number](const std::wstring& path, LONG type) {
                Journalled(L"saved", L"not saved", number, path, [&] { SavePage(page, path, type); });
            };
        } else if (name == L"attachment") {
            const std::wstring which = number + L"\t" + std::to_wstring(item.attachments.size() + 1);
            item.attachments.push_back({{}, [content = path_ + L"\\" + value, which](const std::wstring& path) {
                                            Journalled(L"attachment", L"no attachment", which, path,
                                                       [&] { CopyTo(content, path); });
                                        }});
        } else if (name == L"name" && !item.attachments.empty()) {
            item.attachments.back().fileName = value;
        }
    }

    const std::wstring path_;
    OutlookFolder folder_;
};

}  // namespace

OutlookFolder ReadOutlookFolder(const std::wstring& preparedFolder) {
    const std::wstring text = ReadText(preparedFolder + L"\\folder.txt");
    FolderReader reader(preparedFolder);
    for (size_t start = 0; start < text.size();) {
        const size_t end = std::min(text.find(L'\n', start), text.size());
        const std::wstring_view line = std::wstring_view(text).substr(start, end - start);
        const size_t tab = std::min(line.find(L'\t'), line.size());
        reader.Take(line.substr(0, tab), Unescaped(line.substr(std::min(tab + 1, line.size()))));
        start = end + 1;
    }
    return std::move(reader).Folder();
}
