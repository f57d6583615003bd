#include "src/automation/CodePage.h"

#include <windows.h>
#include <fibersapi.h>

#include <memory>
#include <vector>

namespace {

using Buffer = std::vector<char>;

void NTAPI FreeBuffer(void* buffer) { delete static_cast<Buffer*>(buffer); }

// The calling thread's buffer, or null when there is none to be had. A fiber-local slot rather than a thread_local
// object: its callback runs at thread end although this library takes no thread notifications. Commands are the only
// callers and run only once the library is pinned, so the callback's code is there as long as any thread is.
Buffer* ThreadBuffer() {
    static INIT_ONCE once = INIT_ONCE_STATIC_INIT;
    static DWORD slot = FLS_OUT_OF_INDEXES;
    const auto allocate = [](PINIT_ONCE, void*, void**) -> BOOL {
        slot = FlsAlloc(&FreeBuffer);
        return slot != FLS_OUT_OF_INDEXES;
    };
    if (!InitOnceExecuteOnce(&once, allocate, nullptr, nullptr)) return nullptr;
    auto* buffer = static_cast<Buffer*>(FlsGetValue(slot));
    if (!buffer) {
        auto fresh = std::make_unique<Buffer>();
        if (FlsSetValue(slot, fresh.get())) buffer = fresh.release();
    }
    return buffer;
}

constexpr size_t terminatorBytes = 4;
constexpr char emptyText[terminatorBytes] = {};

}  // namespace

std::wstring AnsiToWide(const char* text) {
    const int size = MultiByteToWideChar(CP_ACP, 0, text, -1, nullptr, 0);
    if (size <= 1) return {};
    std::wstring wide(static_cast<size_t>(size), L'\0');
    const int written = MultiByteToWideChar(CP_ACP, 0, text, -1, wide.data(), size);
    wide.resize(written > 0 ? static_cast<size_t>(written) - 1 : 0);
    return wide;
}

const char* WideToAnsi(const std::wstring& text) {
    Buffer* buffer = ThreadBuffer();
    if (!buffer) return emptyText;
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_ACP, 0, text.c_str(), length, nullptr, 0, nullptr, nullptr);
    buffer->assign(static_cast<size_t>(size) + terminatorBytes, '\0');
    WideCharToMultiByte(CP_ACP, 0, text.c_str(), length, buffer->data(), size, nullptr, nullptr);
    return buffer->data();
}
