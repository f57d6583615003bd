// The real library, as it was built.
#pragma once

#include <windows.h>
#include <objbase.h>

#include <filesystem>
#include <string>

#include "src/base/Handles.h"

inline std::wstring LibraryPath() {
    wchar_t self[MAX_PATH];
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    // Test programs are in build/<configuration>/tests, the library is in build/bin.
    const auto build = std::filesystem::path(self).parent_path().parent_path().parent_path();
    return build / L"bin" / L"zavoofficeaddin.dll";
}

// A copy of it beside an engine that writes its calls to the file that ZAVO_ENGINE_LOG names.
inline std::wstring RecordedLibraryPath() {
    wchar_t self[MAX_PATH];
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    return std::filesystem::path(self).parent_path() / L"recorded" / L"zavoofficeaddin.dll";
}

// The library, loaded as COM loads it: the engine beside it is found.
class LoadedLibrary {
public:
    explicit LoadedLibrary(const std::wstring& path = LibraryPath())
        : module_(LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)) {}
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;
    ~LoadedLibrary() {
        if (module_) FreeLibrary(module_);
    }

    HMODULE Get() const { return module_; }

    HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** object) const {
        using Function = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
        return Export<Function>("DllGetClassObject")(clsid, iid, object);
    }
    HRESULT CanUnloadNow() const { return CallPlain("DllCanUnloadNow"); }
    HRESULT Register() const { return CallPlain("DllRegisterServer"); }
    HRESULT Unregister() const { return CallPlain("DllUnregisterServer"); }

private:
    template <typename Function>
    Function Export(const char* name) const {
        return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, name)));
    }
    HRESULT CallPlain(const char* name) const { return Export<HRESULT(STDAPICALLTYPE*)()>(name)(); }

    HMODULE module_;
};

// Runs a command line and answers its full exit code, or -1 when it does not start.
inline DWORD RunAndWait(std::wstring commandLine) {
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION info = {};
    if (!CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &info)) {
        return static_cast<DWORD>(-1);
    }
    const KernelHandle process(info.hProcess);
    const KernelHandle thread(info.hThread);
    WaitForSingleObject(process.Get(), 30000);
    DWORD code = static_cast<DWORD>(-1);
    GetExitCodeProcess(process.Get(), &code);
    return code;
}
