// Progress through the shell's own object.
#include "src/ui/TaskbarProgress.h"

#include <objbase.h>

TaskbarProgress::TaskbarProgress(HWND owner, LONGLONG total) : owner_(owner), total_(total) {
    constexpr LONGLONG fewest = 10;
    if (!owner || total < fewest) return;
    Microsoft::WRL::ComPtr<ITaskbarList3> taskbar;
    if (FAILED(CoCreateInstance(CLSID_TaskbarList, nullptr, CLSCTX_INPROC_SERVER, IID_ITaskbarList3,
                                reinterpret_cast<void**>(taskbar.GetAddressOf())))) {
        return;
    }
    if (taskbar && SUCCEEDED(taskbar->HrInit())) taskbar_ = taskbar;
}

TaskbarProgress::~TaskbarProgress() {
    if (taskbar_) taskbar_->SetProgressState(owner_, TBPF_NOPROGRESS);
}

void TaskbarProgress::Show(LONGLONG done) {
    if (taskbar_) taskbar_->SetProgressValue(owner_, static_cast<ULONGLONG>(done), static_cast<ULONGLONG>(total_));
}
