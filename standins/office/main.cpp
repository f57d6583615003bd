// The Office stand-in as a program: plays the host that opens the document, loads the add-ins that Office would load,
// and does on their ribbon what the command line, or a user at the window, says.
#include <windows.h>
#include <objbase.h>
#include <shellapi.h>
#include <shlwapi.h>
#include <tlhelp32.h>

#include <functional>
#include <optional>
#include <stdexcept>

#include "src/base/Handles.h"
#include "standins/common/Journal.h"
#include "standins/common/Results.h"
#include "standins/common/Text.h"
#include "standins/office/AddinSession.h"
#include "standins/office/DialogRobot.h"
#include "standins/office/DynamicObject.h"
#include "standins/office/Hosts.h"
#include "standins/office/Options.h"
#include "standins/office/OutlookFolder.h"
#include "standins/office/RibbonState.h"
#include "standins/office/window/HostWindow.h"
#include "standins/office/window/Mouse.h"

namespace {

// --- What is printed ---

void PrintElements(AddinSession& session, const std::vector<RibbonElement>& elements, const std::wstring& indent) {
    for (const RibbonElement& element : elements) {
        std::wstring line = indent + element.kind + L" \"" + element.label + L"\"";
        if (!element.getPressed.empty()) {
            const CallbackResult state = session.GetPressed(element);
            Expect(state.result, element.id);
            line += state.pressed ? L" [x]" : L" [ ]";
        }
        PrintLine(line + L"  " + element.id);
        PrintElements(session, element.children, indent + L"  ");
    }
}

void PrintTexts(const HostWindow& window) {
    for (const TextFinding& text : CheckTexts(window.GetRibbon(), window.GetLook().fonts, Width(window.ClientArea()))) {
        PrintLine(L"text\t" + text.id + L"\t" + text.attribute + L"\t" +
                  (text.problem.empty() ? L"fits" : text.problem) + L"\t" + text.text);
    }
}

// An area of a window in pixels of the screen: left, top, width, height.
std::wstring ScreenPlace(HWND window, RECT area) {
    MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&area), 2);
    return std::to_wstring(area.left) + L" " + std::to_wstring(area.top) + L" " + std::to_wstring(Width(area)) + L" " +
           std::to_wstring(Height(area));
}

void PrintPlaces(const HostWindow& window) {
    for (const DrawnControl& drawn : window.GetRibbonView().Drawn()) {
        std::wstring line = L"place\t" + drawn.element->id + L"\t" + drawn.element->kind + L"\t" +
                            ScreenPlace(drawn.window, drawn.place);
        if (!IsRectEmpty(&drawn.picture)) line += L"\t" + ScreenPlace(drawn.window, drawn.picture);
        PrintLine(line);
    }
}

// --- The companion ---

bool IsCompanionRunning() {
    const HANDLE taken = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (taken == INVALID_HANDLE_VALUE) return false;
    const KernelHandle snapshot(taken);
    PROCESSENTRY32W process = {};
    process.dwSize = sizeof process;
    for (BOOL more = Process32FirstW(taken, &process); more; more = Process32NextW(taken, &process)) {
        if (_wcsicmp(process.szExeFile, L"ZAVO.exe") == 0) return true;
    }
    return false;
}

// What a click showed is looked at before the next one, so that the companion's reports come in order, and before this
// program ends, so that they are there then.
void WaitForCompanion() {
    constexpr int patience = 30000;  // milliseconds
    for (int waited = 0; waited < patience && IsCompanionRunning(); waited += 10) Sleep(10);
}

// --- Actions ---

// The further lines of a text stand under its first one, behind what is printed before that.
std::wstring Indented(const std::wstring& text, size_t width) {
    std::wstring indented;
    for (const wchar_t c : text) {
        indented += c;
        if (c == L'\n') indented.append(width, L' ');
    }
    return indented;
}

// Does what the command line says, with the mouse or, where the ribbon is not drawn, by calling the add-in at once.
class User {
public:
    User(const Options& options, HostWindow& window, AddinSession& session, RibbonState& ribbon)
        : options_(options), window_(window), mouse_(window), session_(session), ribbon_(ribbon) {}

    void Do(const Action& action) {
        switch (action.kind) {
            case ActionKind::Tick: SetTicked(action.value, true); break;
            case ActionKind::Untick: SetTicked(action.value, false); break;
            case ActionKind::Click: Click(action.value); break;
            case ActionKind::Theme: ChangeTheme(wcstoul(action.value.c_str(), nullptr, 10)); break;
            case ActionKind::Markup: PrintLine(session_.Markup()); break;
            case ActionKind::Ribbon: PrintElements(session_, session_.GetRibbon().tabs, L""); break;
            case ActionKind::Open: mouse_.Open(Element(action.value, L"menu")); break;
            case ActionKind::Hover: mouse_.HoverOver(Element(action.value)); break;
            case ActionKind::Picture:
                HandlePendingMessages();  // so that all is drawn
                SaveImageFile(CaptureScreen(window_.ScreenArea()), action.value);
                break;
            case ActionKind::Message:
                if (!message_) throw std::runtime_error("no message was shown");
                SaveImageFile(*message_, action.value);
                break;
            case ActionKind::Texts: PrintTexts(window_); break;
            case ActionKind::Places: PrintPlaces(window_); break;
        }
    }

private:
    // The element of that id, and of that kind unless any will do.
    const RibbonElement& Element(const std::wstring& id, const std::wstring& kind = {}) const {
        const RibbonElement* element = FindElement(session_.GetRibbon(), id);
        if (!element || (!kind.empty() && element->kind != kind)) {
            throw std::runtime_error("the ribbon has no " + Utf8(kind.empty() ? L"control" : kind) + " " + Utf8(id));
        }
        return *element;
    }

