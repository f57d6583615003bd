// What the add-in costs the start of its host: each step from LoadLibrary to the ribbon-loaded callback, beside an
// empty add-in of the same tool chain in the same run, with and without the engine. A second empty add-in has our
// icons, which are more than half of our file: what of the cost is that of its size.
//
//   load_cost              measures
//   load_cost --times DLL  takes the steps once and prints the microseconds of each
//   load_cost --steps DLL  takes the steps once and says on standard error before each that it comes
//
// Each round is a process of its own, which has the libraries of Windows loaded that every Office program has.
// Libraries that are named after DLL are loaded before the steps, too.
#include <windows.h>
#include <objbase.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "src/addin/Identity.h"
#include "src/addin/OfficeInterfaces.h"
#include "src/base/ControlIds.h"
#include "src/base/Handles.h"
#include "tests/support/ScriptedRibbon.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr size_t roundsEach = 100;
constexpr double mostBesideEmpty = 1.25;
constexpr double mostMilliseconds = 10.0;

constexpr const wchar_t* librariesOfAHost[] = {L"ole32",    L"oleaut32", L"shell32", L"shlwapi",
                                               L"comdlg32", L"comctl32", L"version", L"winspool.drv"};

constexpr const char* stepNames[] = {"LoadLibrary", "class factory", "object",
                                     "connection",  "ribbon markup", "ribbon loaded"};
constexpr size_t steps = std::size(stepNames);
using Round = std::array<double, steps>;  // microseconds

[[noreturn]] void Fail(const char* what) {
    fprintf(stderr, "load_cost: %s failed\n", what);
    ExitProcess(1);
}

void Check(HRESULT result, const char* what) {
    if (FAILED(result)) Fail(what);
}

void Load(const wchar_t* library) {
    if (!LoadLibraryW(library)) Fail("loading a library");
}

double Microseconds() {
    LARGE_INTEGER now, frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart) * 1e6 / static_cast<double>(frequency.QuadPart);
}

// An application with the one collection by which Word is known.
class WordApplication final : public IDispatch {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
        const bool known = riid == IID_IUnknown || riid == IID_IDispatch;
        *ppv = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID, DISPID* dispid) override {
        *dispid = wcscmp(*names, L"Documents") == 0 ? 1 : DISPID_UNKNOWN;
        return *dispid == DISPID_UNKNOWN ? DISP_E_UNKNOWNNAME : S_OK;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                                     UINT*) override {
        if (result) {
            result->vt = VT_DISPATCH;
            result->pdispVal = this;
        }
        return S_OK;
    }
};

// Takes the steps. Each method is one, and they come in this order.
class Host {
public:
    explicit Host(std::wstring path) : path_(std::move(path)) {}
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host() = default;

    void Load() {
        module_ = LoadLibraryExW(path_.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
        if (!module_) Fail("LoadLibrary");
    }
    void GetFactory() {
        using Function = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
        const auto getClassObject =
            reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module_, "DllGetClassObject")));
        Check(getClassObject ? getClassObject(addinClassId, IID_IClassFactory, Place(factory_)) : E_FAIL,
              "the class factory");
    }
    void Create() {
        Check(factory_->CreateInstance(nullptr, IID_IDTExtensibility2, Place(addin_)), "the add-in object");
        factory_.Reset();
    }
    void Connect() { Check(addin_->OnConnection(&application_, ext_cm_Startup, nullptr, nullptr), "OnConnection"); }
    void GetMarkup() {
        ComPtr<IRibbonExtensibility> extensibility;
        Check(addin_->QueryInterface(IID_IRibbonExtensibility, Place(extensibility)), "IRibbonExtensibility");
        Bstr markup;
        Check(extensibility->GetCustomUI(Bstr(L"Microsoft.Word.Document").Get(), markup.Receive()), "GetCustomUI");
    }
    void RibbonLoaded() {
        std::wstring name = OnRibbonLoadedName;
        LPOLESTR names = name.data();
        DISPID dispid = DISPID_UNKNOWN;
        Check(addin_->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &dispid), "GetIDsOfNames");
        VARIANT argument = {};
        argument.vt = VT_DISPATCH;
        argument.pdispVal = &ribbon_;
        DISPPARAMS params = {&argument, nullptr, 1, 0};
        Check(
            addin_->Invoke(dispid, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr),
            "the ribbon-loaded callback");
    }

    void Disconnect() {
        addin_->OnDisconnection(ext_dm_UserClosed, nullptr);
        addin_.Reset();
    }

