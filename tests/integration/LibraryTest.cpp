// The library as a process loads it: entry point, class object, and whether it may be unloaded.
#include <gtest/gtest.h>

#include "src/addin/Identity.h"
#include "src/addin/OfficeInterfaces.h"
#include "tests/support/Files.h"
#include "tests/support/Library.h"

namespace {

void* const poison = reinterpret_cast<void*>(static_cast<uintptr_t>(0xdeadbeef));

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
