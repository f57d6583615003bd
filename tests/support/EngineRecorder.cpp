// The sixteen functions of the recording engine.
#include "tests/support/EngineRecorder.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "engine/ZavoKit.h"

// No handle is handed out twice until a restart, so that a closed one is known.
struct PdfDocumentHandle {
    bool open;
};
struct PdfMergeHandle {
    bool open;
};
struct PdfAttachmentHandle {
    PdfDocument document;
};

namespace {

template <typename Handle>
struct Handles {
    std::array<Handle, 1024> all;
    size_t used;

    Handle* Next(const Handle& value) {
        if (used == all.size()) return nullptr;
        all[used] = value;
        return &all[used++];
    }
    // The handle's number from 1 on; 0 for none of ours.
    size_t NumberOf(const Handle* handle) const {
        for (size_t i = 0; i < used; ++i) {
            if (handle == &all[i]) return i + 1;
        }
        return 0;
    }
    long Open() const {
        return static_cast<long>(std::count_if(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(used),
                                               [](const Handle& handle) { return handle.open; }));
    }
};

EngineRecorder* recorder = nullptr;
Handles<PdfDocumentHandle> documents;
Handles<PdfMergeHandle> merges;
Handles<PdfAttachmentHandle> attachments;

std::wstring Named(const wchar_t* kind, size_t number) {
    return number == 0 ? std::wstring(L"wrong handle") : kind + std::to_wstring(number);
}

// One call of one function: every argument is shown in its order, handles are checked.
class Call {
public:
    explicit Call(const char* function) : succeeds_(recorder && recorder->Begin(function)) {}

    Call& With(PdfDocument document) {
        return WithHandle(L"document", documents.NumberOf(document), document && document->open);
    }
    Call& With(PdfMerge merge) { return WithHandle(L"merge", merges.NumberOf(merge), merge && merge->open); }
    Call& With(PdfAttachment attachment) {
        return WithHandle(L"attachment", attachments.NumberOf(attachment), attachment && attachment->document->open);
    }
    Call& With(const wchar_t* text) {
        if (Recording()) recorder->Show(text ? L"[" + std::wstring(text) + L"]" : L"null");
        return *this;
    }
    Call& With(const char* text) {
        if (Recording()) recorder->Show(text ? L"[" + std::wstring(text, text + strlen(text)) + L"]" : L"null");
        return *this;
    }
    template <typename Number>
    Call& WithNumber(Number number) {
        if (Recording()) recorder->Show(std::to_wstring(number));
        return *this;
    }
    Call& Check(bool right) {
        if (recorder && !right) recorder->CountWrongHandle();
        return *this;
    }

    bool Succeeds() const { return succeeds_; }

private:
    static bool Recording() { return recorder && recorder->recording; }
    Call& WithHandle(const wchar_t* kind, size_t number, bool open) {
        if (Recording()) recorder->Show(Named(kind, number));
        return Check(number != 0 && open);
    }

    bool succeeds_;
};

}  // namespace

EngineRecorder::EngineRecorder() {
    recorder = this;
    Restart();
}

EngineRecorder::~EngineRecorder() { recorder = nullptr; }

void EngineRecorder::Restart() {
    calls.clear();
    callCount_ = 0;
    wrongHandles_ = 0;
    documents.used = 0;
    merges.used = 0;
    attachments.used = 0;
}

long EngineRecorder::OpenDocuments() const { return documents.Open(); }

long EngineRecorder::OpenMerges() const { return merges.Open(); }

bool EngineRecorder::Begin(const char* function) {
    if (onCall) onCall(function);
    if (recording) calls.emplace_back(function, function + strlen(function));
    return callCount_++ != failingCall;
}

void EngineRecorder::Show(const std::wstring& argument) { calls.back() += L" " + argument; }

bool PDF_InitLibrary(void*) { return Call("PDF_InitLibrary").Succeeds(); }

