// What the add-in costs the start of its host: each step from LoadLibrary to the ribbon-loaded callback, beside an
// empty add-in of the same tool chain in the same run, with and without the engine. A second empty add-in starts as
// many threads as ours does: what of the cost is the system's alone.
//
//   load_cost              measures
//   load_cost --cold DLL   takes the steps once and prints the microseconds of each; --warm DLL many times
//   load_cost --steps DLL  takes the steps once and says on standard error before each that it comes
//
// Cold is a process of its own for each round. Warm is within one process: loading, class factory and object with the
// library unloaded after each round; the rest, which pins the library, with a new object each round after that.
#include <windows.h>
#include <objbase.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
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

constexpr int coldRounds = 60;
constexpr int warmProcesses = 5;
constexpr int warmRounds = 30;  // in each of them
constexpr double mostBesideEmpty = 2.0;
constexpr double mostMilliseconds = 20.0;

constexpr const char* stepNames[] = {"LoadLibrary", "class factory", "object",
                                     "connection",  "ribbon markup", "ribbon loaded"};
constexpr size_t steps = std::size(stepNames);
constexpr size_t stepsBeforeConnection = 3;
using Round = std::array<double, steps>;  // microseconds

[[noreturn]] void Fail(const char* what) {
    fprintf(stderr, "load_cost: %s failed\n", what);
    ExitProcess(1);
}

void Check(HRESULT result, const char* what) {
    if (FAILED(result)) Fail(what);
}

void Load(const wchar_t* library) {
    if (!LoadLibraryExW(library, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH)) Fail("loading a library");
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
    void Unload() {
        addin_.Reset();
        FreeLibrary(module_);
        if (GetModuleHandleW(path_.c_str())) Fail("unloading");
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

void Print(const Round& round) {
    for (const double microseconds : round) printf("%.1f ", microseconds);
    printf("\n");
}

void TakeStepsOnce(const std::wstring& path, bool announced) {
    Host host(path);
    Round round = {};
    for (size_t step = 0; step < steps; ++step) {
        if (announced) fprintf(stderr, "load_cost: %s\n", stepNames[step]);
        round[step] = MicrosecondsOf(host, step);
    }
    if (announced) fprintf(stderr, "load_cost: disconnection\n");
    host.Disconnect();
    if (!announced) Print(round);
}

void TakeStepsOften(const std::wstring& path) {
    // Windows' own libraries stay, as they do in Office.
    for (const wchar_t* library : {L"advapi32", L"comdlg32", L"oleaut32", L"shell32", L"shlwapi", L"user32"}) {
        Load(library);
    }
    std::vector<Round> rounds(warmRounds + 1);  // the first warms up
    for (Round& round : rounds) {
        Host host(path);
        for (size_t step = 0; step < stepsBeforeConnection; ++step) round[step] = MicrosecondsOf(host, step);
        host.Unload();
    }
    Host pinning(path);
    pinning.Load();
    for (Round& round : rounds) {
        Host host(path);
        host.Load();
        host.GetFactory();
        host.Create();
        for (size_t step = stepsBeforeConnection; step < steps; ++step) round[step] = MicrosecondsOf(host, step);
        host.Disconnect();
    }
    std::for_each(rounds.begin() + 1, rounds.end(), Print);
}

// What this program prints when it is run with that option on those libraries, as a process of its own.
std::vector<Round> RoundsOfAnotherProcess(const wchar_t* option, const std::vector<std::wstring>& libraries) {
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
    std::wstring command = std::wstring(L"\"") + self + L"\" " + option;
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

    std::istringstream lines(text);
    std::vector<Round> rounds;
    for (Round round = {}; lines >> round[0];) {
        for (size_t step = 1; step < steps; ++step) lines >> round[step];
        rounds.push_back(round);
    }
    return rounds;
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

void PrintTable(const char* title, const std::vector<Column>& columns) {
    printf("%s; milliseconds, median (quartiles)\n  %-16s", title, "");
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
    printf("  %s: %s: %.2f%s, at most %.0f%s\n", figure <= most ? "met" : "missed", goal, figure, unit, most, unit);
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
    enum { Empty, EmptyWithThreads, WithoutEngine, WithEngine };
    const std::vector<Column> columns = {{"empty add-in", {empty}},
                                         {"empty, two threads", {folder / L"threads_addin.dll"}},
                                         {"ours, engine there", {product, engine}},
                                         {"ours with the engine", {product}}};

    std::vector<Column> cold = columns;
    for (int round = 0; round < coldRounds; ++round) {
        for (Column& column : cold) {
            const auto rounds = RoundsOfAnotherProcess(L"--cold", column.libraries);
            column.rounds.insert(column.rounds.end(), rounds.begin(), rounds.end());
        }
    }
    std::vector<Column> warm = columns;
    for (int round = 0; round < warmProcesses; ++round) {
        for (Column& column : warm) {
            const auto rounds = RoundsOfAnotherProcess(L"--warm", column.libraries);
            column.rounds.insert(column.rounds.end(), rounds.begin(), rounds.end());
        }
    }

    printf("start of a host, from LoadLibrary to the ribbon-loaded callback\n");
    PrintTable("cold, a fresh process each round", cold);
    PrintTable("warm, loaded before in the same process", warm);
    const auto share = [](const std::vector<Column>& part, size_t of, size_t without) {
        return part[of].Median() - part[without].Median();
    };
    printf("  the engine's share: cold %.2f ms, warm %.2f ms\n", share(cold, WithEngine, WithoutEngine),
           share(warm, WithEngine, WithoutEngine));
    printf("  the share of starting two threads: cold %.2f ms, warm %.2f ms\n", share(cold, EmptyWithThreads, Empty),
           share(warm, EmptyWithThreads, Empty));
    const auto ratio = [](const std::vector<Column>& part, size_t beside, size_t step) {
        return part[WithoutEngine].Median(step) / part[beside].Median(step);
    };
    printf("  LoadLibrary alone beside the empty add-in's: cold %.2fx, warm %.2fx\n", ratio(cold, Empty, 0),
           ratio(warm, Empty, 0));
    printf("  all steps beside the empty add-in with two threads: cold %.2fx, warm %.2fx\n",
           ratio(cold, EmptyWithThreads, steps), ratio(warm, EmptyWithThreads, steps));
    PrintGoal("cold, without the engine beside the empty add-in", ratio(cold, Empty, steps), mostBesideEmpty, "x");
    PrintGoal("cold, with the engine", cold[WithEngine].Median(), mostMilliseconds, " ms");
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
    const std::wstring_view option = arguments[1];
    if (count < 3) Fail("reading the arguments");
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);  // as a host has done
    std::for_each(arguments + 3, arguments + count, Load);
    if (option == L"--warm") {
        TakeStepsOften(arguments[2]);
    } else {
        TakeStepsOnce(arguments[2], option == L"--steps");
    }
    return 0;
}
