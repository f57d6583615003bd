// Simple MAPI, loaded only when it is needed.
#include "src/export/MailHandOff.h"

#include "src/automation/CodePage.h"
#include "src/base/Handles.h"
#include "src/base/Paths.h"
#include "src/export/MapiRecords.h"

namespace {

using SendMail = ULONG(WINAPI*)(ULONG_PTR session, ULONG_PTR uiParam, MapiMessageW* message, ULONG flags,
                                ULONG reserved);

constexpr ULONG MAPI_LOGON_UI = 0x1;
constexpr ULONG MAPI_DIALOG = 0x8;
constexpr ULONG SUCCESS_SUCCESS = 0;
constexpr ULONG positionLeftToTheMailProgram = 0xFFFFFFFF;

SendMail SendMailOf(HMODULE library) {
    return reinterpret_cast<SendMail>(reinterpret_cast<void*>(GetProcAddress(library, "MAPISendMailW")));
}

ULONG Send(SendMail sendMail, HWND owner, PWSTR subject, PWSTR note, PWSTR filePath, PWSTR fileName) {
    MapiFileDescW file = {};
    file.nPosition = positionLeftToTheMailProgram;
    file.lpszPathName = filePath;
    file.lpszFileName = fileName;
    MapiMessageW message = {};
    message.lpszSubject = subject;
    message.lpszNoteText = note;
    message.nFileCount = filePath ? 1 : 0;
    message.lpFiles = filePath ? &file : nullptr;
    return sendMail(0, reinterpret_cast<ULONG_PTR>(owner), &message, MAPI_LOGON_UI | MAPI_DIALOG, 0);
}

struct SecondHandOff {
    HWND owner;
    const char* subject;
    const char* attachment;
    const char* note;
    BOOL sent;
};

// Plain code, with nothing on its stack that would have to be released: the thread may be terminated. The mail program
// gets narrow texts where it expects wide ones, and the bare name where it expects a path; both are part of this
// hand-off.
DWORD WINAPI RunSecondHandOff(void* parameter) {
    auto* block = static_cast<SecondHandOff*>(parameter);
    const HMODULE library = LoadLibraryW(L"MAPI32.DLL");
    if (!library) return 0;
    const SendMail sendMail = SendMailOf(library);
    if (sendMail) {
        const auto wide = [](const char* text) { return reinterpret_cast<PWSTR>(const_cast<char*>(text)); };
        const bool attached = block->attachment && *block->attachment;
        block->sent = Send(sendMail, block->owner, wide(block->subject), wide(block->note),
                           attached ? wide(block->attachment) : nullptr, wide(block->subject)) == SUCCESS_SUCCESS;
    }
    FreeLibrary(library);
    return 0;
}

// Waits for the thread. What the user types or clicks meanwhile is taken from the queue and dropped.
void WaitAndDropInput(HANDLE thread) {
    constexpr DWORD queueEvents = 0x1CBF;  // QS_ALLEVENTS, by its number: headers differ on it
    constexpr int messagesAtOnce = 8;
    constexpr DWORD terminated = 0xDEADBEEF;
    for (;;) {
        const DWORD signalled = MsgWaitForMultipleObjectsEx(1, &thread, INFINITE, queueEvents, 0);
        if (signalled == WAIT_OBJECT_0) return;
        if (signalled != WAIT_OBJECT_0 + 1) {
            TerminateThread(thread, terminated);
            return;
        }
        MSG msg;
        for (int i = 0; i < messagesAtOnce && PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE); ++i) {
        }
    }
}

}  // namespace

void SendFileByMail(HWND owner, const std::wstring& path) {
    const HMODULE library = LoadLibraryW(L"mapi32.dll");  // stays loaded: a mail program may work on in it
    if (!library) return;
    const SendMail sendMail = SendMailOf(library);
    if (!sendMail) return;

    std::wstring file = path;
    std::wstring name = GetFileNameOfPath(path, false);
    Send(sendMail, owner, name.data(), nullptr, file.data(), name.data());

    const char* ansiName = WideToAnsi(name);
    SecondHandOff block = {owner, ansiName, ansiName, nullptr, FALSE};
    const KernelHandle thread(CreateThread(nullptr, 0, &RunSecondHandOff, &block, 0, nullptr));
    if (thread.Get()) WaitAndDropInput(thread.Get());
}
