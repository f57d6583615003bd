// An engine that makes no PDFs: it answers as a working one would and writes every call to the file that the
// environment variable ZAVO_ENGINE_LOG names, one line a call.
#include <windows.h>
#include <combaseapi.h>

#include <string>

#include "engine/ZavoKit.h"

namespace {

void Record(const std::string& line) {
    wchar_t path[MAX_PATH];
    const DWORD length = GetEnvironmentVariableW(L"ZAVO_ENGINE_LOG", path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return;
    const HANDLE file = CreateFileW(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return;
    DWORD written = 0;
    WriteFile(file, (line + "\n").c_str(), static_cast<DWORD>(line.size() + 1), &written, nullptr);
    CloseHandle(file);
}

const char* ComState() {
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    return SUCCEEDED(CoGetApartmentType(&type, &qualifier)) ? "COM is up" : "COM is down";
}

// Handles that are not null and not valid.
template <typename Handle>
Handle AnyHandle() {
    static char place;
    return reinterpret_cast<Handle>(&place);
}

}  // namespace

bool PDF_InitLibrary(void* reserved) {
    Record(std::string("PDF_InitLibrary(") + (reserved ? "not null" : "null") + ") " + ComState());
    return true;
}

bool PDF_DestroyLibrary() {
    Record(std::string("PDF_DestroyLibrary() ") + ComState());
    return true;
}

PdfDocument PDF_LoadDocument(const wchar_t*, const char*) {
    Record("PDF_LoadDocument");
    return AnyHandle<PdfDocument>();
}

bool PDF_CloseDocument(PdfDocument) {
    Record("PDF_CloseDocument");
    return true;
}

bool PDF_Save(PdfDocument, const wchar_t*) {
    Record("PDF_Save");
    return true;
}

PdfAttachment PDFDoc_NewAttachment(PdfDocument, const wchar_t*, const wchar_t*) {
    Record("PDFDoc_NewAttachment");
    return AnyHandle<PdfAttachment>();
}

bool PDFAttachment_SetFile(PdfAttachment, PdfDocument, const void*, size_t) {
    Record("PDFAttachment_SetFile");
    return true;
}

bool PDFAttachment_SetCreatedTime(PdfAttachment, int64_t) {
    Record("PDFAttachment_SetCreatedTime");
    return true;
}

bool PDFAttachment_SetModifiedTime(PdfAttachment, int64_t) {
    Record("PDFAttachment_SetModifiedTime");
    return true;
}

bool PDF_SetFileAttachmentFolderPath(PdfDocument, PdfAttachment, const wchar_t*) {
    Record("PDF_SetFileAttachmentFolderPath");
    return true;
}

PdfMerge PDFMerge_Create() {
    Record("PDFMerge_Create");
    return AnyHandle<PdfMerge>();
}

bool PDFMerge_SetKeepBookmark(PdfMerge, int) {
    Record("PDFMerge_SetKeepBookmark");
    return true;
}

bool PDFMerge_SetKeepFormField(PdfMerge, int) {
    Record("PDFMerge_SetKeepFormField");
    return true;
}

bool PDFMerge_AddDocument(PdfMerge, PdfDocument, uint32_t, uint32_t, int, int, const wchar_t*) {
    Record("PDFMerge_AddDocument");
    return true;
}

bool PDFMerge_Save(PdfMerge, const wchar_t*, int) {
    Record("PDFMerge_Save");
    return true;
}

bool PDFMerge_Close(PdfMerge) {
    Record("PDFMerge_Close");
    return true;
}
