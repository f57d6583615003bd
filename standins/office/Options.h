// The command line of the Office stand-in.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "standins/office/DialogRobot.h"

enum class ActionKind { Tick, Untick, Click, Theme, Markup, Ribbon, Open, Hover, Picture, Message, Texts, Places };

struct Action {
    ActionKind kind;
    std::wstring value;  // the id of a control, the number of a theme, the path of a picture
};

struct Options {
    bool window = false;  // the ribbon is drawn, and pressed with the mouse
    bool stay = false;    // the window stays after the actions
    std::wstring document;
    std::wstring mails;  // a prepared folder for Outlook
    std::optional<std::wstring> selection;
    SaveAnswer saveAnswer;
    std::vector<Action> actions;
};

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

extern const wchar_t usage[];

// Throws UsageError.
Options ParseOptions(const std::vector<std::wstring>& arguments);

// The places, from 0, that "N,M" counts from 1; all `count` of them when there is no selection. Throws
// std::runtime_error for a number that is not there.
std::vector<size_t> SelectedPlaces(const std::optional<std::wstring>& selection, size_t count);
