#include "src/export/PdfEngine.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

#include "engine/ZavoKit.h"
#include "src/base/Handles.h"
#include "src/base/Paths.h"

namespace {

struct DocumentCloser {
    void operator()(PdfDocument document) const { PDF_CloseDocument(document); }
};
using OwnedDocument = std::unique_ptr<PdfDocumentHandle, DocumentCloser>;

struct MergeCloser {
    void operator()(PdfMerge merge) const { PDFMerge_Close(merge); }
};
using OwnedMerge = std::unique_ptr<PdfMergeHandle, MergeCloser>;

constexpr uint64_t attachmentLimit = 0x80000000;  // 2 GiB; a file has to be smaller

OwnedDocument OpenDocument(const std::wstring& path) { return OwnedDocument(PDF_LoadDocument(path.c_str(), "")); }

bool ReadAttributes(const std::wstring& path, WIN32_FILE_ATTRIBUTE_DATA& attributes) {
    return GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &attributes) != FALSE;
}

struct FileContent {
    std::unique_ptr<std::byte[]> bytes;  // not null, also for an empty file
    size_t count;
};

// The first `size` bytes of the file, or all of a file that has become shorter. Nothing when it cannot be read.
std::optional<FileContent> ReadContent(const std::wstring& path, size_t size) {
    constexpr size_t bytesAtOnce = 16 << 20;
    constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE opened =
        CreateFileW(path.c_str(), GENERIC_READ, shareAll, nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (opened == INVALID_HANDLE_VALUE) return std::nullopt;
    const KernelHandle file(opened);

    FileContent content = {std::make_unique_for_overwrite<std::byte[]>(size), 0};
    while (content.count < size) {
        const auto wanted = static_cast<DWORD>(std::min(size - content.count, bytesAtOnce));
        DWORD count = 0;
        if (!ReadFile(file.Get(), content.bytes.get() + content.count, wanted, &count, nullptr)) return std::nullopt;
        if (count == 0) break;
        content.count += count;
    }
    return content;
}

void AttachFile(PdfDocument document, const std::wstring& path, bool intoRootFolder) {
    const auto size = static_cast<uint64_t>(GetFileSize64(path));  // -1 becomes the largest size
    if (size >= attachmentLimit) return;
    const std::wstring name = GetFileNameOfPath(path, true);
    const PdfAttachment attachment = PDFDoc_NewAttachment(document, name.c_str(), L"");
    if (!attachment) return;
    const std::optional<FileContent> content = ReadContent(path, static_cast<size_t>(size));
    if (!content) return;
    if (!PDFAttachment_SetFile(attachment, document, content->bytes.get(), content->count)) return;
    PDFAttachment_SetCreatedTime(attachment, GetFileTimeSeconds(path, timeOfCreation));
    PDFAttachment_SetModifiedTime(attachment, GetFileTimeSeconds(path, timeOfLastWrite));
    if (intoRootFolder) PDF_SetFileAttachmentFolderPath(document, attachment, L"/");
}

}  // namespace

bool MergePdfFiles(const std::wstring& outputPath, const std::vector<std::wstring>& inputPaths) {
    const OwnedMerge merge(PDFMerge_Create());
    if (!merge) return false;
    PDFMerge_SetKeepBookmark(merge.get(), 1);
    PDFMerge_SetKeepFormField(merge.get(), 1);

    std::vector<OwnedDocument> documents;  // after the merge: the inputs are closed before it
    for (const std::wstring& path : inputPaths) {
        OwnedDocument document = OpenDocument(path);
        if (!document) continue;
        documents.push_back(std::move(document));
        constexpr uint32_t allPages = 0xFFFFFFFF;
        PDFMerge_AddDocument(merge.get(), documents.back().get(), allPages, allPages, 1, 1, L"");
    }
    return PDFMerge_Save(merge.get(), outputPath.c_str(), 0);
}

bool AttachFilesToPdf(const std::wstring& pdfPath, const std::vector<std::wstring>& files, bool intoRootFolder) {
    const OwnedDocument document = OpenDocument(pdfPath);
    if (!document) return false;
    for (const std::wstring& path : files) AttachFile(document.get(), path, intoRootFolder);
    return PDF_Save(document.get(), pdfPath.c_str());
}

int64_t GetFileTimeSeconds(const std::wstring& path, int kind) {
    // In the order of the kinds.
    constexpr FILETIME WIN32_FILE_ATTRIBUTE_DATA::*times[] = {&WIN32_FILE_ATTRIBUTE_DATA::ftLastAccessTime,
                                                              &WIN32_FILE_ATTRIBUTE_DATA::ftCreationTime,
                                                              &WIN32_FILE_ATTRIBUTE_DATA::ftLastWriteTime};
    constexpr uint64_t unixEpoch = 116444736000000000;  // 1970-01-01 in steps of 100 ns since 1601-01-01
    constexpr uint64_t stepsASecond = 10000000;

    if (kind < 0 || kind >= static_cast<int>(std::size(times))) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return -1;
    }
    WIN32_FILE_ATTRIBUTE_DATA attributes = {};
    if (path.empty() || !ReadAttributes(path, attributes)) return -1;
    const FILETIME& time = attributes.*times[kind];
    const uint64_t steps = uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    if (steps == 0) {
        SetLastError(ERROR_INVALID_DATA);
        return -1;
    }
    if (steps < unixEpoch) return -1;
    return static_cast<int64_t>((steps - unixEpoch) / stepsASecond);
}

int64_t GetFileSize64(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA attributes = {};
    if (!ReadAttributes(path, attributes)) return -1;
    return static_cast<int64_t>(uint64_t{attributes.nFileSizeHigh} << 32 | attributes.nFileSizeLow);
}
