// A mail's files in a real folder, and the user's own, which have to make room and come back.
#include "src/outlook/WorkFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <new>
#include <optional>

#include "src/base/Handles.h"
#include "tests/support/Files.h"
#include "tests/support/Sharing.h"

namespace {

namespace fs = std::filesystem;
using Listing = std::map<std::wstring, std::string>;

class OutlookWorkFiles : public testing::Test {
protected:
    std::wstring Path(const std::wstring& name) const { return folder_.Path(name); }
    void MakeFile(const std::wstring& name, const std::string& content) const {
        EXPECT_TRUE(WriteFileText(Path(name), content));
    }
    void MakeFolder(const std::wstring& name) const { fs::create_directories(Path(name)); }

    // The short name that the file system has for the file.
    std::wstring ShortPath(const std::wstring& name) const {
        wchar_t path[MAX_PATH] = L"";
        GetShortPathNameW(Path(name).c_str(), path, MAX_PATH);
        return folder_.Path(fs::path(path).filename().wstring());
    }

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

TEST_F(OutlookWorkFiles, AreDeletedInTheEnd) {
    WorkFiles files;
    EXPECT_TRUE(files.AddDocument(Path(L"Hello.doc")));
    EXPECT_TRUE(files.AddAttachment(Path(L"a.txt")));
    EXPECT_TRUE(files.AddAttachment(Path(L"b.txt")));
    MakeFile(L"Hello.doc", "document");
    MakeFile(L"a.txt", "a");
    MakeFile(L"b.txt", "b");
    MakeFile(L"other.txt", "other");
    files.Finish();
    EXPECT_EQ(folder_.List(), (Listing{{L"other.txt", "other"}}));
}

TEST_F(OutlookWorkFiles, AreDeletedWhenTheirOwnerGoesAlsoByAnException) {
    MakeFile(L"Hello.doc", "mine");
    const Listing before = folder_.List();
    try {
        WorkFiles files;
        files.AddDocument(Path(L"Hello.doc"));
        files.AddAttachment(Path(L"a.txt"));
        MakeFile(L"Hello.doc", "document");
        MakeFile(L"a.txt", "a");
        throw std::bad_alloc();
    } catch (const std::bad_alloc&) {
        EXPECT_EQ(folder_.List(), before);
    }
}

TEST_F(OutlookWorkFiles, FileThatWasThereIsSetAsideAndPutBack) {
    MakeFile(L"Hello.doc", "my document");
    MakeFile(L"a.txt", "my text");
    const Listing before = folder_.List();
    WorkFiles files;
    const std::wstring& mine = files.Follow(Path(L"Hello.doc"));
    EXPECT_TRUE(files.AddDocument(Path(L"Hello.doc")));
    EXPECT_TRUE(files.AddAttachment(Path(L"a.txt")));
    EXPECT_EQ(folder_.List(), (Listing{{L"Hello(1).doc", "my document"}, {L"a(1).txt", "my text"}}));
    EXPECT_EQ(mine, Path(L"Hello(1).doc"));
    MakeFile(L"Hello.doc", "document");
    MakeFile(L"a.txt", "a");
    files.Finish();
    EXPECT_EQ(folder_.List(), before);
    EXPECT_EQ(mine, Path(L"Hello.doc"));
    files.Finish();
    EXPECT_EQ(folder_.List(), before) << "once more changes nothing";
}

TEST_F(OutlookWorkFiles, FileThatWasSetAsideComesBackWhereNothingWasWritten) {
    MakeFile(L"Hello.doc", "mine");
    const Listing before = folder_.List();
    {
        WorkFiles files;
        EXPECT_TRUE(files.AddDocument(Path(L"Hello.doc")));
        EXPECT_NE(folder_.List(), before);
    }
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(OutlookWorkFiles, NameForTheTimeAsideIsAFreeOne) {
    MakeFile(L"a.txt", "mine");
    MakeFile(L"a(1).txt", "mine too");
    MakeFolder(L"a(2).txt");
    const Listing before = folder_.List();
    WorkFiles files;
    EXPECT_TRUE(files.AddAttachment(Path(L"a.txt")));
    EXPECT_EQ(ReadFileText(Path(L"a(3).txt")), "mine");
    files.Finish();
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(OutlookWorkFiles, NameThatIsClearedAwayInTheEndIsNoFreeOneAlsoWhenNothingHasIt) {
    MakeFile(L"a.doc", "mine");
    const Listing before = folder_.List();
    WorkFiles files;
    EXPECT_TRUE(files.AddDocument(Path(L"a(1).doc")));
    EXPECT_TRUE(files.AddAttachment(Path(L"a(2).doc")));
    EXPECT_TRUE(files.AddAttachment(Path(L"a.doc")));
    EXPECT_EQ(folder_.List(), (Listing{{L"a(3).doc", "mine"}}));
    files.Finish();
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(OutlookWorkFiles, FileThatIsInTheWayTwiceMovesOnAndComesBackToItsOwnName) {
    MakeFile(L"a.txt", "mine");
    const Listing before = folder_.List();
    WorkFiles files;
    const std::wstring& mine = files.Follow(Path(L"A.txt"));
    EXPECT_TRUE(files.AddAttachment(Path(L"a.txt")));
    EXPECT_EQ(mine, Path(L"a(1).txt"));
    MakeFile(L"a.txt", "attachment");
    // A second attachment wants the name that it was given for the time aside.
    EXPECT_TRUE(files.AddAttachment(Path(L"a(1).txt")));
    MakeFile(L"a(1).txt", "other attachment");
    EXPECT_EQ(mine, Path(L"a(1)(1).txt"));
    EXPECT_EQ(ReadFileText(mine), "mine");
    files.Finish();
    EXPECT_EQ(folder_.List(), before);
    EXPECT_EQ(mine, Path(L"a.txt"));
}

TEST_F(OutlookWorkFiles, TwoFilesInTheWayOfEachOtherBothComeBack) {
    MakeFile(L"a.txt", "mine");
    MakeFile(L"a(1).txt", "mine too");
    const Listing before = folder_.List();
    WorkFiles files;
    for (const wchar_t* name : {L"a.txt", L"a(1).txt", L"a(2).txt", L"A.TXT", L"a(1)(1).txt"}) {
        EXPECT_TRUE(files.AddAttachment(Path(name)));
        MakeFile(name, "attachment");
    }
    files.Finish();
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(OutlookWorkFiles, FileThatIsAsideInThePlaceOfAnotherMovesFirst) {
    MakeFile(L"a.txt", "mine");
    MakeFile(L"a(1).txt", "mine too");
    const Listing before = folder_.List();
    for (const bool otherFirst : {true, false}) {
        WorkFiles files;
        // Nothing is written, so the places stay free.
        EXPECT_TRUE(files.MakeRoom(Path(otherFirst ? L"a(1).txt" : L"a.txt")));
        EXPECT_TRUE(files.MakeRoom(Path(otherFirst ? L"a.txt" : L"a(1).txt")));
        files.Finish();
        EXPECT_EQ(folder_.List(), before);
    }
}

TEST_F(OutlookWorkFiles, OneOfTheseIsOverwrittenByTheNextOfItsName) {
    WorkFiles files;
    EXPECT_TRUE(files.AddDocument(Path(L"Hello.doc")));
    MakeFile(L"Hello.doc", "document");
    EXPECT_TRUE(files.AddAttachment(Path(L"hello.DOC")));
    EXPECT_TRUE(files.AddAttachment(Path(L"a.txt")));
    MakeFile(L"a.txt", "first");
    EXPECT_TRUE(files.AddAttachment(Path(L"A.txt")));
    EXPECT_EQ(folder_.List(), (Listing{{L"Hello.doc", "document"}, {L"a.txt", "first"}}));
    files.Finish();
    EXPECT_EQ(folder_.List(), Listing{});
}

TEST_F(OutlookWorkFiles, FileIsKnownWhateverItsCapitals) {
    MakeFile(L"Report.PDF", "mine");
    WorkFiles files;
    EXPECT_TRUE(files.AddAttachment(Path(L"REPORT.pdf")));
    EXPECT_EQ(folder_.List(), (Listing{{L"Report(1).PDF", "mine"}}));
    MakeFile(L"REPORT.pdf", "attachment");
    files.Finish();
    EXPECT_EQ(folder_.List(), (Listing{{L"Report.PDF", "mine"}}));
}

TEST_F(OutlookWorkFiles, FileThatIsMeantByItsShortNameIsSetAsideToo) {
    MakeFile(L"A rather long name.txt", "mine");
    const std::wstring shortPath = ShortPath(L"A rather long name.txt");
    ASSERT_NE(shortPath, Path(L"A rather long name.txt"));
    ASSERT_EQ(ReadFileText(shortPath), "mine");
    const Listing before = folder_.List();
    WorkFiles files;
    EXPECT_TRUE(files.AddAttachment(shortPath));
    EXPECT_EQ(folder_.List(), (Listing{{L"A rather long name(1).txt", "mine"}}));
    EXPECT_TRUE(WriteFileText(shortPath, "attachment"));
    files.Finish();
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(OutlookWorkFiles, OneOfTheseThatIsMeantByItsShortNameIsNotSetAside) {
    WorkFiles files;
    EXPECT_TRUE(files.AddAttachment(Path(L"A rather long name.txt")));
    MakeFile(L"A rather long name.txt", "first");
    const std::wstring shortPath = ShortPath(L"A rather long name.txt");
    EXPECT_TRUE(files.AddAttachment(shortPath));
    EXPECT_TRUE(WriteFileText(shortPath, "second"));
    EXPECT_EQ(folder_.List(), (Listing{{L"A rather long name.txt", "second"}}));
    files.Finish();
    EXPECT_EQ(folder_.List(), Listing{});
}

TEST_F(OutlookWorkFiles, FolderOfThatNameStays) {
    MakeFolder(L"Hello.doc\\inner");
    MakeFolder(L"a.txt");
    const Listing before = folder_.List();
    WorkFiles files;
    EXPECT_FALSE(files.MakeRoom(Path(L"a.txt")));
    EXPECT_FALSE(files.AddDocument(Path(L"Hello.doc")));
    EXPECT_FALSE(files.AddAttachment(Path(L"a.txt")));
    EXPECT_EQ(folder_.List(), before);
    files.Finish();
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(OutlookWorkFiles, FilesFolderThatWasThereIsSetAsideAndPutBackWhole) {
    MakeFolder(L"Hello.files\\inner");
    MakeFile(L"Hello.files\\inner\\picture.png", "mine");
    const Listing before = folder_.List();
    WorkFiles files;
    EXPECT_TRUE(files.AddDocument(Path(L"Hello.doc")));
    EXPECT_FALSE(fs::exists(Path(L"Hello.files")));
    MakeFile(L"Hello.doc", "document");
    MakeFolder(L"Hello.files");
    MakeFile(L"Hello.files\\picture.png", "Outlook's");
    files.Finish();
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(OutlookWorkFiles, FileWithTheNameOfTheFilesFolderStays) {
    MakeFile(L"Hello.files", "mine");
    WorkFiles files;
    EXPECT_TRUE(files.AddDocument(Path(L"Hello.doc")));
    files.Finish();
    EXPECT_EQ(folder_.List(), (Listing{{L"Hello.files", "mine"}}));
}

TEST_F(OutlookWorkFiles, ReadOnlyFileKeepsItsAttributes) {
    MakeFile(L"a.txt", "mine");
    SetFileAttributesW(Path(L"a.txt").c_str(), FILE_ATTRIBUTE_READONLY);
    WorkFiles files;
    EXPECT_TRUE(files.AddAttachment(Path(L"a.txt")));
    MakeFile(L"a.txt", "attachment");
    files.Finish();
    EXPECT_EQ(ReadFileText(Path(L"a.txt")), "mine");
    EXPECT_TRUE(GetFileAttributesW(Path(L"a.txt").c_str()) & FILE_ATTRIBUTE_READONLY);
    SetFileAttributesW(Path(L"a.txt").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(OutlookWorkFiles, WhatCannotMakeRoomIsNotWrittenOver) {
    MakeFile(L"a.txt", "mine");
    MakeFile(L"Hello.doc", "mine too");
    const Listing before = folder_.List();
    {
        WorkFiles files;
        const HeldFile text(Path(L"a.txt"), GENERIC_READ, FILE_SHARE_READ);
        const HeldFile document(Path(L"Hello.doc"), GENERIC_READ, FILE_SHARE_READ);
        EXPECT_FALSE(files.MakeRoom(Path(L"a.txt")));
        EXPECT_FALSE(files.AddAttachment(Path(L"a.txt")));
        EXPECT_FALSE(files.AddDocument(Path(L"Hello.doc")));
        EXPECT_EQ(files.Follow(Path(L"a.txt")), Path(L"a.txt"));
    }
    EXPECT_EQ(folder_.List(), before) << "nor deleted as if it were one of these";
}

TEST_F(OutlookWorkFiles, DocumentComesBackWhenItsFilesFolderCannotMakeRoom) {
    MakeFolder(L"Hello.files");
    MakeFile(L"Hello.files\\picture.png", "mine");
    MakeFile(L"Hello.doc", "mine too");
    const Listing before = folder_.List();
    {
        WorkFiles files;
        const HeldFile folder(Path(L"Hello.files"), GENERIC_READ, FILE_SHARE_READ, FILE_FLAG_BACKUP_SEMANTICS);
        ASSERT_NE(folder.Get(), nullptr);
        EXPECT_FALSE(files.AddDocument(Path(L"Hello.doc")));
    }
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(OutlookWorkFiles, PathWithoutRoomForANumberIsNotWrittenOver) {
    const std::wstring name = std::wstring(259 - folder_.Path().size() - 1 - 4, L'n') + L".txt";
    ASSERT_EQ(Path(name).size(), 259U);
    MakeFile(name, "mine");
    {
        WorkFiles files;
        EXPECT_FALSE(files.AddAttachment(Path(name)));
    }
    EXPECT_EQ(folder_.List(), (Listing{{name, "mine"}}));
}

TEST_F(OutlookWorkFiles, FileWhosePlaceIsTakenStaysUnderItsOtherName) {
    MakeFile(L"a.txt", "mine");
    WorkFiles files;
    const std::wstring& mine = files.Follow(Path(L"a.txt"));
    EXPECT_TRUE(files.MakeRoom(Path(L"a.txt")));
    MakeFile(L"a.txt", "somebody's");
    files.Finish();
    EXPECT_EQ(folder_.List(), (Listing{{L"a.txt", "somebody's"}, {L"a(1).txt", "mine"}}));
    EXPECT_EQ(mine, Path(L"a(1).txt"));
    // And comes back when there is room again.
    fs::remove(Path(L"a.txt"));
    files.Finish();
    EXPECT_EQ(folder_.List(), (Listing{{L"a.txt", "mine"}}));
    EXPECT_EQ(mine, Path(L"a.txt"));
}

TEST_F(OutlookWorkFiles, FileThatIsFollowedIsTheOneThatIsThereNow) {
    MakeFile(L"a.txt", "mine");
    const Listing before = folder_.List();
    WorkFiles files;
    EXPECT_TRUE(files.MakeRoom(Path(L"a.txt")));
    const std::wstring& copy = files.Follow(Path(L"a.txt"));
    EXPECT_EQ(copy, Path(L"a.txt")) << "not mine, which has made room for it";
    MakeFile(L"a.txt", "copy");
    EXPECT_TRUE(files.AddAttachment(Path(L"a.txt")));
    MakeFile(L"a.txt", "attachment");
    EXPECT_EQ(ReadFileText(copy), "copy");
    EXPECT_EQ(&files.Follow(copy), &copy);
    DeleteFileW(copy.c_str());
    files.Finish();
    EXPECT_EQ(folder_.List(), before);
}

TEST_F(OutlookWorkFiles, AttachmentThatWasNotWrittenIsForgotten) {
    WorkFiles files;
    EXPECT_TRUE(files.AddAttachment(Path(L"a.txt")));
    files.ForgetAttachment(Path(L"A.TXT"));
    MakeFile(L"a.txt", "somebody's");
    files.Finish();
    EXPECT_EQ(folder_.List(), (Listing{{L"a.txt", "somebody's"}}));
}

TEST_F(OutlookWorkFiles, MissingFolderNeedsNoRoom) {
    WorkFiles files;
    EXPECT_TRUE(files.MakeRoom(Path(L"missing\\a.txt")));
    EXPECT_TRUE(files.AddDocument(Path(L"missing\\Hello.doc")));
    EXPECT_TRUE(files.AddAttachment(Path(L"missing\\a.txt")));
    files.Finish();
    EXPECT_EQ(folder_.List(), Listing{});
}

TEST_F(OutlookWorkFiles, SavedDocumentGoesWithTheFilesFolderAndAllThatIsInIt) {
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

TEST_F(OutlookWorkFiles, FilesFolderIsNamedAfterThePathWithoutItsLastExtension) {
    MakeFile(L"v1.2.doc", "document");
    MakeFolder(L"v1.2.files");
    MakeFolder(L"v1.files");
    RemoveSavedDocument(Path(L"v1.2.doc"));
    EXPECT_EQ(folder_.List(), (Listing{{L"v1.files", "folder"}}));
}

TEST_F(OutlookWorkFiles, FilesFolderGoesAlsoWithoutADocument) {
    MakeFolder(L"Hello.files\\a");
    RemoveSavedDocument(Path(L"Hello.doc"));
    EXPECT_EQ(folder_.List(), Listing{});
    RemoveSavedDocument(Path(L"Hello.doc"));
}

TEST_F(OutlookWorkFiles, LinksInTheFilesFolderAreNotFollowed) {
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

TEST_F(OutlookWorkFiles, FilesFolderThatIsALinkIsNotFollowed) {
    MakeFolder(L"mine");
    MakeFile(L"mine\\precious.txt", "mine");
    MakeFile(L"Hello.doc", "document");
    const FolderLink link(Path(L"Hello.files"), Path(L"mine"));
    ASSERT_TRUE(GetFileAttributesW(Path(L"Hello.files").c_str()) & FILE_ATTRIBUTE_REPARSE_POINT);
    RemoveSavedDocument(Path(L"Hello.doc"));
    EXPECT_EQ(ReadFileText(Path(L"mine\\precious.txt")), "mine");
    EXPECT_FALSE(fs::exists(Path(L"Hello.doc")));
}

TEST_F(OutlookWorkFiles, FilesFolderInUseKeepsWhatIsInUseOnly) {
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
