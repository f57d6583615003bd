// ZavoKit.dll as its users call it: handles, files that are in the way, paths, and what a document is after each call.
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/Attach.h"
#include "engine/Document.h"
#include "engine/ZavoKit.h"
#include "src/base/Handles.h"
#include "tests/pdf/PdfMaker.h"
#include "tests/support/Files.h"

using zavo::pdf::Dict;
using zavo::pdf::Document;
using zavo::pdf::ListAttachments;
using zavo::pdf::ListedAttachment;

namespace {

constexpr std::uint32_t allPages = 0xFFFFFFFF;

// Of one page, which is `width` wide.
std::string MakePdf(int width) {
    std::string pdf = PdfMaker().Make();
    const std::size_t box = pdf.find("[0 0 200 200]");
    return pdf.replace(box + 5, 3, std::to_string(width));
}

// The widths of a PDF's pages, in their order.
std::vector<int> PageWidths(const std::wstring& path) {
    const auto document = Document::Open(path, "");
    std::vector<int> widths;
    std::vector<std::string_view> waiting{document->Catalog().Find("Pages")};
    while (!waiting.empty()) {
        const Dict node = document->ResolveDict(waiting.back());
        waiting.pop_back();
        const auto kids = zavo::pdf::ArrayItems(document->Resolve(node.Find("Kids")));
        waiting.insert(waiting.end(), kids.rbegin(), kids.rend());
        const auto box = zavo::pdf::ArrayItems(document->Resolve(node.Find("MediaBox")));
        if (kids.empty() && box.size() == 4) {
            widths.push_back(static_cast<int>(zavo::pdf::ParseInteger(box[2]).value_or(-1)));
        }
    }
    return widths;
}

std::vector<ListedAttachment> Attached(const std::wstring& path) { return ListAttachments(*Document::Open(path, "")); }

std::vector<std::wstring> NamesIn(const std::wstring& folder) {
    std::vector<std::wstring> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

PdfAttachment Attach(PdfDocument document, const wchar_t* name, const std::string& content) {
    const PdfAttachment attachment = PDFDoc_NewAttachment(document, name, L"");
    EXPECT_TRUE(attachment);
    EXPECT_TRUE(PDFAttachment_SetFile(attachment, document, content.data(), content.size()));
    return attachment;
}

bool Add(PdfMerge merge, PdfDocument document) {
    return PDFMerge_AddDocument(merge, document, allPages, allPages, 1, 1, L"");
}

// Runs `work` on a thread with the stack that Office's threads have.
void OnSmallStack(const std::function<void()>& work) {
    const auto run = [](void* argument) -> DWORD {
        (*static_cast<const std::function<void()>*>(argument))();
        return 0;
    };
    const KernelHandle thread(CreateThread(nullptr, 1 << 20, run, const_cast<std::function<void()>*>(&work),
                                           STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
    ASSERT_EQ(WaitForSingleObject(thread.Get(), INFINITE), WAIT_OBJECT_0);
}

// The file is open with that sharing for as long as this lives.
KernelHandle Hold(const std::wstring& path, DWORD sharing) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING, 0, nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    return KernelHandle(file);
}

using Names = std::vector<std::wstring>;

}  // namespace

TEST(Engine, StartsAndEnds) {
    EXPECT_TRUE(PDF_InitLibrary(nullptr));
    int something = 0;
    EXPECT_FALSE(PDF_InitLibrary(&something));
    EXPECT_TRUE(PDF_DestroyLibrary());
}

TEST(Engine, NullHandlesAndTextsAreRefused) {
    const TemporaryFolder folder;
    EXPECT_EQ(PDF_LoadDocument(nullptr, ""), nullptr);
    EXPECT_FALSE(PDF_CloseDocument(nullptr));
    EXPECT_FALSE(PDF_Save(nullptr, folder.Path(L"a.pdf").c_str()));
    EXPECT_EQ(PDFDoc_NewAttachment(nullptr, L"a", L""), nullptr);
    EXPECT_FALSE(PDFAttachment_SetFile(nullptr, nullptr, "x", 1));
    EXPECT_FALSE(PDFAttachment_SetCreatedTime(nullptr, 0));
    EXPECT_FALSE(PDFAttachment_SetModifiedTime(nullptr, 0));
    EXPECT_FALSE(PDF_SetFileAttachmentFolderPath(nullptr, nullptr, L"/"));
    EXPECT_FALSE(PDFMerge_SetKeepBookmark(nullptr, 1));
    EXPECT_FALSE(PDFMerge_SetKeepFormField(nullptr, 1));
    EXPECT_FALSE(Add(nullptr, nullptr));
    EXPECT_FALSE(PDFMerge_Save(nullptr, folder.Path(L"a.pdf").c_str(), 0));
    EXPECT_FALSE(PDFMerge_Close(nullptr));

    const PdfDocument document = PDF_LoadDocument(folder.MakeFile(L"b.pdf", MakePdf(100)).c_str(), nullptr);
    ASSERT_TRUE(document);
    EXPECT_FALSE(PDF_Save(document, nullptr));
    EXPECT_EQ(PDFDoc_NewAttachment(document, nullptr, L""), nullptr);
    EXPECT_EQ(PDFDoc_NewAttachment(document, L"", L""), nullptr);
    const PdfAttachment attachment = PDFDoc_NewAttachment(document, L"a", nullptr);
    ASSERT_TRUE(attachment);
    EXPECT_FALSE(PDFAttachment_SetFile(attachment, document, nullptr, 1));
    EXPECT_FALSE(PDFAttachment_SetFile(attachment, nullptr, "x", 1));
    EXPECT_FALSE(PDF_SetFileAttachmentFolderPath(document, attachment, nullptr));
    EXPECT_TRUE(PDF_CloseDocument(document));
    EXPECT_EQ(NamesIn(folder.Path()), Names{L"b.pdf"});
}

TEST(Engine, HandlesOfAnotherKindAreRefused) {
    const TemporaryFolder folder;
    const std::wstring path = folder.MakeFile(L"a.pdf", MakePdf(100));
    const PdfDocument document = PDF_LoadDocument(path.c_str(), "");
    const PdfDocument other = PDF_LoadDocument(path.c_str(), "");
    const PdfMerge merge = PDFMerge_Create();
    const PdfAttachment attachment = PDFDoc_NewAttachment(document, L"a", L"");
    ASSERT_TRUE(document && other && merge && attachment);

    EXPECT_FALSE(PDF_CloseDocument(reinterpret_cast<PdfDocument>(merge)));
    EXPECT_FALSE(PDF_Save(reinterpret_cast<PdfDocument>(attachment), path.c_str()));
    EXPECT_FALSE(PDFMerge_Close(reinterpret_cast<PdfMerge>(document)));
    EXPECT_FALSE(Add(merge, reinterpret_cast<PdfDocument>(merge)));
    EXPECT_FALSE(PDFAttachment_SetCreatedTime(reinterpret_cast<PdfAttachment>(document), 0));
    EXPECT_FALSE(PDFAttachment_SetFile(attachment, other, "x", 1));
    EXPECT_FALSE(PDF_SetFileAttachmentFolderPath(other, attachment, L"/"));
    // Memory of the caller's own, and the inside of an object.
    alignas(16) char memory[256] = {};
    EXPECT_FALSE(PDF_CloseDocument(reinterpret_cast<PdfDocument>(memory)));
    EXPECT_FALSE(PDF_CloseDocument(reinterpret_cast<PdfDocument>(reinterpret_cast<char*>(document) + 1)));
    EXPECT_TRUE(PDFMerge_Close(merge));
    EXPECT_TRUE(PDF_CloseDocument(other));
    EXPECT_TRUE(PDF_CloseDocument(document));
}

TEST(Engine, WhatIsNoPdfGivesNull) {
    const TemporaryFolder folder;
    EXPECT_EQ(PDF_LoadDocument(folder.Path(L"none.pdf").c_str(), ""), nullptr);
    EXPECT_EQ(PDF_LoadDocument(folder.Path().c_str(), ""), nullptr);
    EXPECT_EQ(PDF_LoadDocument(folder.MakeFile(L"empty.pdf", "").c_str(), ""), nullptr);
    EXPECT_EQ(PDF_LoadDocument(folder.MakeFile(L"text.pdf", "some text").c_str(), ""), nullptr);
    EXPECT_EQ(PDF_LoadDocument(L"", ""), nullptr);
    EXPECT_EQ(PDF_LoadDocument(L"NUL", ""), nullptr);
}

TEST(Engine, MergesInOrderAndLeavesOutWhatIsNoPdf) {
    const TemporaryFolder folder;
    const std::wstring out = folder.Path(L"out.pdf");
    OnSmallStack([&] {
        const PdfMerge merge = PDFMerge_Create();
        EXPECT_TRUE(PDFMerge_SetKeepBookmark(merge, 1));
        EXPECT_TRUE(PDFMerge_SetKeepFormField(merge, 1));
        int added = 0;
        for (const std::string& bytes : {MakePdf(301), std::string("no PDF"), MakePdf(303)}) {
            const std::wstring name = L"in" + std::to_wstring(added) + L".pdf";
            const PdfDocument document = PDF_LoadDocument(folder.MakeFile(name, bytes).c_str(), "");
            EXPECT_EQ(Add(merge, document), document != nullptr);
            if (document) ++added;
            PDF_CloseDocument(document);  // the job does not need it any more
        }
        EXPECT_EQ(added, 2);
        EXPECT_TRUE(PDFMerge_Save(merge, out.c_str(), 0));
        EXPECT_TRUE(PDFMerge_Close(merge));
    });
    EXPECT_EQ(PageWidths(out), (std::vector<int>{301, 303}));
}

TEST(Engine, MergeRefusesWhatItDoesNotKnow) {
    const TemporaryFolder folder;
    const PdfDocument document = PDF_LoadDocument(folder.MakeFile(L"a.pdf", MakePdf(300)).c_str(), "");
    const PdfMerge merge = PDFMerge_Create();
    EXPECT_FALSE(PDFMerge_AddDocument(merge, document, 0, allPages, 1, 1, L""));
    EXPECT_FALSE(PDFMerge_AddDocument(merge, document, allPages, 0, 1, 1, L""));
    EXPECT_TRUE(PDFMerge_AddDocument(merge, document, allPages, allPages, 0, 0, nullptr));
    EXPECT_FALSE(PDFMerge_Save(merge, folder.Path(L"out.pdf").c_str(), 1));
    EXPECT_FALSE(PDFMerge_Save(merge, nullptr, 0));
    EXPECT_EQ(NamesIn(folder.Path()), Names{L"a.pdf"});
    EXPECT_TRUE(PDFMerge_Save(merge, folder.Path(L"out.pdf").c_str(), 0));
    EXPECT_TRUE(PDFMerge_Close(merge));
    EXPECT_TRUE(PDF_CloseDocument(document));
}

TEST(Engine, EmptyMergeWritesNothing) {
    const TemporaryFolder folder;
    const std::wstring old = folder.MakeFile(L"old.pdf", "old");
    const PdfMerge merge = PDFMerge_Create();
    EXPECT_FALSE(PDFMerge_Save(merge, folder.Path(L"new.pdf").c_str(), 0));
    EXPECT_FALSE(PDFMerge_Save(merge, old.c_str(), 0));
    EXPECT_TRUE(PDFMerge_Close(merge));
    EXPECT_EQ(ReadFileText(old), "old");
    EXPECT_EQ(NamesIn(folder.Path()), Names{L"old.pdf"});
}

TEST(Engine, AttachmentsHaveTimesAndContent) {
    const TemporaryFolder folder;
    const std::wstring path = folder.MakeFile(L"a.pdf", MakePdf(300));
    const std::string old = ReadFileText(path);
    OnSmallStack([&] {
        const PdfDocument document = PDF_LoadDocument(path.c_str(), "");
        const PdfAttachment full = PDFDoc_NewAttachment(document, L"b \x65E5\x672C \xD83D\xDCCE.txt", L"what it is");
        EXPECT_TRUE(PDFAttachment_SetFile(full, document, "abc", 3));
        EXPECT_TRUE(PDFAttachment_SetCreatedTime(full, 0));
        EXPECT_TRUE(PDFAttachment_SetModifiedTime(full, 1709251199));
        EXPECT_TRUE(PDF_SetFileAttachmentFolderPath(document, full, L"/"));
        EXPECT_FALSE(PDF_SetFileAttachmentFolderPath(document, full, L"/none"));
        const PdfAttachment empty = PDFDoc_NewAttachment(document, L"empty", L"");
        EXPECT_TRUE(PDFAttachment_SetFile(empty, document, nullptr, 0));
        EXPECT_TRUE(PDFAttachment_SetCreatedTime(empty, -1));
        EXPECT_TRUE(PDFDoc_NewAttachment(document, L"without content", L""));
        EXPECT_TRUE(PDF_Save(document, path.c_str()));
        // It is in the file now.
        EXPECT_FALSE(PDFAttachment_SetCreatedTime(full, 1));
        EXPECT_FALSE(PDFAttachment_SetFile(full, document, "x", 1));
        EXPECT_TRUE(PDF_CloseDocument(document));
    });
    EXPECT_TRUE(ReadFileText(path).starts_with(old));
    EXPECT_NE(ReadFileText(path).find("/Desc(what it is)"), std::string::npos);
    const auto list = Attached(path);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].name, "empty");
    EXPECT_EQ(list[0].size, 0);
    EXPECT_EQ(list[0].created, -1);
    EXPECT_EQ(list[1].name, "b \xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x93\x8E.txt");
    EXPECT_EQ(list[1].size, 3);
    EXPECT_EQ(list[1].created, 0);
    EXPECT_EQ(list[1].modified, 1709251199);
    EXPECT_EQ(NamesIn(folder.Path()), Names{L"a.pdf"});
}

