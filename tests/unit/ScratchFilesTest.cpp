// Files that are needed for a while, deleted from a real folder.
#include "src/outlook/ScratchFiles.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "src/outlook/MailOnDisk.h"
#include "tests/support/Files.h"
#include "tests/support/Sharing.h"

namespace {

namespace fs = std::filesystem;
using Listing = std::map<std::wstring, std::string>;

class OutlookScratchFiles : public testing::Test {
protected:
    std::wstring Path(const std::wstring& name) const { return folder_.Path(name); }
    void MakeFile(const std::wstring& name, const std::string& content) const {
        EXPECT_TRUE(WriteFileText(Path(name), content));
    }
    void MakeFolder(const std::wstring& name) const { fs::create_directories(Path(name)); }

    const TemporaryFolder folder_;
};

// A link to a folder of this machine, which shows as a reparse point. Wine makes and removes none itself.
class FolderLink {
public:
    FolderLink(std::wstring link, const std::wstring& target) : link_(std::move(link)) {
        Run(L"ln -s " + Quoted(target) + L" " + Quoted(link_), true);
    }
    FolderLink(const FolderLink&) = delete;
    FolderLink& operator=(const FolderLink&) = delete;
    ~FolderLink() { Run(L"rm -f " + Quoted(link_), false); }

private:
    static std::wstring Quoted(const std::wstring& path) {
        using UnixName = char*(CDECL*)(const wchar_t*);
        const auto unixName = reinterpret_cast<UnixName>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
        char* name = unixName ? unixName(path.c_str()) : nullptr;
        const std::string text = name ? name : "";
        if (name) HeapFree(GetProcessHeap(), 0, name);
        return L"\"" + std::wstring(text.begin(), text.end()) + L"\"";
    }
    // Waits until the link is there or gone: such a program cannot be waited for.
    void Run(const std::wstring& command, bool isThere) const {
        std::wstring commandLine = L"\\\\?\\unix\\bin\\" + command;
        STARTUPINFOW startup = {};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION info = {};
        CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &info);
        for (int tries = 0; tries < 500 && fs::exists(link_) != isThere; ++tries) Sleep(2);
    }

    const std::wstring link_;
};

}  // namespace

TEST_F(OutlookScratchFiles, AreDeletedInTheEndAndNothingElse) {
    MakeFile(L"other.txt", "other");
    {
        ScratchFiles files;
        files.AddFile(Path(L"a.txt"));
        files.AddFile(Path(L"never written.txt"));
        files.AddFolder(Path(L"folder"));
        files.AddFolder(Path(L"never made"));
        MakeFile(L"a.txt", "a");
        MakeFolder(L"folder\\inner");
        MakeFile(L"folder\\inner\\b.txt", "b");
    }
    EXPECT_EQ(folder_.List(), (Listing{{L"other.txt", "other"}}));
}