bool PDF_DestroyLibrary() { return Call("PDF_DestroyLibrary").Succeeds(); }

PdfDocument PDF_LoadDocument(const wchar_t* path, const char* password) {
    const bool succeeds = Call("PDF_LoadDocument").With(path).With(password).Succeeds();
    if (!succeeds) return nullptr;
    for (const std::wstring& notPdf : recorder->notPdfs) {
        if (notPdf == path) return nullptr;
    }
    return documents.Next({true});
}

bool PDF_CloseDocument(PdfDocument document) {
    const bool succeeds = Call("PDF_CloseDocument").With(document).Succeeds();
    if (document) document->open = false;
    return succeeds;
}

bool PDF_Save(PdfDocument document, const wchar_t* path) {
    return Call("PDF_Save").With(document).With(path).Succeeds();
}

PdfAttachment PDFDoc_NewAttachment(PdfDocument document, const wchar_t* fileName, const wchar_t* description) {
    const bool succeeds = Call("PDFDoc_NewAttachment").With(document).With(fileName).With(description).Succeeds();
    return succeeds ? attachments.Next({document}) : nullptr;
}

bool PDFAttachment_SetFile(PdfAttachment attachment, PdfDocument document, const void* bytes, size_t byteCount) {
    Call call("PDFAttachment_SetFile");
    call.With(attachment).With(document).Check(attachment && attachment->document == document);
    const auto* content = static_cast<const unsigned char*>(bytes);
    if (!content) {
        call.With(L"no content");
    } else if (recorder && recorder->recording && byteCount <= 100) {
        call.With(std::wstring(content, content + byteCount).c_str());
    }
    call.WithNumber(byteCount);
    if (recorder && recorder->onContent) recorder->onContent(content, byteCount);
    return call.Succeeds();
}

bool PDFAttachment_SetCreatedTime(PdfAttachment attachment, int64_t seconds) {
    return Call("PDFAttachment_SetCreatedTime").With(attachment).WithNumber(seconds).Succeeds();
}

bool PDFAttachment_SetModifiedTime(PdfAttachment attachment, int64_t seconds) {
    return Call("PDFAttachment_SetModifiedTime").With(attachment).WithNumber(seconds).Succeeds();
}

bool PDF_SetFileAttachmentFolderPath(PdfDocument document, PdfAttachment attachment, const wchar_t* folderPath) {
    return Call("PDF_SetFileAttachmentFolderPath")
        .With(document)
        .With(attachment)
        .Check(attachment && attachment->document == document)
        .With(folderPath)
        .Succeeds();
}

PdfMerge PDFMerge_Create() { return Call("PDFMerge_Create").Succeeds() ? merges.Next({true}) : nullptr; }

bool PDFMerge_SetKeepBookmark(PdfMerge merge, int keep) {
    return Call("PDFMerge_SetKeepBookmark").With(merge).WithNumber(keep).Succeeds();
}

bool PDFMerge_SetKeepFormField(PdfMerge merge, int keep) {
    return Call("PDFMerge_SetKeepFormField").With(merge).WithNumber(keep).Succeeds();
}

bool PDFMerge_AddDocument(PdfMerge merge, PdfDocument document, uint32_t firstPage, uint32_t lastPage, int flag1,
                          int flag2, const wchar_t* text) {
    return Call("PDFMerge_AddDocument")
        .With(merge)
        .With(document)
        .WithNumber(firstPage)
        .WithNumber(lastPage)
        .WithNumber(flag1)
        .WithNumber(flag2)
        .With(text)
        .Succeeds();
}

bool PDFMerge_Save(PdfMerge merge, const wchar_t* path, int flags) {
    return Call("PDFMerge_Save").With(merge).With(path).WithNumber(flags).Succeeds();
}

bool PDFMerge_Close(PdfMerge merge) {
    const bool succeeds = Call("PDFMerge_Close").With(merge).Succeeds();
    if (merge) merge->open = false;
    return succeeds;
}
