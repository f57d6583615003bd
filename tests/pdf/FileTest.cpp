// The engine's files: reading, replacing at once or not at all, and the spool.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "engine/File.h"
#include "tests/pdf/SmallDisk.h"
#include "tests/pdf/TestFolder.h"

using namespace zavo::pdf;

namespace {

using Names = std::set<std::string>;

std::string FileErrorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const FileError& error) {
        return error.what();
    }
    return "no error";
}

std::string Collect(const Spool& spool) {
    std::string bytes;
    spool.CopyTo([&](std::string_view piece) {
        EXPECT_LE(piece.size(), 1u << 20);
        bytes += piece;
    });
    return bytes;
}

}  // namespace

TEST(InputFile, GivesSizeAndBytes) {
    const TestFolder folder;
    const InputFile file(folder.MakeFile("a", "0123456789"));
    EXPECT_EQ(file.Size(), 10u);
    EXPECT_EQ(file.ReadAll().View(), "0123456789");
    std::string part(4, '?');
    file.ReadAt(3, part.data(), part.size());
    EXPECT_EQ(part, "3456");
}

TEST(InputFile, TakesAnEmptyFile) {
    const TestFolder folder;
    const InputFile file(folder.MakeFile("a", ""));
    EXPECT_EQ(file.Size(), 0u);
    EXPECT_EQ(file.ReadAll().View(), "");
    file.CopyTo([](std::string_view piece) { ADD_FAILURE() << piece.size(); });
}

TEST(InputFile, ErrorsNameFileAndReason) {
    const TestFolder folder;
    EXPECT_EQ(FileErrorOf([&] { InputFile file(folder.Path("none")); }),
              folder.Path("none").string() + ": cannot be opened: No such file or directory");
    EXPECT_EQ(FileErrorOf([&] { InputFile file(folder.Path()); }),
              folder.Path().string() + ": cannot be opened: Is a directory");
    ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0600), 0);
    EXPECT_EQ(FileErrorOf([&] { InputFile file(folder.Path("pipe")); }),
              folder.Path("pipe").string() + ": cannot be opened: Invalid argument");
}

TEST(InputFile, ReadingBeyondTheEndIsAnError) {
    const TestFolder folder;
    const InputFile file(folder.MakeFile("a", "0123456789"));
    std::string part(8, '?');
    EXPECT_EQ(FileErrorOf([&] { file.ReadAt(5, part.data(), part.size()); }),
              folder.Path("a").string() + ": ends before byte 13");
}

TEST(InputFile, CopiesInPieces) {
    const TestFolder folder;
    std::string content;
    for (unsigned i = 0; content.size() < (5u << 19); ++i) content += std::to_string(i);
    std::string copy;
    InputFile(folder.MakeFile("a", content)).CopyTo([&](std::string_view piece) {
        EXPECT_LE(piece.size(), 1u << 20);
        copy += piece;
    });
    EXPECT_EQ(copy, content);
}

TEST(ReplacementFile, MakesANewFile) {
    const TestFolder folder;
    ReplacementFile file(folder.Path("new"));
    file.Write("one ");
    file.Write(std::string(600000, 'x'));
    file.Write(" two");
    EXPECT_EQ(file.Position(), 600008u);
    EXPECT_FALSE(std::filesystem::exists(folder.Path("new")));
    file.Commit();
    EXPECT_EQ(ReadBytes(folder.Path("new")), "one " + std::string(600000, 'x') + " two");
    EXPECT_EQ(folder.Names(), Names{"new"});
}