TEST_F(OutlookScratchFiles, FolderInTheFilesPlaceAndFileInTheFoldersStay) {
    MakeFolder(L"a.txt");
    MakeFile(L"folder", "mine");
    const Listing before = folder_.List();
    {
        ScratchFiles files;
        files.AddFile(Path(L"a.txt"));
        files.AddFolder(Path(L"folder"));
    }
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(OutlookScratchFiles, WildCardsMatchNothing) {
    MakeFile(L"a.txt", "mine");
    MakeFolder(L"folder");
    const Listing before = folder_.List();
    {
        ScratchFiles files;
        files.AddFile(Path(L"?.txt"));
        files.AddFile(Path(L"*"));
        files.AddFolder(Path(L"fold*"));
    }
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(OutlookScratchFiles, AreKnownWhateverTheirCapitals) {
    ScratchFiles files;
    files.AddFile(Path(L"Report.PDF"));
    files.AddFolder(Path(L"folder"));
    EXPECT_TRUE(files.HasFile(Path(L"REPORT.pdf")));
    EXPECT_FALSE(files.HasFile(Path(L"Report.PD")));
    EXPECT_FALSE(files.HasFile(Path(L"folder"))) << "no file";
}

TEST_F(OutlookScratchFiles, WhatIsInUseIsKeptForNextTimeAndWhatIsNotGoes) {
    for (const bool otherHasSomething : {false, true}) {
        MakeFile(L"a.txt", "a");
        MakeFile(L"b.txt", "b");
        ScratchFiles files;
        files.AddFile(Path(L"a.txt"));
        files.AddFile(Path(L"b.txt"));
        ScratchFiles others;
        if (otherHasSomething) others.AddFile(Path(L"c.txt"));
        {
            const HeldFile held(Path(L"a.txt"), GENERIC_READ, FILE_SHARE_READ);
            files.DeleteOrLeaveTo(others);
            EXPECT_EQ(folder_.List(), (Listing{{L"a.txt", "a"}}));
        }
        EXPECT_FALSE(files.HasFile(Path(L"a.txt")));
        files.Delete();
        MakeFile(L"b.txt", "somebody's");
        EXPECT_EQ(folder_.List(), (Listing{{L"a.txt", "a"}, {L"b.txt", "somebody's"}}));
        others.Delete();
        EXPECT_EQ(folder_.List(), (Listing{{L"b.txt", "somebody's"}})) << "what was deleted once is not deleted again";
    }
}

TEST_F(OutlookScratchFiles, WhatTheUserPutInThePlaceOfAKeptOneStays) {
    MakeFile(L"a.txt", "scratch");
    MakeFolder(L"folder");
    MakeFile(L"folder\\b.txt", "scratch");
    MakeFolder(L"empty");
    MakeFile(L"empty\\c.txt", "scratch");
    ScratchFiles files;
    files.AddFile(Path(L"a.txt"));
    files.AddFolder(Path(L"folder"));
    files.AddFolder(Path(L"empty"));
    {
        const HeldFile file(Path(L"a.txt"), GENERIC_READ, FILE_SHARE_READ);
        const HeldFile inner(Path(L"folder\\b.txt"), GENERIC_READ, FILE_SHARE_READ);
        const HeldFile other(Path(L"empty\\c.txt"), GENERIC_READ, FILE_SHARE_READ);
        files.Delete();
    }
    Sleep(50);  // the clock of the file system moves on
    fs::remove(Path(L"a.txt"));
    MakeFile(L"a.txt", "mine");
    MakeFile(L"folder\\mine.txt", "mine");
    fs::remove(Path(L"empty\\c.txt"));
    files.Delete();
    EXPECT_EQ(
        folder_.List(),
        (Listing{
            {L"a.txt", "mine"}, {L"folder", "folder"}, {L"folder\\b.txt", "scratch"}, {L"folder\\mine.txt", "mine"}}));
}

TEST_F(OutlookScratchFiles, WhatIsForgottenStays) {
    MakeFile(L"a.txt", "mine");
    ScratchFiles files;
    files.AddFile(Path(L"a.txt"));
    files.Forget();
    files.Delete();
    EXPECT_EQ(folder_.List(), (Listing{{L"a.txt", "mine"}}));
}

TEST_F(OutlookScratchFiles, FolderThatIsThereAlreadyIsNeitherMadeNorDeleted) {
    MakeFolder(L"mine");
    MakeFile(L"mine\\a.txt", "mine");
    MakeFile(L"file", "mine too");
    const Listing before = folder_.List();
    {
        ScratchFiles files;
        EXPECT_FALSE(files.MakeFolder(Path(L"mine")));
        EXPECT_FALSE(files.MakeFolder(Path(L"file")));
        EXPECT_FALSE(files.MakeFolder(Path(L"missing\\folder")));
        EXPECT_TRUE(files.MakeFolder(Path(L"new")));
        EXPECT_TRUE(fs::is_directory(Path(L"new")));
    }
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(OutlookScratchFiles, LinkIsAReparsePointThatLeadsElsewhereNotAPlaceholderOfACloudFolder) {
    constexpr DWORD reparse = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    constexpr DWORD cloud = 0x9000001A, cloudF = 0x9000F01A, deduplicated = 0x80000013, appLink = 0x8000001B;
    for (const DWORD tag : {DWORD{IO_REPARSE_TAG_SYMLINK}, DWORD{IO_REPARSE_TAG_MOUNT_POINT}}) {
        EXPECT_TRUE(IsLink(reparse, tag)) << tag;
        EXPECT_FALSE(IsLink(FILE_ATTRIBUTE_DIRECTORY, tag)) << "a search's field means nothing there";
    }
    for (const DWORD tag : {cloud, cloudF, deduplicated, appLink}) EXPECT_FALSE(IsLink(reparse, tag)) << tag;
    EXPECT_TRUE(IsLink(reparse, 0)) << "one that does not say what it is, is not followed";
}

TEST_F(OutlookScratchFiles, SavedDocumentGoesWithTheFilesFolderAndAllThatIsInIt) {
    MakeFile(L"Hello.doc", "document");
    MakeFolder(L"Hello.files\\a\\b\\c");
    MakeFolder(L"Hello.files\\empty");
    for (const wchar_t* name : {L"Hello.files\\1.png", L"Hello.files\\a\\2.png", L"Hello.files\\a\\b\\c\\3.png"}) {
        MakeFile(name, "picture");
    }
    SetFileAttributesW(Path(L"Hello.files\\1.png").c_str(), FILE_ATTRIBUTE_READONLY);
    SetFileAttributesW(Path(L"Hello.files\\a\\2.png").c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    SetFileAttributesW(Path(L"Hello.doc").c_str(), FILE_ATTRIBUTE_READONLY);
    MakeFolder(L"Hello.filesystem");
    MakeFile(L"Hello.files.txt", "mine");
    RemoveSavedDocument(Path(L"Hello.doc"));
    EXPECT_EQ(folder_.List(), (Listing{{L"Hello.filesystem", "folder"}, {L"Hello.files.txt", "mine"}}));
}

TEST_F(OutlookScratchFiles, FilesFolderIsNamedAfterThePathWithoutItsLastExtension) {
    MakeFile(L"v1.2.doc", "document");
    MakeFolder(L"v1.2.files");
    MakeFolder(L"v1.files");
    RemoveSavedDocument(Path(L"v1.2.doc"));
    EXPECT_EQ(folder_.List(), (Listing{{L"v1.files", "folder"}}));
}

TEST_F(OutlookScratchFiles, FilesFolderGoesAlsoWithoutADocument) {
    MakeFolder(L"Hello.files\\a");
    RemoveSavedDocument(Path(L"Hello.doc"));
    EXPECT_EQ(folder_.List(), Listing{});
    RemoveSavedDocument(Path(L"Hello.doc"));
}

TEST_F(OutlookScratchFiles, LinksInTheFilesFolderAreNotFollowed) {
    MakeFolder(L"mine\\inner");
    MakeFile(L"mine\\inner\\precious.txt", "mine");
    const Listing before = folder_.List();
    MakeFile(L"Hello.doc", "document");
    MakeFolder(L"Hello.files\\a");
    MakeFile(L"Hello.files\\a\\picture.png", "picture");
    {
        const FolderLink link(Path(L"Hello.files\\link"), Path(L"mine"));
        const FolderLink inner(Path(L"Hello.files\\a\\link"), Path(L"mine\\inner"));
        ASSERT_EQ(ReadFileText(Path(L"Hello.files\\link\\inner\\precious.txt")), "mine");
        ASSERT_TRUE(GetFileAttributesW(Path(L"Hello.files\\link").c_str()) & FILE_ATTRIBUTE_REPARSE_POINT);
        RemoveSavedDocument(Path(L"Hello.doc"));
        EXPECT_EQ(ReadFileText(Path(L"mine\\inner\\precious.txt")), "mine");
        EXPECT_FALSE(fs::exists(Path(L"Hello.files\\a\\picture.png")));
    }
    RemoveSavedDocument(Path(L"Hello.doc"));
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(OutlookScratchFiles, FilesFolderThatIsALinkIsNotFollowed) {
    MakeFolder(L"mine");
    MakeFile(L"mine\\precious.txt", "mine");
    MakeFile(L"Hello.doc", "document");
    const FolderLink link(Path(L"Hello.files"), Path(L"mine"));
    ASSERT_TRUE(GetFileAttributesW(Path(L"Hello.files").c_str()) & FILE_ATTRIBUTE_REPARSE_POINT);
    RemoveSavedDocument(Path(L"Hello.doc"));
    EXPECT_EQ(ReadFileText(Path(L"mine\\precious.txt")), "mine");
    EXPECT_FALSE(fs::exists(Path(L"Hello.doc")));
}

TEST_F(OutlookScratchFiles, FilesFolderInUseKeepsWhatIsInUseOnly) {
    MakeFolder(L"Hello.files\\a");
    MakeFile(L"Hello.files\\1.png", "picture");
    MakeFile(L"Hello.files\\a\\2.png", "picture");
    {
        const HeldFile held(Path(L"Hello.files\\1.png"), GENERIC_READ, FILE_SHARE_READ);
        RemoveSavedDocument(Path(L"Hello.doc"));
        EXPECT_EQ(folder_.List(), (Listing{{L"Hello.files", "folder"}, {L"Hello.files\\1.png", "picture"}}));
    }
    RemoveSavedDocument(Path(L"Hello.doc"));
    EXPECT_EQ(folder_.List(), Listing{});
}
