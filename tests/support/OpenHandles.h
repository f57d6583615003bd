// The kernel handles of this process, counted one by one: Wine's own counters answer 0.
#pragma once

#include <windows.h>

#include <vector>

// The kernel handles that this process has open.
inline size_t OpenHandles() {
    struct Entry {
        void* object;
        ULONG_PTR process;
        ULONG_PTR handle;
        ULONG access;
        USHORT creatorIndex;
        USHORT typeIndex;
        ULONG attributes;
        ULONG reserved;
    };
    struct Table {
        ULONG_PTR count;
        ULONG_PTR reserved;
        Entry entries[1];
    };
    using Query = LONG(NTAPI*)(ULONG, void*, ULONG, ULONG*);
    constexpr ULONG extendedHandleInformation = 64;
    constexpr auto lengthMismatch = static_cast<LONG>(0xC0000004);
    const auto query = reinterpret_cast<Query>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<BYTE> buffer(1 << 20);
    ULONG size = 0;
    while (query(extendedHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size()), &size) ==
           lengthMismatch) {
        buffer.resize(buffer.size() * 2);
    }
    const auto* table = reinterpret_cast<const Table*>(buffer.data());
    size_t own = 0;
    for (ULONG_PTR i = 0; i < table->count; ++i) own += table->entries[i].process == GetCurrentProcessId() ? 1 : 0;
    return own;
}