TEST(ReplacementFile, ReplacesAndKeepsTheMode) {
    const TestFolder folder;
    const auto target = folder.MakeFile("a", "old");
    ASSERT_EQ(chmod(target.c_str(), 0640), 0);
    ReplacementFile file(target);
    file.Write("new");
    EXPECT_EQ(ReadBytes(target), "old");
    file.Commit();
    EXPECT_EQ(ReadBytes(target), "new");
    struct stat status = {};
    ASSERT_EQ(stat(target.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    EXPECT_EQ(folder.Names(), Names{"a"});
}

TEST(ReplacementFile, NobodyReadsItBeforeItHasTheTargetsMode) {
    const TestFolder folder;
    const auto target = folder.MakeFile("a", "old");
    ASSERT_EQ(chmod(target.c_str(), 0644), 0);
    const ReplacementFile file(target);
    for (const std::string& name : folder.Names()) {
        struct stat status = {};
        ASSERT_EQ(stat(folder.Path(name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, name == "a" ? 0644u : 0600u);
    }
}

TEST(ReplacementFile, NewFileHasTheModeOfNewFiles) {
    const TestFolder folder;
    const mode_t mask = umask(027);
    ReplacementFile file(folder.Path("a"));
    umask(mask);
    file.Commit();
    struct stat status = {};
    ASSERT_EQ(stat(folder.Path("a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST(ReplacementFile, WithoutCommitNothingHasHappened) {
    const TestFolder folder;
    const auto target = folder.MakeFile("a", "old");
    {
        ReplacementFile file(target);
        file.Write(std::string(1 << 20, 'x'));
        EXPECT_EQ(folder.Names().size(), 2u);
    }
    EXPECT_EQ(ReadBytes(target), "old");
    EXPECT_EQ(folder.Names(), Names{"a"});
}

TEST(ReplacementFile, FullDiskLeavesTheOldFile) {
    const TestFolder folder;
    const auto target = folder.MakeFile("a", "old");
    // The limit is met while writing, and where all is still in the buffer, by Commit.
    for (const std::size_t size : {std::size_t{1} << 21, std::size_t{100000}}) {
        const SmallDisk disk(65536);
        EXPECT_EQ(FileErrorOf([&] {
                      ReplacementFile file(target);
                      file.Write(std::string(size, 'x'));
                      file.Commit();
                  }),
                  target.string() + ": cannot be written: File too large");
        EXPECT_EQ(ReadBytes(target), "old");
        EXPECT_EQ(folder.Names(), Names{"a"});
    }
}

TEST(ReplacementFile, ReadOnlyTargetIsAnError) {
    const TestFolder folder;
    const auto target = folder.MakeFile("a", "old");
    ASSERT_EQ(chmod(target.c_str(), 0444), 0);
    EXPECT_EQ(FileErrorOf([&] { ReplacementFile file(target); }),
              target.string() + ": cannot be written: the file is read-only");
    EXPECT_EQ(ReadBytes(target), "old");
    EXPECT_EQ(folder.Names(), Names{"a"});
}

TEST(ReplacementFile, FolderAsTargetIsAnError) {
    const TestFolder folder;
    EXPECT_EQ(FileErrorOf([&] { ReplacementFile file(folder.Path()); }),
              folder.Path().string() + ": cannot be written: Is a directory");
}

TEST(ReplacementFile, MissingFolderIsAnError) {
    const TestFolder folder;
    EXPECT_EQ(FileErrorOf([&] { ReplacementFile file(folder.Path("none") / "a"); }),
              folder.Path("none").string() + ": a file cannot be made there: No such file or directory");
}

TEST(ReplacementFile, WritesThroughLinks) {
    const TestFolder folder;
    std::filesystem::create_directory(folder.Path("real"));
    std::ofstream(folder.Path("real") / "a") << "old";
    std::filesystem::create_symlink("real/a", folder.Path("middle"));
    std::filesystem::create_symlink("middle", folder.Path("link"));
    ReplacementFile file(folder.Path("link"));
    file.Write("new");
    file.Commit();
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link")));
    EXPECT_EQ(ReadBytes(folder.Path("real") / "a"), "new");
    EXPECT_EQ(folder.Names(), (Names{"real", "middle", "link"}));
}

TEST(ReplacementFile, LinkThatLeadsNowhereIsFollowed) {
    const TestFolder folder;
    std::filesystem::create_symlink("a", folder.Path("link"));
    ReplacementFile file(folder.Path("link"));
    file.Commit();
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link")));
    EXPECT_TRUE(std::filesystem::is_regular_file(folder.Path("a")));
}

TEST(ReplacementFile, LinksInACircleAreAnError) {
    const TestFolder folder;
    std::filesystem::create_symlink("a", folder.Path("b"));
    std::filesystem::create_symlink("b", folder.Path("a"));
    EXPECT_NE(FileErrorOf([&] { ReplacementFile file(folder.Path("a")); }), "no error");
}

TEST(ReplacementFile, TakesNonLatinAndLongNames) {
    const TestFolder folder;
    std::filesystem::path path = folder.Path();
    while (path.native().size() < 1000) path /= PathFromUtf8("\xE6\x97\xA5\xE6\x9C\xAC " + std::string(80, 'x'));
    std::filesystem::create_directories(path);
    path /= PathFromUtf8("\xD0\x9F\xD0\xB8\xD1\x81\xD1\x8C\xD0\xBC\xD0\xBE.pdf");
    ReplacementFile file(path);
    file.Write("content");
    file.Commit();
    EXPECT_EQ(InputFile(path).ReadAll().View(), "content");
}

TEST(Spool, KeepsSmallContentInMemory) {
    const TestFolder folder;
    Spool spool(folder.Path("none"));
    spool.Write("abc");
    spool.Write("def");
    EXPECT_EQ(spool.Size(), 6u);
    EXPECT_EQ(Collect(spool), "abcdef");
    EXPECT_EQ(Collect(spool), "abcdef");
}

TEST(Spool, KeepsLargeContentInAFileThatNobodySees) {
    const TestFolder folder;
    Spool spool(folder.Path());
    std::string content;
    for (int i = 0; i < 40; ++i) {
        const std::string piece(1000003, static_cast<char>('a' + i % 26));
        spool.Write(piece);
        content += piece;
    }
    EXPECT_EQ(spool.Size(), content.size());
    EXPECT_TRUE(Collect(spool) == content);
    spool.Write("more");
    EXPECT_TRUE(Collect(spool) == content + "more");
    EXPECT_EQ(folder.Names(), Names{});
}

TEST(Spool, FullDiskIsAnError) {
    const TestFolder folder;
    Spool spool(folder.Path());
    const SmallDisk disk(35 << 20);
    const std::string piece(1 << 20, 'x');
    EXPECT_EQ(FileErrorOf([&] {
                  for (int i = 0; i < 40; ++i) spool.Write(piece);
              }),
              folder.Path().string() + ": cannot be written: File too large");
}

TEST(Path, GoesToUtf8AndBack) {
    const std::string text = "f\xC3\xBCr \xE6\x97\xA5.pdf";
    EXPECT_EQ(Utf8FromPath(PathFromUtf8(text)), text);
}
