// The Office stand-in as a program: plays the host that opens the document, loads the add-ins that Office would load,
// and does on their ribbon what the command line says.
#include <windows.h>
#include <objbase.h>
#include <shellapi.h>
#include <tlhelp32.h>

#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "src/base/Handles.h"
#include "standins/common/Journal.h"
#include "standins/common/Text.h"
#include "standins/office/AddinSession.h"
#include "standins/office/DialogRobot.h"
#include "standins/office/DynamicObject.h"
#include "standins/office/Hosts.h"
#include "standins/office/OutlookFolder.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr wchar_t usage[] =
    L"usage: office-standin.exe [--document FILE | --outlook FOLDER [--select N,M]] [ACTION]...\n"
    L"Plays Word, Excel or PowerPoint with the document open, or Outlook with a folder of mails that prepare.py made,\n"
    L"and loads the add-ins that are registered for it.\n"
    L"  --select N,M    the mails that are selected, counted from 1; without it all are\n"
    L"  --tick ID       ticks the check box\n"
    L"  --untick ID     clears the check box\n"
    L"  --click ID      presses the button\n"
    L"  --save-as FILE  what the save dialog is answered with; without it the proposed name stands\n"
    L"  --overwrite     an existing file may be replaced\n"
    L"  --cancel        the save dialog is cancelled\n"
    L"  --theme N       sets Office's theme and waits until the add-in has the ribbon drawn afresh\n"
    L"  --markup        prints the ribbon's markup\n"
    L"  --ribbon        prints the ribbon as a list\n"
    L"Actions are done in the order given. Exit codes: 0 done, 1 failed, 2 wrong usage, 3 an object was not released.";

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

enum class ActionKind { Tick, Untick, Click, Theme, Markup, Ribbon };

struct Action {
    ActionKind kind;
    std::wstring id;
};

struct Options {
    std::wstring document;
    std::wstring mails;  // a prepared folder for Outlook
    std::optional<std::wstring> selection;
    SaveAnswer saveAnswer;
    std::vector<Action> actions;
};

Options ParseOptions(const std::vector<std::wstring>& arguments) {
    const std::map<std::wstring, ActionKind> actionsWithId = {{L"--tick", ActionKind::Tick},
                                                              {L"--untick", ActionKind::Untick},
                                                              {L"--click", ActionKind::Click},
                                                              {L"--theme", ActionKind::Theme}};
    Options options;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::wstring& argument = arguments[i];
        const auto value = [&]() -> const std::wstring& {
            if (++i == arguments.size()) throw UsageError(Utf8(argument) + " needs a value");
            return arguments[i];
        };
        if (const auto action = actionsWithId.find(argument); action != actionsWithId.end()) {
            options.actions.push_back({action->second, value()});
        } else if (argument == L"--document") {
            options.document = value();
        } else if (argument == L"--outlook") {
            options.mails = value();
        } else if (argument == L"--select") {
            options.selection = value();
        } else if (argument == L"--save-as") {
            options.saveAnswer.path = value();
        } else if (argument == L"--overwrite") {
            options.saveAnswer.overwrite = true;
        } else if (argument == L"--cancel") {
            options.saveAnswer.cancel = true;
        } else if (argument == L"--markup") {
            options.actions.push_back({ActionKind::Markup, {}});
        } else if (argument == L"--ribbon") {
            options.actions.push_back({ActionKind::Ribbon, {}});
        } else {
            throw UsageError("unknown argument " + Utf8(argument));
        }
    }
    return options;
}

// The host's main window.
class MainWindow {
public:
    explicit MainWindow(const OfficeHost& host) {
        WNDCLASSW windowClass = {};
        windowClass.lpfnWndProc = DefWindowProcW;
        windowClass.hInstance = GetModuleHandleW(nullptr);
        windowClass.lpszClassName = host.windowClass;
        RegisterClassW(&windowClass);
        window_ = CreateWindowW(host.windowClass, host.name, WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 800, 600, nullptr,
                                nullptr, windowClass.hInstance, nullptr);
        SetForegroundWindow(window_);
    }
    MainWindow(const MainWindow&) = delete;
    MainWindow& operator=(const MainWindow&) = delete;
    ~MainWindow() { DestroyWindow(window_); }

    HWND Get() const { return window_; }

private:
    HWND window_;
};

void Expect(HRESULT result, const std::wstring& what) {
    if (FAILED(result)) throw std::runtime_error(Utf8(what + L" failed: " + HexText(result)));
}

bool IsPressed(AddinSession& session, const RibbonElement& checkBox) {
    const CallbackResult state = session.GetPressed(checkBox);
    Expect(state.result, checkBox.id);
    return state.pressed;
}

void PrintElements(AddinSession& session, const std::vector<RibbonElement>& elements, const std::wstring& indent) {
    for (const RibbonElement& element : elements) {
        std::wstring line = indent + element.kind + L" \"" + element.label + L"\"";
        if (!element.getPressed.empty()) line += IsPressed(session, element) ? L" [x]" : L" [ ]";
        PrintLine(line + L"  " + element.id);
        PrintElements(session, element.children, indent + L"  ");
    }
}

// Asks for the state and the picture of everything, as Office does before it draws a ribbon.
void DrawElements(AddinSession& session, const std::vector<RibbonElement>& elements) {
    for (const RibbonElement& element : elements) {
        if (!element.getPressed.empty()) IsPressed(session, element);
        if (!element.getImage.empty()) Expect(session.LoadImage(element).result, L"the picture of " + element.id);
        DrawElements(session, element.children);
    }
}

