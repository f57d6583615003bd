// The user's mail program: a mapi32.dll that shows no window and writes every message it gets, field by field, to the
// end of the file that the environment variable ZAVO_MAIL_LOG names. ZAVO_MAIL_DELAY keeps its window "open" for so
// many milliseconds; ZAVO_MAIL_RESULT is what it answers.
#include <windows.h>

#include <string>

#include "src/base/Handles.h"
#include "src/export/MapiRecords.h"
#include "standins/common/Text.h"

namespace {

std::wstring Text(PCWSTR text) { return text ? L"[" + std::wstring(text) + L"]" : L"null"; }

std::wstring Pointer(const void* pointer) { return pointer ? L"set" : L"null"; }

std::wstring Describe(const MapiMessageW& message) {
    std::wstring line = L" reserved=" + std::to_wstring(message.ulReserved) + L" subject=" + Text(message.lpszSubject) +
                        L" note=" + Text(message.lpszNoteText) + L" type=" + Text(message.lpszMessageType) + L" date=" +
                        Text(message.lpszDateReceived) + L" conversation=" + Text(message.lpszConversationID) +
                        L" flags=" + std::to_wstring(message.flFlags) + L" originator=" +
                        Pointer(message.lpOriginator) + L" recipients=" + std::to_wstring(message.nRecipCount) + L"," +
                        Pointer(message.lpRecips) + L" files=" + std::to_wstring(message.nFileCount);
    for (ULONG i = 0; i < message.nFileCount; ++i) {
        const MapiFileDescW& file = message.lpFiles[i];
        line += L" file{reserved=" + std::to_wstring(file.ulReserved) + L" flags=" + std::to_wstring(file.flFlags) +
                L" position=" + HexText(static_cast<long>(file.nPosition)) + L" path=" + Text(file.lpszPathName) +
                L" name=" + Text(file.lpszFileName) + L" type=" + Pointer(file.lpFileType) + L"}";
    }
    return line;
}

DWORD NumberOf(const wchar_t* variable) { return wcstoul(Environment(variable).c_str(), nullptr, 10); }

}  // namespace

extern "C" ULONG WINAPI MAPISendMailW(ULONG_PTR session, ULONG_PTR uiParam, MapiMessageW* message, ULONG flags,
                                      ULONG reserved) {
    const std::wstring line = L"mail: session=" + std::to_wstring(session) + L" owner=" + std::to_wstring(uiParam) +
                              L" callflags=" + std::to_wstring(flags) + L" callreserved=" + std::to_wstring(reserved) +
                              L" thread=" + std::to_wstring(GetCurrentThreadId()) + Describe(*message);
    const HANDLE file = CreateFileW(Environment(L"ZAVO_MAIL_LOG").c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr,
                                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        const KernelHandle owner(file);
        const std::string utf8 = Utf8(line) + "\n";
        DWORD written = 0;
        WriteFile(file, utf8.data(), static_cast<DWORD>(utf8.size()), &written, nullptr);
    }
    Sleep(NumberOf(L"ZAVO_MAIL_DELAY"));
    return NumberOf(L"ZAVO_MAIL_RESULT");
}
