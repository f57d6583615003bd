// The allocations of COM's task allocator, counted.
#pragma once

#include <windows.h>
#include <gtest/gtest.h>
#include <objbase.h>

#include <atomic>

// Counts the allocations of COM's task allocator, BSTRs among them.
class ComAllocations final : public IMallocSpy {
public:
    ComAllocations() { EXPECT_EQ(CoRegisterMallocSpy(this), S_OK); }
    ComAllocations(const ComAllocations&) = delete;
    ComAllocations& operator=(const ComAllocations&) = delete;
    ~ComAllocations() { CoRevokeMallocSpy(); }

    long Live() const { return live_; }

    bool failing = false;  // whether every allocation fails, as a size of 0 makes it do

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
        *ppv = riid == IID_IUnknown || riid == IID_IMallocSpy ? this : nullptr;
        return *ppv ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    SIZE_T STDMETHODCALLTYPE PreAlloc(SIZE_T size) override { return failing ? 0 : size; }
    void* STDMETHODCALLTYPE PostAlloc(void* block) override {
        if (block) ++live_;
        return block;
    }
    void* STDMETHODCALLTYPE PreFree(void* block, BOOL spied) override {
        if (block && spied) --live_;
        return block;
    }
    void STDMETHODCALLTYPE PostFree(BOOL) override {}
    SIZE_T STDMETHODCALLTYPE PreRealloc(void* block, SIZE_T size, void** newBlock, BOOL) override {
        *newBlock = block;
        return size;
    }
    void* STDMETHODCALLTYPE PostRealloc(void* block, BOOL) override { return block; }
    void* STDMETHODCALLTYPE PreGetSize(void* block, BOOL) override { return block; }
    SIZE_T STDMETHODCALLTYPE PostGetSize(SIZE_T size, BOOL) override { return size; }
    void* STDMETHODCALLTYPE PreDidAlloc(void* block, BOOL) override { return block; }
    int STDMETHODCALLTYPE PostDidAlloc(void*, BOOL, int allocated) override { return allocated; }
    void STDMETHODCALLTYPE PreHeapMinimize() override {}
    void STDMETHODCALLTYPE PostHeapMinimize() override {}

private:
    std::atomic<long> live_ = 0;
};