const RibbonElement& ElementOf(const AddinSession& session, const Action& action, const wchar_t* kind) {
    const RibbonElement* element = FindElement(session.GetRibbon(), action.id);
    if (!element || element->kind != kind) {
        throw std::runtime_error("the ribbon has no " + Utf8(kind) + " " + Utf8(action.id));
    }
    return *element;
}

void ChangeTheme(AddinSession& session, DWORD theme) {
    const LONG before = session.Invalidations();
    RegSetKeyValueW(HKEY_CURRENT_USER, L"Software\\Microsoft\\Office\\16.0\\Common", L"UI Theme", REG_DWORD, &theme,
                    sizeof theme);
    for (int waited = 0; waited < 2000 && session.Invalidations() == before; waited += 10) Sleep(10);
    if (session.Invalidations() == before) throw std::runtime_error("the add-in did not notice the theme");
    DrawElements(session, session.GetRibbon().tabs);
    PrintLine(L"theme " + std::to_wstring(theme) + L": the ribbon was drawn afresh");
}

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

// What an earlier click showed is looked at before the next one, so that the companion's reports come in order.
void WaitForCompanion() {
    for (int waited = 0; waited < 10000 && IsCompanionRunning(); waited += 10) Sleep(10);
}

void Do(AddinSession& session, const Action& action, const SaveAnswer& saveAnswer) {
    switch (action.kind) {
        case ActionKind::Tick:
        case ActionKind::Untick: {
            const RibbonElement& checkBox = ElementOf(session, action, L"checkBox");
            const bool pressed = action.kind == ActionKind::Tick;
            Expect(session.SetPressed(checkBox, pressed).result, action.id);
            PrintLine((pressed ? L"ticked: " : L"cleared: ") + checkBox.label);
            break;
        }
        case ActionKind::Click: {
            const RibbonElement& button = ElementOf(session, action, L"button");
            WaitForCompanion();
            PrintLine(L"clicked: " + button.label);
            WriteJournal({L"clicked", action.id});
            const DialogRobot robot(saveAnswer);
            Expect(session.Click(button).result, action.id);
            for (const SeenDialog& dialog : robot.Seen()) {
                PrintLine((dialog.isSaveDialog ? L"save dialog proposed: " : L"message: ") + dialog.text);
            }
            break;
        }
        case ActionKind::Theme: ChangeTheme(session, wcstoul(action.id.c_str(), nullptr, 10)); break;
        case ActionKind::Markup: PrintLine(session.Markup()); break;
        case ActionKind::Ribbon: PrintElements(session, session.GetRibbon().tabs, L""); break;
    }
}

// The full path of a file or folder that is there.
std::wstring ExistingPath(const std::wstring& path, const char* what) {
    wchar_t full[32768];
    if (GetFullPathNameW(path.c_str(), ARRAYSIZE(full), full, nullptr) == 0 ||
        GetFileAttributesW(full) == INVALID_FILE_ATTRIBUTES) {
        throw std::runtime_error(std::string("no such ") + what + ": " + Utf8(path));
    }
    return full;
}

// The places, from 0, that "N,M" counts from 1; all `count` of them when there is no selection.
std::vector<size_t> SelectedPlaces(const std::optional<std::wstring>& selection, size_t count) {
    std::vector<size_t> places;
    if (!selection) {
        for (size_t place = 0; place < count; ++place) places.push_back(place);
        return places;
    }
    std::wstringstream numbers(*selection);
    for (std::wstring number; std::getline(numbers, number, L',');) {
        const unsigned long place = wcstoul(number.c_str(), nullptr, 10);
        if (place < 1 || place > count) throw std::runtime_error("there is no mail " + Utf8(number) + " to select");
        places.push_back(place - 1);
    }
    return places;
}

ComPtr<IDispatch> StartOutlook(const Options& options) {
    OutlookFolder folder = ReadOutlookFolder(ExistingPath(options.mails, "folder"));
    std::vector<size_t> places = SelectedPlaces(options.selection, folder.items.size());
    PrintLine(L"folder: " + folder.name + L", " + std::to_wstring(folder.items.size()) + L" items, " +
              std::to_wstring(places.size()) + L" selected");
    return MakeOutlookApplication(std::move(folder), std::move(places));
}

void Run(const Options& options) {
    const bool isOutlook = !options.mails.empty();
    const std::wstring document = options.document.empty() ? L"" : ExistingPath(options.document, "document");
    const OfficeHost* host = isOutlook ? &OutlookHost() : HostOfDocument(document);
    if (!host) throw std::runtime_error("no host opens a document of this kind: " + Utf8(document));
    const MainWindow window(*host);
    PrintLine(std::wstring(L"host: ") + host->name);
    const ComPtr<IDispatch> application =
        isOutlook ? StartOutlook(options) : host->makeApplication(document, window.Get());
    const std::vector<std::wstring> addins = FindStartupAddins(host->name);
    if (addins.empty()) throw std::runtime_error("no add-in is registered for " + Utf8(host->name));
    for (const std::wstring& progId : addins) {
        AddinSession session(progId, application.Get(), host->ribbonId);
        PrintLine(L"add-in loaded: " + progId);
        DrawElements(session, session.GetRibbon().tabs);
        for (const Action& action : options.actions) Do(session, action, options.saveAnswer);
    }
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
        Run(options);
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