    HRESULT Press(const RibbonElement& element) {
        return options_.window ? mouse_.Press(element) : ribbon_.Use(element);
    }

    void SetTicked(const std::wstring& id, bool ticked) {
        const RibbonElement& checkBox = Element(id, L"checkBox");
        if (ribbon_.IsTicked(checkBox) != ticked) Expect(Press(checkBox), id);
        PrintLine((ticked ? L"ticked: " : L"cleared: ") + checkBox.label);
    }

    void Click(const std::wstring& id) {
        const RibbonElement& button = Element(id, L"button");
        WaitForCompanion();
        PrintLine(L"clicked: " + button.label);
        WriteJournal({L"clicked", id});
        std::function<void(HWND)> look;
        if (options_.window) {
            look = [this](HWND box) {
                RECT area = {};
                GetWindowRect(box, &area);
                message_ = CaptureScreen(area);
            };
        }
        const DialogRobot robot(options_.saveAnswer, look);
        Expect(Press(button), id);
        for (const SeenDialog& dialog : robot.Seen()) {
            const std::wstring what = dialog.isSaveDialog ? L"save dialog proposed: " : L"message: ";
            PrintLine(what + Indented(dialog.text, what.size()));
        }
    }

    void ChangeTheme(DWORD theme) {
        constexpr DWORD pause = 100, patience = 2000;     // milliseconds
        const bool isNew = StoredOfficeTheme() != theme;  // Wine reports a write only when it changes something
        Sleep(pause);  // a user is no faster; the add-in's thread has to be watching, and watching again
        const int before = window_.Refreshes();
        StoreOfficeTheme(theme);
        if (isNew && !HandleMessagesUntil([&] { return window_.Refreshes() != before; }, patience)) {
            throw std::runtime_error("the add-in did not notice the theme");
        }
        PrintLine(L"theme " + std::to_wstring(theme) + L": the ribbon was drawn afresh");
    }

    const Options& options_;
    HostWindow& window_;
    Mouse mouse_;
    AddinSession& session_;
    RibbonState& ribbon_;
    std::optional<Image> message_;  // the last message box
};

// The full path of a file or folder that is there.
std::wstring ExistingPath(const std::wstring& path, const char* what) {
    wchar_t full[32768];
    if (GetFullPathNameW(path.c_str(), ARRAYSIZE(full), full, nullptr) == 0 ||
        GetFileAttributesW(full) == INVALID_FILE_ATTRIBUTES) {
        throw std::runtime_error(std::string("no such ") + what + ": " + Utf8(path));
    }
    return full;
}

// Loads the host's add-ins and does the actions on the ribbon of each.
void RunAddins(const Options& options, const OfficeHost& host, HostWindow& window, IDispatch* application) {
    const std::vector<std::wstring> addins = FindStartupAddins(host.name);
    if (addins.empty()) throw std::runtime_error("no add-in is registered for " + Utf8(host.name));
    for (const std::wstring& progId : addins) {
        AddinSession session(progId, application, host.ribbonId, [&window] { window.Invalidate(); });
        PrintLine(L"add-in loaded: " + progId);
        RibbonState ribbon(session);
        const ShownRibbon shown(window, ribbon);
        User user(options, window, session, ribbon);
        if (options.window && !options.actions.empty()) Mouse(window).Leave();
        for (const Action& action : options.actions) user.Do(action);
        if (options.stay || (options.window && options.actions.empty())) HandleMessagesUntilQuit();
    }
    WaitForCompanion();
}

void RunOutlook(const Options& options) {
    const OutlookFolder folder = ReadOutlookFolder(ExistingPath(options.mails, "folder"));
    const std::vector<size_t> places = SelectedPlaces(options.selection, folder.items.size());
    HostWindow window(OutlookHost(), folder.name);
    PrintLine(std::wstring(L"host: ") + OutlookHost().name);
    PrintLine(L"folder: " + folder.name + L", " + std::to_wstring(folder.items.size()) + L" items, " +
              std::to_wstring(places.size()) + L" selected");
    OutlookSelection selection = [&places] { return std::vector<size_t>(places); };
    if (options.window) {
        window.ShowMails(folder);
        Mouse(window).Select(places);
        selection = [&window] { return window.Mails()->Selected(); };
    }
    RunAddins(options, OutlookHost(), window, MakeOutlookApplication(folder, selection).Get());
}

void RunDocument(const Options& options) {
    const std::wstring document = options.document.empty() ? L"" : ExistingPath(options.document, "document");
    const OfficeHost* host = HostOfDocument(document);
    if (!host) throw std::runtime_error("no host opens a document of this kind: " + Utf8(document));
    HostWindow window(*host, PathFindFileNameW(document.c_str()));
    PrintLine(std::wstring(L"host: ") + host->name);
    if (options.window && !document.empty()) window.ShowDocument(document);
    RunAddins(options, *host, window, host->makeApplication(document, window.Get()).Get());
}

int ReportLiveObjects() {
    const std::vector<std::wstring> live = LiveObjects::List();
    for (const std::wstring& object : live) PrintError(L"never released: " + object);
    return live.empty() ? 0 : 3;
}

}  // namespace

int main() {
    int count = 0;
    LocalMemory<wchar_t*> arguments;
    *arguments.Receive() = CommandLineToArgvW(GetCommandLineW(), &count);
    try {
        const Options options = ParseOptions({arguments.Get() + 1, arguments.Get() + count});
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        options.mails.empty() ? RunDocument(options) : RunOutlook(options);
        CoUninitialize();
        return ReportLiveObjects();
    } catch (const UsageError& error) {
        PrintError(Wide(error.what()));
        PrintLine(usage);
        return 2;
    } catch (const std::exception& error) {
        PrintError(Wide(error.what()));
        return 1;
    }
}
