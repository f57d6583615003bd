// Owner types: one per kind of resource, each released by its destructor and never copied.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <wrl/client.h>

#include <string>
#include <utility>

// An owned BSTR. Null when it was made from null or when the allocation failed.
class Bstr {
public:
    Bstr() = default;
    explicit Bstr(const wchar_t* text) : text_(SysAllocString(text)) {}
    explicit Bstr(const std::wstring& text) : text_(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {}
    Bstr(const Bstr&) = delete;
    Bstr& operator=(const Bstr&) = delete;
    ~Bstr() { SysFreeString(text_); }

    BSTR Get() const { return text_; }
    BSTR* Receive() {
        SysFreeString(text_);
        text_ = nullptr;
        return &text_;
    }

private:
    BSTR text_ = nullptr;
};

// An owned VARIANT: empty at first, cleared at the end.
struct OwnedVariant : VARIANT {
    OwnedVariant() { VariantInit(this); }
    OwnedVariant(const OwnedVariant&) = delete;
    OwnedVariant& operator=(const OwnedVariant&) = delete;
    ~OwnedVariant() { VariantClear(this); }
};

// An owned, opened registry key.
class RegistryKey {
public:
    RegistryKey() = default;
    RegistryKey(const RegistryKey&) = delete;
    RegistryKey& operator=(const RegistryKey&) = delete;
    RegistryKey& operator=(RegistryKey&& other) noexcept {
        std::swap(key_, other.key_);
        return *this;
    }
    ~RegistryKey() { Close(); }

    HKEY Get() const { return key_; }
    void Close() {
        if (key_) RegCloseKey(key_);
        key_ = nullptr;
    }
    HKEY* Receive() {
        Close();
        return &key_;
    }

private:
    HKEY key_ = nullptr;
};

// An owned kernel handle (process, thread, event).
class KernelHandle {
public:
    KernelHandle() = default;
    explicit KernelHandle(HANDLE handle) : handle_(handle) {}
    KernelHandle(const KernelHandle&) = delete;
    KernelHandle& operator=(const KernelHandle&) = delete;
    KernelHandle& operator=(KernelHandle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~KernelHandle() {
        if (handle_) CloseHandle(handle_);
    }

    HANDLE Get() const { return handle_; }

private:
    HANDLE handle_ = nullptr;
};

// Memory from LocalAlloc, such as a message text that the system allocated.
template <typename T>
class LocalMemory {
public:
    LocalMemory() = default;
    LocalMemory(const LocalMemory&) = delete;
    LocalMemory& operator=(const LocalMemory&) = delete;
    ~LocalMemory() { LocalFree(memory_); }

    T* Get() const { return memory_; }
    T** Receive() {
        LocalFree(memory_);
        memory_ = nullptr;
        return &memory_;
    }

private:
    T* memory_ = nullptr;
};

// Holds a slim lock exclusively for the length of a scope.
class ExclusiveLock {
public:
    explicit ExclusiveLock(SRWLOCK& lock) : lock_(lock) { AcquireSRWLockExclusive(&lock_); }
    ExclusiveLock(const ExclusiveLock&) = delete;
    ExclusiveLock& operator=(const ExclusiveLock&) = delete;
    ~ExclusiveLock() { ReleaseSRWLockExclusive(&lock_); }

private:
    SRWLOCK& lock_;
};

// Takes over the caller's reference. ComPtr::Attach is not used: in mingw-w64's header it adds a reference.
template <typename T>
Microsoft::WRL::ComPtr<T> Adopt(T* object) {
    Microsoft::WRL::ComPtr<T> owner;
    *owner.GetAddressOf() = object;
    return owner;
}
