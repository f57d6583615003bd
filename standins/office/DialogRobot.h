// A robot that answers the dialogs of its own process, as a user would with the keyboard.
#pragma once

#include <windows.h>

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "src/base/Handles.h"

// What to do with save dialogs. Message boxes are noted and closed with their default answer.
struct SaveAnswer {
    bool cancel = false;
    std::wstring path = {};  // what is typed; empty: the proposed name as it stands
    bool overwrite =
        false;  // whether a question about an existing file is answered with yes; no also cancels the dialog
};

struct SeenDialog {
    std::wstring caption;
    std::wstring text;  // a message box's text, or the file name that a save dialog proposed
    HWND owner = nullptr;
    HICON icon = nullptr;  // a message box's
    bool isSaveDialog = false;
    std::vector<std::wstring> filters = {};  // a save dialog's file types
    bool offersReadOnly = false;             // whether a save dialog shows the box "open as read-only"
    int listedFiles = 0;                     // how many files and folders a save dialog lists
};

// Works in a thread of its own from construction to destruction.
class DialogRobot {
public:
    // `beforeClosing` gets each message box when it is drawn and before it is closed, on the robot's thread.
    explicit DialogRobot(SaveAnswer answer, std::function<void(HWND)> beforeClosing = {});
    DialogRobot(const DialogRobot&) = delete;
    DialogRobot& operator=(const DialogRobot&) = delete;
    ~DialogRobot();

    std::vector<SeenDialog> Seen() const;

private:
    void Work();
    void Handle(HWND dialog);
    void HandleSaveDialog(HWND dialog, HWND edit);
    void HandleMessageBox(HWND box);
    void Note(SeenDialog dialog);

    const SaveAnswer answer_;
    const std::function<void(HWND)> beforeClosing_;
    mutable std::mutex mutex_;
    std::vector<SeenDialog> seen_;
    std::vector<HWND> handled_;
    HWND refused_ = nullptr;  // a save dialog whose question about overwriting was answered with no
    const KernelHandle stop_;
    std::thread thread_;  // last: it uses everything above
};
