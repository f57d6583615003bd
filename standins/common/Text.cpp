// UTF-8, console output and logs.
#include "standins/common/Text.h"

#include <windows.h>

#include <cwchar>

#include "src/base/Handles.h"

std::string Utf8(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, utf8.data(), size, nullptr, nullptr);
    return utf8;
}

std::wstring Wide(const std::string& utf8) {
    const int length = static_cast<int>(utf8.size());
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
    std::wstring text(static_cast<size_t>(size), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, text.data(), size);
    return text;
}

std::wstring HexText(long code) {
    wchar_t text[16];
    swprintf(text, ARRAYSIZE(text), L"0x%08lX", static_cast<unsigned long>(code));
    return text;
}

namespace {

void Write(DWORD stream, const std::string& text) {
    DWORD written = 0;
    WriteFile(GetStdHandle(stream), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

}  // namespace

void PrintLine(const std::wstring& line) { Write(STD_OUTPUT_HANDLE, Utf8(line) + "\n"); }

void PrintError(const std::wstring& line) {
    wchar_t program[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, program, MAX_PATH - 1);
    const wchar_t* name = wcsrchr(program, L'\\');
    Write(STD_ERROR_HANDLE, Utf8((name ? name + 1 : program) + (L": " + line)) + "\n");
}

std::wstring Environment(const wchar_t* name) {
    const DWORD size = GetEnvironmentVariableW(name, nullptr, 0);
    if (size == 0) return {};
    std::wstring value(size, L'\0');
    value.resize(GetEnvironmentVariableW(name, value.data(), size));
    return value;
}

void AppendToFile(const std::wstring& path, const std::string& text) {
    const HANDLE file = CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    const KernelHandle owner(file);
    DWORD written = 0;
    WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}
