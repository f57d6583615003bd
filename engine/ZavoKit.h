// The PDF engine's interface: sixteen functions of ZavoKit.dll. This header and ZavoKit.def are their only
// declarations, for the engine and for its users. An engine of another make that exports the same names can take its
// place.
//
// All texts are zero-terminated: UTF-16 where the type is wchar_t, the engine's narrow encoding (UTF-8) for passwords.
// Handles are opaque; a null handle means failure and every function accepts it without effect. The engine is
// called from one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>

struct PdfDocumentHandle;
struct PdfMergeHandle;
struct PdfAttachmentHandle;

using PdfDocument = PdfDocumentHandle*;      // an opened PDF; ended by PDF_CloseDocument
using PdfMerge = PdfMergeHandle*;            // a merge job; ended by PDFMerge_Close
using PdfAttachment = PdfAttachmentHandle*;  // an embedded-file entry; belongs to its document

extern "C" {

// Once per process, before every other call. `reserved` is null.
bool PDF_InitLibrary(void* reserved);

// Once per process, after every other call.
bool PDF_DestroyLibrary();

// Opens the PDF at `path`; `password` is empty for none. Null when the file cannot be opened as a PDF.
PdfDocument PDF_LoadDocument(const wchar_t* path, const char* password);

// Ends the document and the attachment entries that belong to it.
bool PDF_CloseDocument(PdfDocument document);

// Writes the document to `path`, which may be the one that it was loaded from.
bool PDF_Save(PdfDocument document, const wchar_t* path);

// Adds an embedded-file entry named `fileName`. Null on failure. An entry that has got no content is not saved.
PdfAttachment PDFDoc_NewAttachment(PdfDocument document, const wchar_t* fileName, const wchar_t* description);

// Sets the entry's content; `bytes` belongs to the caller and is not needed after the call.
bool PDFAttachment_SetFile(PdfAttachment attachment, PdfDocument document, const void* bytes, size_t byteCount);

// Whole seconds since 1970-01-01 00:00 UTC; -1 for unknown.
bool PDFAttachment_SetCreatedTime(PdfAttachment attachment, int64_t seconds);
bool PDFAttachment_SetModifiedTime(PdfAttachment attachment, int64_t seconds);

// Files the entry in a folder of the document's attachment tree; "/" is the root folder.
bool PDF_SetFileAttachmentFolderPath(PdfDocument document, PdfAttachment attachment, const wchar_t* folderPath);

// Starts a merge job. Null on failure.
PdfMerge PDFMerge_Create();

// Whether the inputs' bookmarks and form fields are kept: 1 or 0.
bool PDFMerge_SetKeepBookmark(PdfMerge merge, int keep);
bool PDFMerge_SetKeepFormField(PdfMerge merge, int keep);

// Appends a document. `firstPage` and `lastPage` 0xFFFFFFFF: all pages. The two flags are 1, `text` is empty.
bool PDFMerge_AddDocument(PdfMerge merge, PdfDocument document, uint32_t firstPage, uint32_t lastPage, int flag1,
                          int flag2, const wchar_t* text);

// Writes the merged PDF to `path`. `flags` is 0.
bool PDFMerge_Save(PdfMerge merge, const wchar_t* path, int flags);

bool PDFMerge_Close(PdfMerge merge);

}  // extern "C"
