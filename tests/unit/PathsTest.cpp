// Parts of paths, and free paths among real files.
#include "src/base/Paths.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/Files.h"

TEST(Paths, FileNameIsCutBeforeItsLastDotOnly) {
    const struct {
        const wchar_t* path;
        const wchar_t* withExtension;
        const wchar_t* without;
    } rows[] = {
        {L"C:\\Work\\Plan.final.docx", L"Plan.final.docx", L"Plan.final"},
        {L"C:/Work/Plan.docx", L"Plan.docx", L"Plan"},
        {L"C:\\Work.old\\Plan", L"Plan", L"Plan"},
        {L"Document1", L"Document1", L"Document1"},
        {L".docx", L".docx", L""},
        {L"", L"", L""},
        {L"C:\\", L"C:\\", L"C:\\"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(GetFileNameOfPath(row.path, true), row.withExtension) << row.path;
        EXPECT_EQ(GetFileNameOfPath(row.path, false), row.without) << row.path;
    }
}

TEST(Paths, FolderEndsWithTheLastSeparatorOfEitherKind) {
    const struct {
        const wchar_t* path;
        const wchar_t* folder;
    } rows[] = {
        {L"C:\\Work\\Plan.docx", L"C:\\Work\\"},
        {L"C:/Work/sub/Plan.docx", L"C:/Work/sub/"},
        {L"C:\\Work/Plan.docx", L"C:\\Work/"},
        {L"\\\\server\\share\\a.docx", L"\\\\server\\share\\"},
        {L"Document1", L""},
        {L"", L""},
    };
    for (const auto& row : rows) EXPECT_EQ(GetFolderOfPath(row.path), row.folder) << row.path;
}

TEST(Paths, ExtensionIsEmptyWhenOnlyTheFolderHasADot) {
    EXPECT_EQ(GetExtensionOfPath(L"C:\\a.b\\name"), L"");
    EXPECT_EQ(GetExtensionOfPath(L"C:\\a\\name.tar.gz"), L".gz");
    EXPECT_EQ(GetExtensionOfPath(L""), L"");
}

TEST(Paths, FreePathIsGivenBackAsItIs) {
    const TemporaryFolder folder;
    EXPECT_EQ(MakeUniquePath(0, folder.Path(L"report.pdf")), folder.Path(L"report.pdf"));
}

TEST(Paths, TakenPathGetsTheNextFreeNumberWithoutABlank) {
    const TemporaryFolder folder;
    folder.MakeFile(L"report.pdf");
    folder.MakeFile(L"report(1).pdf");
    EXPECT_EQ(MakeUniquePath(0, folder.Path(L"report.pdf")), folder.Path(L"report(2).pdf"));
    EXPECT_EQ(MakeUniquePath(5, folder.Path(L"report.pdf")), folder.Path(L"report(5).pdf"));
}

TEST(Paths, NumberGoesToTheEndWhereThereIsNoExtension) {
    const TemporaryFolder folder;
    folder.MakeFile(L"name");
    EXPECT_EQ(MakeUniquePath(0, folder.Path(L"name")), folder.Path(L"name(1)"));
    std::filesystem::create_directories(folder.Path(L"a.b"));
    folder.MakeFile(L"a.b\\name");
    EXPECT_EQ(MakeUniquePath(0, folder.Path(L"a.b\\name")), folder.Path(L"a.b\\name(1)"));
}

TEST(Paths, ManyTakenNumbersNeedNoDeepStack) {
    const TemporaryFolder folder;
    folder.MakeFile(L"r.pdf");
    for (int i = 1; i <= 300; ++i) folder.MakeFile(L"r(" + std::to_wstring(i) + L").pdf");
    EXPECT_EQ(MakeUniquePath(0, folder.Path(L"r.pdf")), folder.Path(L"r(301).pdf"));
}

TEST(Paths, FolderIsMadeWithAllThatIsMissingAboveIt) {
    const TemporaryFolder folder;
    MakeFolder(folder.Path(L"a\\b\\c"));
    EXPECT_TRUE(std::filesystem::is_directory(folder.Path(L"a\\b\\c")));
    MakeFolder(folder.Path(L"a\\b\\c"));
    EXPECT_TRUE(Exists(folder.Path(L"a\\b\\c")));
}

TEST(Paths, FolderThatCannotBeMadeIsNoMatter) {
    const TemporaryFolder folder;
    folder.MakeFile(L"file", "mine");
    MakeFolder(folder.Path(L"file\\inner"));
    MakeFolder(folder.Path(L"file"));
    EXPECT_EQ(ReadFileText(folder.Path(L"file")), "mine");
    EXPECT_FALSE(Exists(folder.Path(L"file\\inner")));
    EXPECT_TRUE(Exists(folder.Path(L"file")));
}

TEST(Paths, TextIsShortenedToWholeCharacters) {
    EXPECT_EQ(Shortened(L"abc", 3), L"abc");
    EXPECT_EQ(Shortened(L"abcd", 3), L"abc");
    EXPECT_EQ(Shortened(L"ab\xD83D\xDE00", 3), L"ab");
    EXPECT_EQ(Shortened(L"ab\xD83D\xDE00", 4), L"ab\xD83D\xDE00");
    EXPECT_EQ(Shortened(L"\xD83D\xDE00", 0), L"");
}
