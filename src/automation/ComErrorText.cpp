// Error texts. No command shows them: a command's automation failures are silent.
#include "src/automation/ComErrorText.h"

#include <cstdio>
#include <cstring>

#include "src/automation/CodePage.h"
#include "src/base/Handles.h"

void CutLineEnd(char* text) {
    const size_t length = strlen(text);
    if (length < 2 || text[length - 1] != '\n') return;
    text[length - 1] = '\0';
    if (text[length - 2] == '\r') text[length - 2] = '\0';
}

std::string FallbackErrorText(HRESULT hr) {
    char text[32];
    const auto code = static_cast<ULONG>(hr);
    if (code > 0x80040200U && code <= 0x8004FFFFU) {
        snprintf(text, sizeof text, "IDispatch error #%d", static_cast<int>((code & 0xFFFFU) - 0x200U));
    } else {
        snprintf(text, sizeof text, "Unknown error 0x%0lX", code);
    }
    return text;
}

std::wstring ComErrorText(HRESULT hr) {
    LocalMemory<char> text;
    const DWORD length = FormatMessageA(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        static_cast<DWORD>(hr), LOCALE_USER_DEFAULT, reinterpret_cast<char*>(text.Receive()), 0, nullptr);
    if (length == 0 || !text.Get()) return AnsiToWide(FallbackErrorText(hr).c_str());
    CutLineEnd(text.Get());
    return AnsiToWide(text.Get());
}

void ShowComError(HRESULT hr, const wchar_t* title) {
    MessageBoxW(nullptr, ComErrorText(hr).c_str(), title, MB_ICONERROR);
}
