// A session of Outlook for tests.
#include "tests/integration/OutlookSession.h"

#include <cstring>
#include <filesystem>
#include <fstream>

#include "src/base/Handles.h"
#include "src/outlook/FileNames.h"
#include "standins/office/DocumentExport.h"
#include "standins/office/DynamicObject.h"
#include "tests/support/Files.h"

using Microsoft::WRL::ComPtr;

namespace {

void Write(const std::filesystem::path& path, const std::string& content) {
    std::ofstream file(path, std::ios::binary);
    file << content;
    if (!file) throw AutomationError{commandFailed, L"The file could not be written"};
}

std::string Narrow(const std::wstring& text) { return std::filesystem::path(text).string(); }

// The host around a ribbon control is not what goes wrong.
class Control {
public:
    Control(std::wstring_view id, const CallFaults& host) {
        healthy_.onHost = host.onHost;
        const HostScope scope(healthy_);
        const auto control = MakeObject(L"Control");
        control->members.AddProperty(L"Id", [id = std::wstring(id)](VARIANT* result) { return GiveText(result, id); });
        control_ = Wrap(control, healthy_);
    }

    VARIANT Argument() const { return ObjectArgument(control_.Get()); }

private:
    CallFaults healthy_;
    ComPtr<IDispatch> control_;
};

}  // namespace

OutlookItem MakeMail(const std::wstring& subject, const std::wstring& entryId, DATE received,
                     const std::vector<std::wstring>& attachments) {
    OutlookItem mail;
    mail.subject = subject;
    mail.entryId = entryId;
    mail.received = received;
    mail.saveAs = [subject](const std::wstring& path, LONG) {
        Write(path, "document of " + Narrow(subject));
        const std::filesystem::path pictures = std::filesystem::path(path).replace_extension(L".files");
        std::filesystem::create_directory(pictures);
        Write(pictures / L"image001.png", "picture");
    };
    for (const std::wstring& name : attachments) {
        mail.attachments.push_back({name, [name](const std::wstring& path) { Write(path, Narrow(name)); }});
    }
    return mail;
}

OutlookItem MakeOtherItem(const std::wstring& messageClass, const std::wstring& entryId) {
    OutlookItem item = MakeMail(L"No mail", entryId, 45000.25, {L"no mail.pdf"});
    item.messageClass = messageClass;
    return item;
}

OutlookFolder MixedFolder() {
    return {
        L"Inbox",
        L"id of the folder",
        {MakeMail(L"Offer", L"id 1", 45000.5, {L"report.pdf", L"notes.txt"}), MakeOtherItem(L"IPM.Contact", L"id 2"),
         MakeMail(L"Plan", L"id 3", 45000.25, {L"figures.pdf", L"data.txt"}),
         MakeOtherItem(L"IPM.Schedule.Meeting.Request", L"id 4"), MakeMail(L"", L"id 5", 45000.75, {}),
         MakeMail(L"RE: Offer", L"id 6", 45000.125, {})}};
}

const FileTree& UsersFiles() {
    static const FileTree files = {
        {L"Create\\", ""},
        {L"Create\\Offer.doc", "my offer"},
        {L"Create\\Offer.files\\", ""},
        {L"Create\\Offer.files\\mine.png", "my picture"},
        {L"Create\\report.pdf", "my report"},
        {L"Create\\notes.txt", "my notes"},
        {L"Create\\Portfolio.pdf", "my portfolio"},
        {L"Create\\Offer.pdf", "my PDF"},
        {L"Create\\temp\\", ""},
        {L"Create\\temp\\mine.txt", "mine as well"},
        {L"Create\\unrelated.txt", "mine"},
        {L"Open\\", ""},
        {L"Open\\unrelated.txt", "mine, too"},
    };
    return files;
}

OutlookFiles::OutlookFiles() : root_(GetDocumentsSubfolder(L"ZAVO Outlook PDFs")) { Restore({}); }

OutlookFiles::~OutlookFiles() {
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
}

FileTree OutlookFiles::List() const {
    FileTree tree;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root_, ignored)) {
        const std::wstring name = entry.path().wstring().substr(root_.size() + 1);
        if (entry.is_directory()) {
            tree[name + L"\\"];
        } else {
            tree[name] = ReadFileText(entry.path());
        }
    }
    return tree;
}

void OutlookFiles::Restore(const FileTree& wanted) const {
    const FileTree present = List();
    std::error_code ignored;
    for (const auto& [name, content] : present) {
        const auto kept = wanted.find(name);
        if (kept == wanted.end()) std::filesystem::remove_all(root_ + L"\\" + name, ignored);
    }
    for (const auto& [name, content] : wanted) {
        const std::filesystem::path path = root_ + L"\\" + name;
        if (name.back() == L'\\') {
            std::filesystem::create_directories(path);
        } else if (const auto found = present.find(name); found == present.end() || found->second != content) {
            std::filesystem::create_directories(path.parent_path());
            Write(path, content);
        }
    }
}

void OutlookFiles::Append(const wchar_t* name, const char* text) const {
    wchar_t path[MAX_PATH];
    swprintf(path, MAX_PATH, L"%ls\\%ls", root_.c_str(), name);
    const HANDLE file = CreateFileW(path, FILE_APPEND_DATA, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    const KernelHandle owner(file);
    DWORD written = 0;
    WriteFile(file, text, static_cast<DWORD>(strlen(text)), &written, nullptr);
}

OutlookSession::OutlookSession(OutlookFolder folder, std::vector<size_t> selected)
    : application_(Wrap(MakeOutlookApplication(std::move(folder), [selected] { return selected; }), faults)) {}

void OutlookSession::Connect(ZOfficeAddin& addin) const {
    addin.state.host = HostOutlook;
    addin.state.application = application_;
}

HRESULT OutlookSession::Click(ZOfficeAddin& addin, std::wstring_view controlId) const {
    const Control control(controlId, faults);
    VARIANT argument = control.Argument();
    DISPPARAMS params = {&argument, nullptr, 1, 0};
    constexpr DISPID onButtonClick = 1002;
    return addin.Invoke(onButtonClick, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, nullptr, nullptr,
                        nullptr);
}