TEST(Engine, HalfASurrogatePairIsNoError) {
    const TemporaryFolder folder;
    const std::wstring path = folder.MakeFile(L"a.pdf", MakePdf(300));
    const PdfDocument document = PDF_LoadDocument(path.c_str(), "");
    Attach(document, L"a\xD83D", "abc");
    EXPECT_TRUE(PDF_Save(document, path.c_str()));
    EXPECT_TRUE(PDF_CloseDocument(document));
    EXPECT_EQ(Attached(path)[0].name, "a\xEF\xBF\xBD");
}

TEST(Engine, DocumentIsSavedAgainAndElsewhere) {
    const TemporaryFolder folder;
    const std::wstring path = folder.MakeFile(L"a.pdf", MakePdf(300));
    const std::wstring copy = folder.Path(L"b.pdf");
    const PdfDocument document = PDF_LoadDocument(path.c_str(), "");
    Attach(document, L"one", "1");
    EXPECT_TRUE(PDF_Save(document, copy.c_str()));
    EXPECT_EQ(Attached(path).size(), 0u);
    EXPECT_TRUE(PDF_Save(document, path.c_str()));
    Attach(document, L"two", "2");
    EXPECT_TRUE(PDF_Save(document, path.c_str()));
    EXPECT_TRUE(PDF_CloseDocument(document));
    EXPECT_EQ(Attached(copy).size(), 1u);
    EXPECT_EQ(Attached(path).size(), 2u);
    EXPECT_EQ(NamesIn(folder.Path()), (Names{L"a.pdf", L"b.pdf"}));
}

