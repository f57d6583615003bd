// How far a long command is, on the taskbar button of a window.
#pragma once

#include <windows.h>
#include <shobjidl.h>
#include <wrl/client.h>

// Shows nothing for no window, for fewer than ten steps, and where Windows has no taskbar to show it on. Pumps no
// messages.
class TaskbarProgress {
public:
    TaskbarProgress(HWND owner, LONGLONG total);
    TaskbarProgress(const TaskbarProgress&) = delete;
    TaskbarProgress& operator=(const TaskbarProgress&) = delete;
    ~TaskbarProgress();  // clears it

    void Show(LONGLONG done);

private:
    const HWND owner_;
    const LONGLONG total_;
    Microsoft::WRL::ComPtr<ITaskbarList3> taskbar_;
};