private:
    template <typename T>
    static void** Place(ComPtr<T>& pointer) {
        return reinterpret_cast<void**>(pointer.ReleaseAndGetAddressOf());
    }

    std::wstring path_;
    HMODULE module_ = nullptr;
    ComPtr<IClassFactory> factory_;
    ComPtr<_IDTExtensibility2> addin_;
    WordApplication application_;
    ScriptedRibbon ribbon_;
};

constexpr void (Host::*stepFunctions[steps])() = {&Host::Load,    &Host::GetFactory, &Host::Create,
                                                  &Host::Connect, &Host::GetMarkup,  &Host::RibbonLoaded};

double MicrosecondsOf(Host& host, size_t step) {
    const double start = Microseconds();
    (host.*stepFunctions[step])();
    return Microseconds() - start;
}

void TakeSteps(const std::wstring& path, bool announced) {
    Host host(path);
    Round round = {};
    for (size_t step = 0; step < steps; ++step) {
        if (announced) fprintf(stderr, "load_cost: %s\n", stepNames[step]);
        round[step] = MicrosecondsOf(host, step);
    }
    if (announced) fprintf(stderr, "load_cost: disconnection\n");
    host.Disconnect();
    if (announced) return;
    for (const double microseconds : round) printf("%.1f ", microseconds);
}

// The steps in a process of its own: of the first library, with the others loaded before.
Round RoundOfAnotherProcess(const std::vector<std::wstring>& libraries) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, &inherited, 0)) Fail("a pipe");
    const KernelHandle reading(readEnd);
    SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = nullptr;
    startup.hStdOutput = writeEnd;
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    wchar_t self[MAX_PATH];
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    std::wstring command = std::wstring(L"\"") + self + L"\" --times";
    for (const std::wstring& library : libraries) command += L" \"" + library + L"\"";
    PROCESS_INFORMATION info = {};
    const BOOL started =
        CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &info);
    CloseHandle(writeEnd);
    if (!started) Fail("starting a process");
    const KernelHandle process(info.hProcess);
    const KernelHandle thread(info.hThread);

    std::string text;
    char buffer[4096];
    for (DWORD read = 0; ReadFile(readEnd, buffer, sizeof buffer, &read, nullptr) && read > 0;)
        text.append(buffer, read);
    WaitForSingleObject(process.Get(), INFINITE);
    DWORD code = 1;
    GetExitCodeProcess(process.Get(), &code);
    if (code != 0) Fail("a round");

    std::istringstream numbers(text);
    Round round = {};
    for (double& microseconds : round) numbers >> microseconds;
    if (!numbers) Fail("reading a round");
    return round;
}

double Quantile(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    return values[static_cast<size_t>(std::lround(static_cast<double>(values.size() - 1) * share))];
}

double Sum(const Round& round) { return std::accumulate(round.begin(), round.end(), 0.0); }

// Milliseconds, a column a library.
struct Column {
    const char* name;
    std::vector<std::wstring> libraries;  // the add-in, and what is loaded before
    std::vector<Round> rounds = {};

    std::vector<double> Milliseconds(size_t step) const {
        std::vector<double> values;
        for (const Round& round : rounds) values.push_back((step < steps ? round[step] : Sum(round)) / 1000);
        return values;
    }
    double Median(size_t step = steps) const { return Quantile(Milliseconds(step), 0.5); }
};