TEST(Engine, DamagedFileIsRepairedWhenSaved) {
    const TemporaryFolder folder;
    const std::wstring path = folder.MakeFile(L"a.pdf", "junk\n" + MakePdf(300));
    OnSmallStack([&] {
        const PdfDocument document = PDF_LoadDocument(path.c_str(), "");
        ASSERT_TRUE(document);
        Attach(document, L"one", "1");
        EXPECT_TRUE(PDF_Save(document, path.c_str()));
        EXPECT_TRUE(PDF_CloseDocument(document));
    });
    EXPECT_EQ(Attached(path).size(), 1u);
    EXPECT_TRUE(Document::Open(path, "")->IsPlain());
}

TEST(Engine, LargeContentIsSpooledAndTheSpoolGoes) {
    const TemporaryFolder folder;
    const std::wstring path = folder.MakeFile(L"a.pdf", MakePdf(300));
    std::string noise(40 << 20, '\0');
    std::uint64_t state = 1;
    for (char& c : noise) c = static_cast<char>((state = state * 6364136223846793005u + 1442695040888963407u) >> 56);
    const PdfDocument document = PDF_LoadDocument(path.c_str(), "");
    Attach(document, L"noise", noise);
    const Names names = NamesIn(folder.Path());
    EXPECT_EQ(names.size(), 2u);
    for (const std::wstring& name : names) {
        const DWORD attributes = GetFileAttributesW((folder.Path() + L"\\" + name).c_str());
        EXPECT_EQ((attributes & FILE_ATTRIBUTE_HIDDEN) != 0, name != L"a.pdf");
    }
    EXPECT_TRUE(PDF_Save(document, path.c_str()));
    EXPECT_EQ(NamesIn(folder.Path()), Names{L"a.pdf"});
    EXPECT_EQ(GetFileAttributesW(path.c_str()) & FILE_ATTRIBUTE_HIDDEN, 0u);
    Attach(document, L"more", noise);
    EXPECT_TRUE(PDF_CloseDocument(document));
    EXPECT_EQ(NamesIn(folder.Path()), Names{L"a.pdf"});
    EXPECT_NE(ReadFileText(path).find(noise), std::string::npos);
}

