// Stands in for the shell's taskbar list: notes in the file ZAVO_TASKBAR_LOG what it is told, a line a call. With
// ZAVO_TASKBAR_FAIL set it cannot be initialised.
#include <windows.h>
#include <shobjidl.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "standins/common/Counted.h"
#include "standins/common/Text.h"

namespace {

void Note(const std::string& line) {
    std::ofstream log(std::filesystem::path(Environment(L"ZAVO_TASKBAR_LOG")), std::ios::app | std::ios::binary);
    log << line << "\n";
}

std::string Number(HWND window) { return std::to_string(reinterpret_cast<LONG_PTR>(window)); }

class RecordingTaskbar final : public Counted<ITaskbarList3> {
public:
    RecordingTaskbar() { Note("made on " + std::to_string(GetCurrentThreadId())); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
        const bool known =
            riid == IID_IUnknown || riid == IID_ITaskbarList || riid == IID_ITaskbarList2 || riid == IID_ITaskbarList3;
        *ppv = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    HRESULT STDMETHODCALLTYPE HrInit() override { return Environment(L"ZAVO_TASKBAR_FAIL").empty() ? S_OK : E_FAIL; }
    HRESULT STDMETHODCALLTYPE SetProgressValue(HWND window, ULONGLONG done, ULONGLONG total) override {
        Note("value " + Number(window) + " " + std::to_string(done) + " of " + std::to_string(total));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetProgressState(HWND window, TBPFLAG state) override {
        Note("state " + Number(window) + " " + std::to_string(state));
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE AddTab(HWND) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeleteTab(HWND) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ActivateTab(HWND) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetActiveAlt(HWND) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MarkFullscreenWindow(HWND, BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RegisterTab(HWND, HWND) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnregisterTab(HWND) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetTabOrder(HWND, HWND) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetTabActive(HWND, HWND, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ThumbBarAddButtons(HWND, UINT, LPTHUMBBUTTON) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ThumbBarUpdateButtons(HWND, UINT, LPTHUMBBUTTON) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ThumbBarSetImageList(HWND, HIMAGELIST) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetOverlayIcon(HWND, HICON, LPCWSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetThumbnailTooltip(HWND, LPCWSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetThumbnailClip(HWND, RECT*) override { return E_NOTIMPL; }

private:
    ~RecordingTaskbar() override { Note("gone"); }
};

class Factory final : public Counted<IClassFactory> {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
        const bool known = riid == IID_IUnknown || riid == IID_IClassFactory;
        *ppv = known ? this : nullptr;
        if (known) AddRef();
        return known ? S_OK : E_NOINTERFACE;
    }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID riid, void** ppv) override {
        auto* taskbar = new RecordingTaskbar;
        const HRESULT result = taskbar->QueryInterface(riid, ppv);
        taskbar->Release();
        return result;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace

STDAPI DllGetClassObject(REFCLSID, REFIID riid, LPVOID* ppv) {
    auto* factory = new Factory;
    const HRESULT result = factory->QueryInterface(riid, ppv);
    factory->Release();
    return result;
}