void PrintTable(const std::vector<Column>& columns) {
    printf("start of a host, %zu rounds; milliseconds, median (quartiles)\n  %-16s", roundsEach, "");
    for (const Column& column : columns) printf(" %28s", column.name);
    printf("\n");
    for (size_t step = 0; step <= steps; ++step) {
        printf("  %-16s", step < steps ? stepNames[step] : "all");
        for (const Column& column : columns) {
            const std::vector<double> values = column.Milliseconds(step);
            printf("    %8.3f (%6.3f to %6.3f)", Quantile(values, 0.5), Quantile(values, 0.25), Quantile(values, 0.75));
        }
        printf("\n");
    }
}

void PrintGoal(const char* goal, double figure, double most, const char* unit) {
    printf("  %s: %s: %.2f%s, at most %g%s\n", figure <= most ? "met" : "missed", goal, figure, unit, most, unit);
}

// The file's size, and that of its sections in it.
void PrintSize(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    const std::string data((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    IMAGE_DOS_HEADER dos = {};
    IMAGE_NT_HEADERS64 headers = {};
    if (data.size() < sizeof dos) Fail("reading a library");
    memcpy(&dos, data.data(), sizeof dos);
    const auto start = static_cast<size_t>(dos.e_lfanew);
    memcpy(&headers, data.data() + start, sizeof headers);
    printf("  %-24ls %9zu bytes:", std::filesystem::path(path).filename().c_str(), data.size());
    for (size_t i = 0; i < headers.FileHeader.NumberOfSections; ++i) {
        IMAGE_SECTION_HEADER section = {};
        memcpy(&section, data.data() + start + sizeof headers + i * sizeof section, sizeof section);
        if (section.SizeOfRawData == 0) continue;
        printf(" %.8s %lu", reinterpret_cast<const char*>(section.Name), section.SizeOfRawData);
    }
    printf("\n");
}

void Measure() {
    wchar_t self[MAX_PATH];
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    const auto folder = std::filesystem::path(self).parent_path();
    const auto bin = folder.parent_path().parent_path() / L"bin";
    const std::wstring product = bin / L"zavoofficeaddin.dll";
    const std::wstring engine = bin / L"ZavoKit.dll";
    const std::wstring empty = folder / L"empty_addin.dll";
    enum { Empty, EmptyWithIcons, WithoutEngine, WithEngine };
    std::vector<Column> columns = {{"empty add-in", {empty}},
                                   {"empty, our icons", {folder / L"empty_with_icons.dll"}},
                                   {"ours, engine there", {product, engine}},
                                   {"ours with the engine", {product}}};
    for (size_t round = 0; round < roundsEach; ++round) {
        for (Column& column : columns) column.rounds.push_back(RoundOfAnotherProcess(column.libraries));
    }

    PrintTable(columns);
    // Round by round, because the machine's pace changes in the course of a minute.
    const auto besideLoading = [&](size_t other) {
        std::vector<double> ratios;
        for (size_t round = 0; round < roundsEach; ++round) {
            ratios.push_back(columns[WithoutEngine].rounds[round][0] / columns[other].rounds[round][0]);
        }
        return Quantile(ratios, 0.5);
    };
    printf("  the engine's share: %.2f ms\n", columns[WithEngine].Median() - columns[WithoutEngine].Median());
    printf("  LoadLibrary without the engine beside that of the empty add-in with our icons: %.2fx\n",
           besideLoading(EmptyWithIcons));
    PrintGoal("LoadLibrary without the engine beside the empty add-in's", besideLoading(Empty), mostBesideEmpty, "x");
    PrintGoal("all steps with the engine", columns[WithEngine].Median(), mostMilliseconds, " ms");
    printf("size, and sections in the file\n");
    PrintSize(empty);
    PrintSize(product);
    PrintSize(engine);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
    if (count == 1) {
        Measure();
        return 0;
    }
    if (count < 3) Fail("reading the arguments");
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);  // as a host has done
    for (const wchar_t* library : librariesOfAHost) Load(library);
    std::for_each(arguments + 3, arguments + count, Load);
    TakeSteps(arguments[2], std::wstring_view(arguments[1]) == L"--steps");
    return 0;
}