TEST(Engine, TargetThatIsHeldStaysAsItIs) {
    const TemporaryFolder folder;
    const std::wstring path = folder.MakeFile(L"a.pdf", MakePdf(300));
    const std::wstring other = folder.MakeFile(L"b.pdf", "other");
    const std::string old = ReadFileText(path);
    const PdfDocument document = PDF_LoadDocument(path.c_str(), "");
    const PdfMerge merge = PDFMerge_Create();
    const PdfDocument input = PDF_LoadDocument(path.c_str(), "");
    EXPECT_TRUE(Add(merge, input));
    Attach(document, L"one", "1");
    {
        const KernelHandle readers = Hold(path, FILE_SHARE_READ);
        const KernelHandle nobody = Hold(other, 0);
        EXPECT_FALSE(PDF_Save(document, path.c_str()));
        EXPECT_FALSE(PDF_Save(document, other.c_str()));
        EXPECT_FALSE(PDFMerge_Save(merge, other.c_str(), 0));
        EXPECT_EQ(NamesIn(folder.Path()), (Names{L"a.pdf", L"b.pdf"}));
        EXPECT_EQ(ReadFileText(path), old);
    }
    EXPECT_EQ(ReadFileText(other), "other");
    EXPECT_TRUE(PDFMerge_Save(merge, other.c_str(), 0));
    EXPECT_TRUE(PDFMerge_Close(merge));
    EXPECT_TRUE(PDF_CloseDocument(input));
    EXPECT_TRUE(PDF_Save(document, path.c_str()));
    EXPECT_TRUE(PDF_CloseDocument(document));
    EXPECT_EQ(Attached(path).size(), 1u);
}

