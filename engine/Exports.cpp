// The sixteen functions of ZavoKit.dll over the engine's classes. Each checks its handles and runs behind the barrier;
// there is no state but what the handles hold.
#include <windows.h>

#include <atomic>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "engine/Attach.h"
#include "engine/Barrier.h"
#include "engine/Merge.h"
#include "engine/ZavoKit.h"

using namespace zavo::pdf;

namespace {

constexpr std::uint32_t allPages = 0xFFFFFFFF;

// What every object behind a handle begins with. The mark goes with the object, so that a handle of another kind, and
// mostly one that has been ended, is recognised.
template <std::uint32_t value>
class Mark {
public:
    Mark() = default;
    Mark(const Mark&) = delete;
    Mark& operator=(const Mark&) = delete;
    ~Mark() { mark_.store(0); }  // atomic, because a plain write to what is about to go may be left out

    bool IsThere() const { return mark_.load() == value; }

private:
    std::atomic<std::uint32_t> mark_ = value;
};

}  // namespace

struct PdfAttachmentHandle {
    PdfAttachmentHandle(PdfDocumentHandle* theOwner, Attachment& theEntry) : owner(theOwner), entry(theEntry) {}

    Mark<0x5A415454> mark;
    PdfDocumentHandle* const owner;
    Attachment& entry;
};

struct PdfDocumentHandle {
    PdfDocumentHandle(const std::filesystem::path& path, std::string_view password) : document(path, password) {}

    Mark<0x5A444F43> mark;
    EditableDocument document;
    std::vector<std::unique_ptr<PdfAttachmentHandle>> attachments;
};

struct PdfMergeHandle {
    struct Input {
        std::shared_ptr<Document> document;  // stays readable when the caller's handle has ended
        MergeOptions options;
    };

    Mark<0x5A4D5247> mark;
    bool keepBookmarks = true;
    bool keepFormFields = true;
    std::vector<Input> inputs;
};

namespace {

template <typename Handle>
bool IsValid(const Handle* handle) {
    return handle && reinterpret_cast<std::uintptr_t>(handle) % alignof(Handle) == 0 && handle->mark.IsThere();
}

// Runs `body` with the object behind `handle`; false where there is none.
template <typename Handle, typename Body>
bool With(Handle* handle, Body&& body) noexcept {
    return EngineBarrier(false, [&] { return IsValid(handle) && body(*handle); });
}

// Half a surrogate pair becomes U+FFFD.
std::string Utf8(const wchar_t* text) {
    const std::wstring_view wide = text ? text : L"";
    if (wide.empty()) return {};
    const int size = static_cast<int>(wide.size());
    const int count = WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(count), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, utf8.data(), count, nullptr, nullptr);
    return utf8;
}

// Runs `body` with an entry that is not in its file yet.
template <typename Body>
bool WithPending(PdfAttachment attachment, Body&& body) noexcept {
    return With(attachment, [&](PdfAttachmentHandle& handle) { return !handle.entry.IsSaved() && body(handle); });
}

}  // namespace

bool PDF_InitLibrary(void* reserved) { return reserved == nullptr; }

bool PDF_DestroyLibrary() { return true; }

PdfDocument PDF_LoadDocument(const wchar_t* path, const char* password) {
    return EngineBarrier<PdfDocument>(nullptr, [&]() -> PdfDocument {
        if (!path) return nullptr;
        return std::make_unique<PdfDocumentHandle>(path, password ? password : "").release();
    });
}

bool PDF_CloseDocument(PdfDocument document) {
    return With(document, [](PdfDocumentHandle& handle) {
        const std::unique_ptr<PdfDocumentHandle> owner(&handle);
        return true;
    });
}

bool PDF_Save(PdfDocument document, const wchar_t* path) {
    return With(document, [&](PdfDocumentHandle& handle) {
        if (!path) return false;
        handle.document.Save(path);
        return true;
    });
}

PdfAttachment PDFDoc_NewAttachment(PdfDocument document, const wchar_t* fileName, const wchar_t* description) {
    return EngineBarrier<PdfAttachment>(nullptr, [&]() -> PdfAttachment {
        if (!IsValid(document) || !fileName || !*fileName) return nullptr;
        auto& attachments = document->attachments;
        Attachment& entry = document->document.Add(Utf8(fileName), Utf8(description));
        attachments.push_back(std::make_unique<PdfAttachmentHandle>(document, entry));
        return attachments.back().get();
    });
}

bool PDFAttachment_SetFile(PdfAttachment attachment, PdfDocument document, const void* bytes, size_t byteCount) {
    return WithPending(attachment, [&](PdfAttachmentHandle& handle) {
        if (handle.owner != document || (!bytes && byteCount > 0)) return false;
        handle.entry.SetContent(std::string_view(static_cast<const char*>(bytes), byteCount));
        return true;
    });
}

bool PDFAttachment_SetCreatedTime(PdfAttachment attachment, int64_t seconds) {
    return WithPending(attachment, [&](PdfAttachmentHandle& handle) {
        handle.entry.SetCreated(seconds);
        return true;
    });
}

bool PDFAttachment_SetModifiedTime(PdfAttachment attachment, int64_t seconds) {
    return WithPending(attachment, [&](PdfAttachmentHandle& handle) {
        handle.entry.SetModified(seconds);
        return true;
    });
}

bool PDF_SetFileAttachmentFolderPath(PdfDocument document, PdfAttachment attachment, const wchar_t* folderPath) {
    return WithPending(attachment, [&](PdfAttachmentHandle& handle) {
        return folderPath && handle.owner == document &&
               handle.owner->document.FileInFolder(handle.entry, Utf8(folderPath));
    });
}

PdfMerge PDFMerge_Create() {
    return EngineBarrier<PdfMerge>(nullptr, [] { return std::make_unique<PdfMergeHandle>().release(); });
}

bool PDFMerge_SetKeepBookmark(PdfMerge merge, int keep) {
    return With(merge, [&](PdfMergeHandle& handle) {
        handle.keepBookmarks = keep != 0;
        return true;
    });
}

bool PDFMerge_SetKeepFormField(PdfMerge merge, int keep) {
    return With(merge, [&](PdfMergeHandle& handle) {
        handle.keepFormFields = keep != 0;
        return true;
    });
}

bool PDFMerge_AddDocument(PdfMerge merge, PdfDocument document, uint32_t firstPage, uint32_t lastPage, int flag1,
                          int flag2, const wchar_t* text) {
    return With(merge, [&](PdfMergeHandle& handle) {
        if (!IsValid(document) || firstPage != allPages || lastPage != allPages) return false;
        const std::shared_ptr<Document>& current = document->document.Current();
        current->ReleaseBytes();  // of many inputs only the one that is being copied is in memory
        handle.inputs.push_back({current, {flag1 != 0, flag2 != 0, Utf8(text)}});
        return true;
    });
}

bool PDFMerge_Save(PdfMerge merge, const wchar_t* path, int flags) {
    return With(merge, [&](PdfMergeHandle& handle) {
        if (!path || flags != 0) return false;
        Merger merger;
        for (const PdfMergeHandle::Input& input : handle.inputs) {
            MergeOptions options = input.options;
            options.keepBookmarks = options.keepBookmarks && handle.keepBookmarks;
            options.keepFormFields = options.keepFormFields && handle.keepFormFields;
            merger.Add(input.document, options);
        }
        merger.Save(path);
        return true;
    });
}

bool PDFMerge_Close(PdfMerge merge) {
    return With(merge, [](PdfMergeHandle& handle) {
        const std::unique_ptr<PdfMergeHandle> owner(&handle);
        return true;
    });
}
