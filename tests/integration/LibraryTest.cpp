// The library as a process loads it: entry point, class object, and whether it may be unloaded.
#include <gtest/gtest.h>

#include <cstring>

#include "engine/ZavoKit.h"
#include "src/addin/Identity.h"
#include "src/addin/OfficeInterfaces.h"
#include "tests/support/Files.h"
#include "tests/support/Library.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr uint32_t allPages = 0xFFFFFFFF;
void* const poison = reinterpret_cast<void*>(static_cast<uintptr_t>(0xdeadbeef));

// The address that a library is linked for, as its file has it.
void* PreferredBase(const std::filesystem::path& library) {
    const std::string data = ReadFileText(library.wstring());
    IMAGE_DOS_HEADER dos = {};
    IMAGE_NT_HEADERS64 headers = {};
    if (data.size() < sizeof dos) return nullptr;
    memcpy(&dos, data.data(), sizeof dos);
    memcpy(&headers, data.data() + dos.e_lfanew, sizeof headers);
    return reinterpret_cast<void*>(headers.OptionalHeader.ImageBase);
}

// Keeps an address from whoever would have it.
class TakenAddress {
public:
    explicit TakenAddress(void* address) : memory_(VirtualAlloc(address, 1, MEM_RESERVE, PAGE_NOACCESS)) {}
    TakenAddress(const TakenAddress&) = delete;
    TakenAddress& operator=(const TakenAddress&) = delete;
    ~TakenAddress() { VirtualFree(memory_, 0, MEM_RELEASE); }

    void* Get() const { return memory_; }

private:
    void* memory_;
};

// A function that a library exports, of the type that the engine's header has for it.
template <typename Function>
Function Exported(HMODULE library, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

template <typename T>
void** Place(ComPtr<T>& pointer) {
    return reinterpret_cast<void**>(pointer.GetAddressOf());
}

// A PDF of one empty page. It has no cross-reference table, so its objects are searched for.
constexpr char emptyPage[] =
    "%PDF-1.4\n1 0 obj\n<</Type/Catalog/Pages 2 0 R>>\nendobj\n2 0 obj\n<</Type/Pages/Count 1/Kids[3 0 R]>>\nendobj\n"
    "3 0 obj\n<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]>>\nendobj\ntrailer\n<</Root 1 0 R/Size 4>>\n%%EOF\n";

}  // namespace

TEST(Library, LoadingStartsComAndTheEngineAndUnloadingLeavesComFirst) {
    const TemporaryFolder folder;
    SetEnvironmentVariableW(L"ZAVO_ENGINE_LOG", folder.Path(L"engine.log").c_str());
    {
        const LoadedLibrary library(RecordedLibraryPath());
        ASSERT_NE(library.Get(), nullptr) << GetLastError();
        EXPECT_EQ(ReadFileText(folder.Path(L"engine.log")), "PDF_InitLibrary(null) COM is up\n");
    }
    EXPECT_EQ(ReadFileText(folder.Path(L"engine.log")),
              "PDF_InitLibrary(null) COM is up\nPDF_DestroyLibrary() COM is down\n");
}

TEST(Library, LoadsAlsoWhereComCannotBeInitialised) {
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);  // CoInitialize then fails
    const LoadedLibrary library;
    EXPECT_NE(library.Get(), nullptr);
}

TEST(Library, ClassObjectNeedsAPlaceForIt) {
    const LoadedLibrary library;
    EXPECT_EQ(library.GetClassObject(addinClassId, IID_IClassFactory, nullptr), E_INVALIDARG);
    EXPECT_EQ(library.GetClassObject(IID_IUnknown, IID_IClassFactory, nullptr), E_INVALIDARG);
}

