// Reading the command line.
#include "standins/office/Options.h"

#include <map>
#include <sstream>

#include "standins/common/Text.h"

const wchar_t usage[] =
    L"usage: office-standin.exe [--window] [--document FILE | --outlook FOLDER [--select N,M]] [ACTION]...\n"
    L"Plays Word, Excel or PowerPoint with the document open, or Outlook with a folder of mails that prepare.py made,\n"
    L"and loads the add-ins that are registered for it.\n"
    L"  --select N,M    the mails that are selected, counted from 1; without it all are\n"
    L"  --window        draws the ribbon in a window; what follows is then done there with the mouse\n"
    L"  --tick ID       ticks the check box\n"
    L"  --untick ID     clears the check box\n"
    L"  --click ID      presses the button\n"
    L"  --save-as FILE  what the save dialog is answered with; without it the proposed name stands\n"
    L"  --overwrite     an existing file may be replaced\n"
    L"  --cancel        the save dialog is cancelled\n"
    L"  --theme N       sets Office's theme and waits until the add-in has the ribbon drawn afresh\n"
    L"  --markup        prints the ribbon's markup\n"
    L"  --ribbon        prints the ribbon as a list\n"
    L"In a window only:\n"
    L"  --open ID       opens the menu, until the next action that uses the mouse\n"
    L"  --hover ID      shows the control's tip, until the next action that uses the mouse\n"
    L"  --picture FILE  writes what the screen shows of the window as a PNG file\n"
    L"  --message FILE  writes how the last message box looked as a PNG file\n"
    L"  --texts         prints every text of the ribbon and how it fits its place\n"
    L"  --places        prints where the controls are drawn\n"
    L"  --stay          the window stays until it is closed, as it does without actions\n"
    L"Actions are done in the order given. Exit codes: 0 done, 1 failed, 2 wrong usage, 3 an object was not released.";

namespace {

struct KnownAction {
    ActionKind kind;
    bool hasValue;
    bool needsWindow;
};

const std::map<std::wstring, KnownAction>& KnownActions() {
    static const std::map<std::wstring, KnownAction> known = {
        {L"--tick", {ActionKind::Tick, true, false}},      {L"--untick", {ActionKind::Untick, true, false}},
        {L"--click", {ActionKind::Click, true, false}},    {L"--theme", {ActionKind::Theme, true, false}},
        {L"--markup", {ActionKind::Markup, false, false}}, {L"--ribbon", {ActionKind::Ribbon, false, false}},
        {L"--open", {ActionKind::Open, true, true}},       {L"--hover", {ActionKind::Hover, true, true}},
        {L"--picture", {ActionKind::Picture, true, true}}, {L"--message", {ActionKind::Message, true, true}},
        {L"--texts", {ActionKind::Texts, false, true}},    {L"--places", {ActionKind::Places, false, true}},
    };
    return known;
}

}  // namespace

Options ParseOptions(const std::vector<std::wstring>& arguments) {
    Options options;
    std::string onlyInWindow;
    for (size_t i = 0; i < arguments.size(); ++i) {
        const std::wstring& argument = arguments[i];
        const auto value = [&]() -> const std::wstring& {
            if (++i == arguments.size()) throw UsageError(Utf8(argument) + " needs a value");
            return arguments[i];
        };
        if (const auto action = KnownActions().find(argument); action != KnownActions().end()) {
            if (action->second.needsWindow) onlyInWindow = Utf8(argument);
            options.actions.push_back({action->second.kind, action->second.hasValue ? value() : std::wstring()});
            const Action& added = options.actions.back();
            if (added.kind == ActionKind::Theme && added.value.find_first_not_of(L"0123456789") != std::wstring::npos) {
                throw UsageError("a theme is a number, not " + Utf8(added.value));
            }
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
        } else if (argument == L"--window") {
            options.window = true;
        } else if (argument == L"--stay") {
            options.stay = true;
            onlyInWindow = Utf8(argument);
        } else {
            throw UsageError("unknown argument " + Utf8(argument));
        }
    }
    if (!options.window && !onlyInWindow.empty()) throw UsageError(onlyInWindow + " needs --window");
    return options;
}

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
