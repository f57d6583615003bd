// The PDF engine's interface: sixteen functions of ZavoKit.dll. This header and ZavoKit.def are their only
// declarations, for the engine and for its users. An engine of another make that exports the same names can take its
// place.
//
// Texts are zero-terminated: UTF-16 where the type is wchar_t, UTF-8 for the password. Paths may have any length. A
// text or a buffer belongs to the caller and is not needed after the call.
//
// Handles are opaque. A function that gives one gives null when it fails. Every function takes null, and handles of
// another kind, without effect, and answers false or null then. A handle is not to be used after the call that ends it.
// What these functions answer is all that they say: nothing is thrown, shown or printed.
//
// Threads: what belongs to one document or one merge job is called from one thread at a time; from which one does not
// matter, nor does what other threads do with other documents. A stack of 1 MB is enough.
#pragma once

#include <cstddef>
#include <cstdint>

struct PdfDocumentHandle;
struct PdfMergeHandle;
struct PdfAttachmentHandle;

using PdfDocument = PdfDocumentHandle*;      // an opened PDF; the caller ends it with PDF_CloseDocument
using PdfMerge = PdfMergeHandle*;            // a merge job; the caller ends it with PDFMerge_Close
using PdfAttachment = PdfAttachmentHandle*;  // an embedded-file entry; belongs to its document and ends with it

extern "C" {

// --- The library -----------------------------------------------------------------------------------------------------

// Once per process, before every other call. `reserved` is null; anything else is refused. This engine has nothing to
// set up, so it may be called from DllMain.
bool PDF_InitLibrary(void* reserved);

// Once per process, after every other call; what was opened has been closed by then.
bool PDF_DestroyLibrary();

// --- Documents -------------------------------------------------------------------------------------------------------

// Opens the PDF at `path` with its user or owner password; `password` is empty or null for none. The file stays open:
// others may read, rename and delete it, but not write to it, until the document is closed or saved over it.
// Null when there is no such file, when it is no PDF and cannot be repaired to be one, or when it needs another
// password.
PdfDocument PDF_LoadDocument(const wchar_t* path, const char* password);

// Ends the document and its attachment entries; what was not saved is lost. A merge job that it was added to is not
// affected. False for what is no document.
bool PDF_CloseDocument(PdfDocument document);

// Writes the document with all entries that have content to `path`. Over the file that it was loaded from, it is from
// then on the document as saved; saved elsewhere it stays as it was. Without new entries the file is copied as it is.
// The file takes its place at once when it is complete. False when it cannot be written (among other reasons because
// another program holds it, it is read-only, or a merge job still needs the document); whatever was at `path` is then
// as before, and the call may be repeated.
bool PDF_Save(PdfDocument document, const wchar_t* path);

// --- Attachments -----------------------------------------------------------------------------------------------------

// Adds an embedded-file entry. `fileName` is what readers show; separators and control characters, those of the
// direction of writing among them, become "_". A name that the document has already is taken. `description` may be
// empty or null. An entry without content is not saved. Null when `document` is none or `fileName` is empty.
PdfAttachment PDFDoc_NewAttachment(PdfDocument document, const wchar_t* fileName, const wchar_t* description);

// Sets the content of an entry of `document`, or sets it again; `bytes` may be null where `byteCount` is 0. Content
// that stays above 32 MiB when compressed is kept in a hidden file in the document's folder until the document is saved
// or closed. False when there is no room for it, when the entry is of another document or has been saved.
bool PDFAttachment_SetFile(PdfAttachment attachment, PdfDocument document, const void* bytes, size_t byteCount);

// When the file was made and changed: whole seconds since 1970-01-01 00:00 UTC, -1 for unknown. False when the entry
// has been saved.
bool PDFAttachment_SetCreatedTime(PdfAttachment attachment, int64_t seconds);
bool PDFAttachment_SetModifiedTime(PdfAttachment attachment, int64_t seconds);

// Files an entry of `document` in a folder of its collection: "/" is the root folder, "/Inbox/2024" a folder in one in
// it. False when there is no such folder; a document without folders has the root folder only, and nothing changes.
bool PDF_SetFileAttachmentFolderPath(PdfDocument document, PdfAttachment attachment, const wchar_t* folderPath);

// --- Merging ---------------------------------------------------------------------------------------------------------

// Starts a merge job. Null when there is no memory for it.
PdfMerge PDFMerge_Create();

// Whether the bookmarks and the form fields of all inputs are kept: not 0, as in a new job, or 0. What is set last
// before PDFMerge_Save counts.
bool PDFMerge_SetKeepBookmark(PdfMerge merge, int keep);
bool PDFMerge_SetKeepFormField(PdfMerge merge, int keep);

// Appends a document as it was loaded or last saved; it may be closed before PDFMerge_Save. `firstPage` and `lastPage`
// are 0xFFFFFFFF for all pages; this engine refuses anything else. `flag1` and `flag2`: whether this input's bookmarks
// and form fields are kept. `text` names the bookmark of an input that has none of its own; empty or null for the name
// of its file. False when `merge` or `document` is none.
bool PDFMerge_AddDocument(PdfMerge merge, PdfDocument document, uint32_t firstPage, uint32_t lastPage, int flag1,
                          int flag2, const wchar_t* text);

// Writes the merged PDF to `path`; an input that turns out to be damaged beyond repair is left out. `flags` is 0;
// anything else is refused. The file takes its place at once when it is complete. False when there is no input or the
// file cannot be written; whatever was at `path` is then as before.
bool PDFMerge_Save(PdfMerge merge, const wchar_t* path, int flags);

// Ends the job; documents that were added stay open. False for what is no merge job.
bool PDFMerge_Close(PdfMerge merge);

}  // extern "C"
