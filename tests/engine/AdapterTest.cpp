// The add-in's merging and attaching with the engine itself: real files in, real PDFs out.
#include <windows.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/Attach.h"
#include "engine/Document.h"
#include "src/base/Handles.h"
#include "src/export/PdfEngine.h"
#include "tests/pdf/PdfMaker.h"
#include "tests/support/Files.h"

using zavo::pdf::Document;
using zavo::pdf::ListAttachments;
using zavo::pdf::ListedAttachment;

namespace {

// The titles of the bookmarks, which in a merge of files without any are the files' names.
std::vector<std::string> Titles(const std::wstring& path) {
    const auto document = Document::Open(path, "");
    std::vector<std::string> titles;
    std::string item(document->ResolveDict(document->Catalog().Find("Outlines")).Find("First"));
    while (!item.empty()) {
        const zavo::pdf::Dict bookmark = document->ResolveDict(item);
        titles.push_back(zavo::pdf::TextToUtf8(zavo::pdf::DecodeString(bookmark.Find("Title"))));
        item = std::string(bookmark.Find("Next"));
    }
    return titles;
}

std::vector<ListedAttachment> Attached(const std::wstring& path) { return ListAttachments(*Document::Open(path, "")); }

// A file of that size which takes next to no room.
void MakeSparse(const std::wstring& path, LONGLONG size) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    const KernelHandle owner(file);
    LARGE_INTEGER end;
    end.QuadPart = size;
    ASSERT_TRUE(SetFilePointerEx(file, end, nullptr, FILE_BEGIN));
    ASSERT_TRUE(SetEndOfFile(file));
}

}  // namespace

TEST(Adapter, MergeOfThreeWithoutTheSecondWhichIsNoPdf) {
    const TemporaryFolder folder;
    const std::vector<std::wstring> inputs = {folder.MakeFile(L"first.pdf", PdfMaker().Make()),
                                              folder.MakeFile(L"second.pdf", "no PDF"),
                                              folder.MakeFile(L"third.pdf", PdfMaker().Make(Form::Stream))};
    EXPECT_TRUE(MergePdfFiles(folder.Path(L"out.pdf"), inputs));
    EXPECT_EQ(Titles(folder.Path(L"out.pdf")), (std::vector<std::string>{"first", "third"}));
    for (const std::wstring& input : inputs) EXPECT_TRUE(DeleteFileW(input.c_str())) << "still open";
}

TEST(Adapter, MergeOfNothingWritesNothing) {
    const TemporaryFolder folder;
    EXPECT_FALSE(MergePdfFiles(folder.Path(L"out.pdf"), {}));
    EXPECT_FALSE(MergePdfFiles(folder.Path(L"out.pdf"), {folder.MakeFile(L"a.pdf", "no PDF")}));
    EXPECT_EQ(GetFileSize64(folder.Path(L"out.pdf")), -1);
}

TEST(Adapter, FilesThatCannotBeReadAreLeftOut) {
    const TemporaryFolder folder;
    const std::wstring pdf = folder.MakeFile(L"box.pdf", PdfMaker().Make());
    const std::vector<std::wstring> files = {folder.MakeFile(L"a.txt", "hello"), folder.Path(L"missing.txt"),
                                             folder.Path(), folder.MakeFile(L"empty.txt", "")};
    EXPECT_TRUE(AttachFilesToPdf(pdf, files, true));
    const std::vector<ListedAttachment> attached = Attached(pdf);
    ASSERT_EQ(attached.size(), 2u);
    EXPECT_EQ(attached[0].name, "a.txt");
    EXPECT_EQ(attached[0].size, 5);
    EXPECT_EQ(attached[0].modified, GetFileTimeSeconds(files[0], timeOfLastWrite));
    EXPECT_EQ(attached[1].name, "empty.txt");
    EXPECT_EQ(attached[1].size, 0);
}

// Takes a while: two gibibytes are read and compressed.
TEST(Adapter, FileOfTwoGibibytesIsNotAttachedAndOneByteLessIs) {
    const TemporaryFolder folder;
    const std::wstring pdf = folder.MakeFile(L"box.pdf", PdfMaker().Make());
    MakeSparse(folder.Path(L"below.bin"), 2147483647);
    MakeSparse(folder.Path(L"limit.bin"), 2147483648);
    EXPECT_TRUE(AttachFilesToPdf(pdf, {folder.Path(L"limit.bin"), folder.Path(L"below.bin")}, false));
    const std::vector<ListedAttachment> attached = Attached(pdf);
    ASSERT_EQ(attached.size(), 1u);
    EXPECT_EQ(attached[0].name, "below.bin");
    EXPECT_EQ(attached[0].size, 2147483647);
    EXPECT_LT(GetFileSize64(pdf), 16 << 20);
}