TEST(Library, OtherClassIsNotAvailable) {
    const LoadedLibrary library;
    void* object = poison;
    EXPECT_EQ(library.GetClassObject(IID_IUnknown, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(library.CanUnloadNow(), S_OK);
}

TEST(Library, UnsupportedInterfaceKeepsTheLibraryLoadedForGood) {
    const LoadedLibrary library;
    void* object = poison;
    EXPECT_EQ(library.CanUnloadNow(), S_OK);
    EXPECT_EQ(library.GetClassObject(addinClassId, IID_IDispatch, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(library.CanUnloadNow(), S_FALSE);
}

TEST(Library, LiveFactoryKeepsTheLibraryLoaded) {
    const LoadedLibrary library;
    IClassFactory* factory = nullptr;
    EXPECT_EQ(library.GetClassObject(addinClassId, IID_IClassFactory, reinterpret_cast<void**>(&factory)), S_OK);
    EXPECT_EQ(library.CanUnloadNow(), S_FALSE);
    EXPECT_EQ(factory->Release(), 0U);
    EXPECT_EQ(library.CanUnloadNow(), S_OK);
}

TEST(Library, LiveObjectsAloneDoNotKeepItLoaded) {
    const LoadedLibrary library;
    IClassFactory* factory = nullptr;
    library.GetClassObject(addinClassId, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    IUnknown* addin = nullptr;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IDTExtensibility2, reinterpret_cast<void**>(&addin)), S_OK);
    factory->Release();
    EXPECT_EQ(library.CanUnloadNow(), S_OK);
    EXPECT_EQ(addin->Release(), 0U);
}

TEST(Library, ServerLockKeepsTheLibraryLoadedAndSoDoesAnUnlockTooMany) {
    const LoadedLibrary library;
    IClassFactory* factory = nullptr;
    library.GetClassObject(addinClassId, IID_IClassFactory, reinterpret_cast<void**>(&factory));
    factory->LockServer(TRUE);
    EXPECT_EQ(library.CanUnloadNow(), S_FALSE);
    factory->LockServer(FALSE);
    factory->LockServer(FALSE);
    EXPECT_EQ(library.CanUnloadNow(), S_FALSE);  // one factory and one unlock too many do not add up to none
    factory->Release();
    EXPECT_EQ(library.CanUnloadNow(), S_FALSE);
}

TEST(Library, WorksWithItsEngineWhereTheAddressesTheyAreLinkedForAreTaken) {
    const std::filesystem::path addinPath = LibraryPath();
    const auto enginePath = addinPath.parent_path() / L"ZavoKit.dll";
    void* const addinBase = PreferredBase(addinPath);
    void* const engineBase = PreferredBase(enginePath);
    const TakenAddress taken(addinBase);
    const TakenAddress alsoTaken(engineBase);
    ASSERT_TRUE(addinBase && engineBase);
    ASSERT_EQ(taken.Get(), addinBase);
    ASSERT_EQ(alsoTaken.Get(), engineBase);

    const LoadedLibrary library;
    const HMODULE engine = GetModuleHandleW(enginePath.c_str());
    ASSERT_TRUE(library.Get() && engine) << GetLastError();
    EXPECT_NE(static_cast<void*>(library.Get()), addinBase);
    EXPECT_NE(static_cast<void*>(engine), engineBase);

    ComPtr<IClassFactory> factory;
    ASSERT_EQ(library.GetClassObject(addinClassId, IID_IClassFactory, Place(factory)), S_OK);
    ComPtr<IRibbonExtensibility> addin;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IRibbonExtensibility, Place(addin)), S_OK);
    Bstr markup;
    ASSERT_EQ(addin->GetCustomUI(Bstr(L"Microsoft.Word.Document").Get(), markup.Receive()), S_OK);
    EXPECT_NE(std::wstring(markup.Get()).find(L"OnRibbonLoaded"), std::wstring::npos);

    const TemporaryFolder folder;
    const auto load = Exported<decltype(&PDF_LoadDocument)>(engine, "PDF_LoadDocument");
    const auto close = Exported<decltype(&PDF_CloseDocument)>(engine, "PDF_CloseDocument");
    const auto startMerge = Exported<decltype(&PDFMerge_Create)>(engine, "PDFMerge_Create");
    const auto add = Exported<decltype(&PDFMerge_AddDocument)>(engine, "PDFMerge_AddDocument");
    const auto save = Exported<decltype(&PDFMerge_Save)>(engine, "PDFMerge_Save");
    const auto endMerge = Exported<decltype(&PDFMerge_Close)>(engine, "PDFMerge_Close");
    ASSERT_TRUE(load && close && startMerge && add && save && endMerge);
    EXPECT_EQ(load(folder.MakeFile(L"other.pdf", "no PDF").c_str(), nullptr), nullptr);
    const PdfDocument document = load(folder.MakeFile(L"page.pdf", emptyPage).c_str(), nullptr);
    const PdfMerge merge = startMerge();
    EXPECT_TRUE(add(merge, document, allPages, allPages, 1, 1, L""));
    EXPECT_TRUE(add(merge, document, allPages, allPages, 1, 1, L""));
    EXPECT_TRUE(save(merge, folder.Path(L"merged.pdf").c_str(), 0));
    EXPECT_TRUE(endMerge(merge) && close(document));
    const PdfDocument merged = load(folder.Path(L"merged.pdf").c_str(), nullptr);
    EXPECT_TRUE(merged && close(merged));
}
