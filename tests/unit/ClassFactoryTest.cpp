// The class factory and its counts, without the library around it.
#include "src/addin/ClassFactory.h"

#include <gtest/gtest.h>

#include "src/addin/OfficeInterfaces.h"
#include "src/base/Module.h"

namespace {

void* const poison = reinterpret_cast<void*>(static_cast<uintptr_t>(0xdeadbeef));

}  // namespace

TEST(ClassFactory, CountsItselfWhileItLives) {
    EXPECT_EQ(moduleState.objectCount, 0);
    auto* factory = new ZOfficeAddinClassFactory;
    EXPECT_EQ(moduleState.objectCount, 1);
    EXPECT_EQ(factory->AddRef(), 2U);
    EXPECT_EQ(factory->Release(), 1U);
    EXPECT_EQ(factory->Release(), 0U);
    EXPECT_EQ(moduleState.objectCount, 0);
}

TEST(ClassFactory, QueryKnowsTwoInterfaces) {
    auto* factory = new ZOfficeAddinClassFactory;
    for (const IID* iid : {&IID_IUnknown, &IID_IClassFactory}) {
        void* face = poison;
        EXPECT_EQ(factory->QueryInterface(*iid, &face), S_OK);
        EXPECT_EQ(face, factory);
        EXPECT_EQ(factory->Release(), 1U);
    }
    void* face = poison;
    EXPECT_EQ(factory->QueryInterface(IID_IDispatch, &face), E_NOINTERFACE);
    EXPECT_EQ(face, nullptr);
    EXPECT_EQ(factory->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    factory->Release();
}

TEST(ClassFactory, MakesAnObjectWithOneReference) {
    auto* factory = new ZOfficeAddinClassFactory;
    IUnknown* addin = nullptr;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IRibbonExtensibility, reinterpret_cast<void**>(&addin)), S_OK);
    EXPECT_EQ(addin->AddRef(), 2U);
    EXPECT_EQ(addin->Release(), 1U);
    EXPECT_EQ(addin->Release(), 0U);
    factory->Release();
}

TEST(ClassFactory, ObjectsAreNotCounted) {
    auto* factory = new ZOfficeAddinClassFactory;
    IUnknown* addin = nullptr;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&addin)), S_OK);
    factory->Release();
    EXPECT_EQ(moduleState.objectCount, 0);
    addin->Release();
}

TEST(ClassFactory, RefusesAggregation) {
    auto* factory = new ZOfficeAddinClassFactory;
    void* object = poison;
    EXPECT_EQ(factory->CreateInstance(factory, IID_IUnknown, &object), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(factory->CreateInstance(factory, IID_IUnknown, nullptr), CLASS_E_NOAGGREGATION);
    factory->Release();
}

TEST(ClassFactory, RefusesAnInterfaceThatTheObjectLacks) {
    auto* factory = new ZOfficeAddinClassFactory;
    void* object = poison;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IClassFactory, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    factory->Release();
}

TEST(ClassFactory, LocksAreCountedWithoutALowerBound) {
    auto* factory = new ZOfficeAddinClassFactory;
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(moduleState.lockCount, 1);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(moduleState.lockCount, -1);
    factory->Release();
}

TEST(ClassFactory, Slot5DeletesTheObject) {
    IClassFactory* factory = new ZOfficeAddinClassFactory;
    using Delete = void(STDMETHODCALLTYPE*)(void*);
    void** table = *reinterpret_cast<void***>(factory);
    reinterpret_cast<Delete>(table[5])(factory);
    EXPECT_EQ(moduleState.objectCount, 0);
}
