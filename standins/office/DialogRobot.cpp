// The dialog robot.
#include "standins/office/DialogRobot.h"

#include <commctrl.h>

#include <algorithm>
#include <utility>

namespace {

constexpr int fileNameComboId = 0x47C;  // cmb13, the save dialog's file name
constexpr int filterComboId = 0x470;    // cmb1, its file types
constexpr int readOnlyBoxId = 0x410;    // chx1
constexpr int messageTextId = 0xFFFF;   // a message box's text
constexpr DWORD pollMilliseconds = 10;
constexpr DWORD settleMilliseconds = 200;  // a dialog fills and draws its controls after it appears

std::wstring TextOf(HWND window) {
    std::wstring text(4096, L'\0');
    DWORD_PTR length = 0;
    SendMessageTimeoutW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()), SMTO_ABORTIFHUNG, 2000,
                        &length);
    text.resize(length);
    return text;
}

HWND FileNameEdit(HWND dialog) {
    const HWND outer = GetDlgItem(dialog, fileNameComboId);
    if (!outer) return nullptr;
    const HWND combo = FindWindowExW(outer, nullptr, L"ComboBox", nullptr);
    const HWND edit = FindWindowExW(combo ? combo : outer, nullptr, L"Edit", nullptr);
    return edit ? edit : outer;
}

// The picture of a message box: that of its one child that has one.
HICON MessageIcon(HWND box) {
    HICON icon = nullptr;
    EnumChildWindows(
        box,
        [](HWND child, LPARAM found) -> BOOL {
            const LRESULT picture = SendMessageW(child, STM_GETICON, 0, 0);
            if (picture) *reinterpret_cast<HICON*>(found) = reinterpret_cast<HICON>(picture);
            return picture == 0;
        },
        reinterpret_cast<LPARAM>(&icon));
    return icon;
}

std::vector<std::wstring> FiltersOf(HWND dialog) {
    const HWND combo = GetDlgItem(dialog, filterComboId);
    std::vector<std::wstring> filters(static_cast<size_t>(SendMessageW(combo, CB_GETCOUNT, 0, 0)));
    for (size_t i = 0; i < filters.size(); ++i) {
        wchar_t text[256] = {};
        SendMessageW(combo, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(text));
        filters[i] = text;
    }
    return filters;
}

int ListedFiles(HWND dialog) {
    int listed = 0;
    EnumChildWindows(
        dialog,
        [](HWND child, LPARAM count) -> BOOL {
            wchar_t name[32] = {};
            GetClassNameW(child, name, ARRAYSIZE(name));
            if (wcscmp(name, WC_LISTVIEWW) != 0) return TRUE;
            *reinterpret_cast<int*>(count) = ListView_GetItemCount(child);
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&listed));
    return listed;
}

void Press(HWND dialog, int button) { PostMessageW(dialog, WM_COMMAND, static_cast<WPARAM>(button), 0); }

std::vector<HWND> OwnDialogs() {
    std::vector<HWND> dialogs;
    EnumWindows(
        [](HWND window, LPARAM list) -> BOOL {
            DWORD process = 0;
            wchar_t name[16] = {};
            GetWindowThreadProcessId(window, &process);
            GetClassNameW(window, name, ARRAYSIZE(name));
            if (process == GetCurrentProcessId() && IsWindowVisible(window) && wcscmp(name, L"#32770") == 0) {
                reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&dialogs));
    return dialogs;
}

}  // namespace

DialogRobot::DialogRobot(SaveAnswer answer, std::function<void(HWND)> beforeClosing)
    : answer_(std::move(answer)),
      beforeClosing_(std::move(beforeClosing)),
      stop_(CreateEventW(nullptr, TRUE, FALSE, nullptr)),
      thread_([this] { Work(); }) {}

DialogRobot::~DialogRobot() {
    SetEvent(stop_.Get());
    thread_.join();
}

std::vector<SeenDialog> DialogRobot::Seen() const {
    const std::lock_guard lock(mutex_);
    return seen_;
}

void DialogRobot::Note(SeenDialog dialog) {
    const std::lock_guard lock(mutex_);
    seen_.push_back(std::move(dialog));
}

void DialogRobot::Work() {
    while (WaitForSingleObject(stop_.Get(), pollMilliseconds) == WAIT_TIMEOUT) {
        const std::vector<HWND> dialogs = OwnDialogs();
        std::erase_if(handled_,
                      [&](HWND window) { return std::find(dialogs.begin(), dialogs.end(), window) == dialogs.end(); });
        for (const HWND dialog : dialogs) {
            if (std::find(handled_.begin(), handled_.end(), dialog) != handled_.end()) continue;
            handled_.push_back(dialog);
            Handle(dialog);
        }
        // Back in the dialog after a refused question, the user gives up.
        if (refused_ && IsWindowEnabled(refused_)) Press(std::exchange(refused_, nullptr), IDCANCEL);
    }
}

void DialogRobot::Handle(HWND dialog) {
    if (GetDlgItem(dialog, fileNameComboId)) {
        Sleep(settleMilliseconds);
        HandleSaveDialog(dialog, FileNameEdit(dialog));
    } else {
        HandleMessageBox(dialog);
    }
}

void DialogRobot::HandleSaveDialog(HWND dialog, HWND edit) {
    Note({TextOf(dialog), TextOf(edit), GetWindow(dialog, GW_OWNER), nullptr, true, FiltersOf(dialog),
          IsWindowVisible(GetDlgItem(dialog, readOnlyBoxId)) != FALSE, ListedFiles(dialog)});
    if (answer_.cancel) return Press(dialog, IDCANCEL);
    if (!answer_.path.empty()) {
        SendMessageW(edit, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(answer_.path.c_str()));
    }
    Press(dialog, IDOK);
}

void DialogRobot::HandleMessageBox(HWND box) {
    const HWND owner = GetWindow(box, GW_OWNER);
    Note({TextOf(box), TextOf(GetDlgItem(box, messageTextId)), owner, MessageIcon(box)});
    if (beforeClosing_) {
        Sleep(settleMilliseconds);
        beforeClosing_(box);
    }
    const bool isQuestion = GetDlgItem(box, IDYES) != nullptr;
    if (isQuestion && !answer_.overwrite) {
        Press(box, IDNO);
        refused_ = owner;
    } else if (isQuestion) {
        Press(box, IDYES);
    } else {
        Press(box, IDOK);
        // The save dialog complained about what was typed; there is nothing else to type.
        if (GetDlgItem(owner, fileNameComboId)) refused_ = owner;
    }
}