TEST(Engine, ReadOnlyTargetStaysAsItIs) {
    const TemporaryFolder folder;
    const std::wstring path = folder.MakeFile(L"a.pdf", MakePdf(300));
    const std::string old = ReadFileText(path);
    const PdfDocument document = PDF_LoadDocument(path.c_str(), "");
    Attach(document, L"one", "1");
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_FALSE(PDF_Save(document, path.c_str()));
    EXPECT_EQ(ReadFileText(path), old);
    EXPECT_EQ(NamesIn(folder.Path()), Names{L"a.pdf"});
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL));
    EXPECT_TRUE(PDF_Save(document, path.c_str()));
    EXPECT_TRUE(PDF_CloseDocument(document));
}

TEST(Engine, DocumentThatAMergeNeedsIsNotReplaced) {
    const TemporaryFolder folder;
    const std::wstring path = folder.MakeFile(L"a.pdf", MakePdf(300));
    const PdfDocument document = PDF_LoadDocument(path.c_str(), "");
    const PdfMerge merge = PDFMerge_Create();
    EXPECT_TRUE(Add(merge, document));
    Attach(document, L"one", "1");
    EXPECT_FALSE(PDF_Save(document, path.c_str()));
    EXPECT_TRUE(PDFMerge_Close(merge));
    EXPECT_TRUE(PDF_Save(document, path.c_str()));
    EXPECT_TRUE(PDF_CloseDocument(document));
}

TEST(Engine, OthersMayReadAndRenameAnOpenDocument) {
    const TemporaryFolder folder;
    const std::wstring path = folder.MakeFile(L"a.pdf", MakePdf(300));
    const PdfDocument document = PDF_LoadDocument(path.c_str(), "");
    EXPECT_TRUE(MoveFileExW(path.c_str(), folder.Path(L"b.pdf").c_str(), 0));
    EXPECT_TRUE(MoveFileExW(folder.Path(L"b.pdf").c_str(), path.c_str(), 0));
    EXPECT_EQ(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr),
              INVALID_HANDLE_VALUE);
    EXPECT_TRUE(PDF_CloseDocument(document));
}

TEST(Engine, TakesLongAndNonLatinPaths) {
    const TemporaryFolder folder;
    std::wstring path = folder.Path();
    while (path.size() < 300) {
        path += L"\\\x65E5\x672C \x041F\x0438\x0441\x044C\x043C\x043E " + std::wstring(40, L'x');
        ASSERT_TRUE(CreateDirectoryW((LR"(\\?\)" + path).c_str(), nullptr));
    }
    const std::wstring pdf = path + L"\\\x00FC\x4E2D.pdf";
    const std::wstring merged = path + L"\\merged.pdf";
    ASSERT_TRUE(CopyFileW(folder.MakeFile(L"a.pdf", MakePdf(300)).c_str(), (LR"(\\?\)" + pdf).c_str(), TRUE));

    const PdfDocument document = PDF_LoadDocument(pdf.c_str(), "");
    ASSERT_TRUE(document);
    const PdfAttachment attachment = Attach(document, L"one", "1");
    EXPECT_TRUE(PDF_Save(document, pdf.c_str()));
    EXPECT_FALSE(PDFAttachment_SetCreatedTime(attachment, 0));  // it is saved: the path was taken for the file's own
    const PdfMerge merge = PDFMerge_Create();
    EXPECT_TRUE(Add(merge, document));
    EXPECT_TRUE(PDFMerge_Save(merge, merged.c_str(), 0));
    EXPECT_TRUE(PDFMerge_Close(merge));
    EXPECT_TRUE(PDF_CloseDocument(document));
    EXPECT_EQ(Attached(pdf).size(), 1u);
    EXPECT_EQ(PageWidths(merged), std::vector<int>{300});
    EXPECT_TRUE(DeleteFileW((LR"(\\?\)" + pdf).c_str()));
    EXPECT_TRUE(DeleteFileW((LR"(\\?\)" + merged).c_str()));
    // What is too long for the folder's own clean-up.
    while (path.size() > folder.Path().size()) {
        EXPECT_TRUE(RemoveDirectoryW((LR"(\\?\)" + path).c_str()));
        path.resize(path.rfind(L'\\'));
    }
}

TEST(Engine, ManyAttachmentsOneByOne) {
    const TemporaryFolder folder;
    const std::wstring path = folder.MakeFile(L"a.pdf", MakePdf(300));
    for (int i = 0; i < 100; ++i) {
        const PdfDocument document = PDF_LoadDocument(path.c_str(), "");
        Attach(document, L"mail.pdf", std::to_string(i));
        EXPECT_TRUE(PDF_Save(document, path.c_str()));
        EXPECT_TRUE(PDF_CloseDocument(document));
    }
    EXPECT_EQ(Attached(path).size(), 100u);
    EXPECT_LE(Document::Open(path, "")->CrossReference().count, 64u);
}
