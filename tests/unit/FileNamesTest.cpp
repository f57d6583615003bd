// Working folders among the real folders of this user, and which texts can be the name of a file.
#include "src/outlook/FileNames.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <filesystem>

#include "src/base/ControlIds.h"
#include "standins/common/Text.h"
#include "tests/support/DocumentsFolder.h"
#include "tests/support/Files.h"

namespace {

namespace fs = std::filesystem;

constexpr wchar_t probe[] = L"zavo test folder";

class OutlookFolders : public testing::Test {
protected:
    OutlookFolders() { RemoveProbes(); }
    ~OutlookFolders() override { RemoveProbes(); }

    static void RemoveProbes() {
        fs::remove_all(DocumentsPath(probe));
        fs::remove_all(TempPath(probe));
    }
    static std::wstring TempPath(const std::wstring& name) { return (fs::temp_directory_path() / name).wstring(); }

    const OutlookPdfs root_;
};

}  // namespace

TEST_F(OutlookFolders, DocumentsSubfolderIsMade) {
    EXPECT_EQ(GetDocumentsSubfolder(probe), DocumentsPath(probe));
    EXPECT_TRUE(fs::is_directory(DocumentsPath(probe)));
    EXPECT_EQ(GetDocumentsSubfolder(probe), DocumentsPath(probe)) << "that is there already";
}

TEST_F(OutlookFolders, TempSubfolderIsMade) {
    EXPECT_EQ(GetTempSubfolder(probe), TempPath(probe));
    EXPECT_TRUE(fs::is_directory(TempPath(probe)));
    EXPECT_EQ(GetTempSubfolder(probe), TempPath(probe)) << "that is there already";
}

TEST_F(OutlookFolders, NoNameIsTheFolderItself) {
    EXPECT_EQ(GetDocumentsSubfolder(L""), DocumentsPath());
    EXPECT_EQ(GetTempSubfolder(L""), fs::temp_directory_path().wstring());
}

TEST_F(OutlookFolders, OneLevelIsMadeOnly) {
    const std::wstring nested = std::wstring(probe) + L"\\inner";
    EXPECT_EQ(GetDocumentsSubfolder(nested), DocumentsPath(nested));
    EXPECT_FALSE(fs::exists(DocumentsPath(probe)));
    EXPECT_EQ(GetTempSubfolder(nested), TempPath(nested));
    EXPECT_FALSE(fs::exists(TempPath(probe)));
}

TEST_F(OutlookFolders, OverlongNameGivesNothing) {
    EXPECT_EQ(GetDocumentsSubfolder(std::wstring(260, L'x')), L"");
    EXPECT_EQ(GetTempSubfolder(std::wstring(260, L'x')), L"");
    EXPECT_EQ(GetDocumentsOutputPath(L"a.docx", std::wstring(260, L'x')), L"");
    EXPECT_EQ(GetTempOutputPath(std::wstring(260, L'x'), L""), L"");
}

TEST_F(OutlookFolders, OpenAndCreateButtonsHaveAWorkingFolder) {
    const struct {
        const wchar_t* id;
        const wchar_t* subfolder;
    } rows[] = {
        {L"Button_ID_OpenFromMail", L"\\Open"},          {L"Button_ID_OpenFromFolder", L"\\Open"},
        {L"Button_ID_CreateByMail", L"\\Create"},        {L"Button_ID_CreateByFolder", L"\\Create"},
        {L"Button_ID_CreateMergeByFolder", L"\\Create"}, {L"Button_ID_CreatePortfolioByMail", L"\\Create"},
    };
    for (const auto& row : rows) {
        fs::remove_all(root_.Path());
        EXPECT_EQ(GetOutlookWorkingFolder(row.id), DocumentsPath(L"ZAVO Outlook PDFs") + row.subfolder) << row.id;
        EXPECT_TRUE(fs::is_directory(root_.Path())) << "the root is made";
        EXPECT_TRUE(fs::is_empty(root_.Path())) << "the subfolder is not";
    }
}

TEST_F(OutlookFolders, OtherControlsHaveNoneAndNothingIsMade) {
    for (const wchar_t* id : {BUTTON_ID_CREATE, BUTTON_ID_CREATE_AND_SHARE, Menu_ID_Open, Menu_ID_Create, L"",
                              L"button_id_openfrommail", L"BUTTON_ID_CREATEBYMAIL", L"Button_ID_OpenFromMail ",
                              L"Button_ID_OpenFromMai", L"Button_ID_CreateByMail2"}) {
        EXPECT_EQ(GetOutlookWorkingFolder(id), L"") << id;
        EXPECT_FALSE(fs::exists(root_.Path())) << id;
    }
}

TEST_F(OutlookFolders, ThereIsNoWorkingFolderWithoutADocumentsFolder) {
    const MovedDocuments documents(L"Q:\\nowhere");
    EXPECT_EQ(GetDocumentsSubfolder(probe), L"");
    EXPECT_EQ(GetDocumentsSubfolder(L""), L"");
    EXPECT_EQ(GetDocumentsOutputPath(L"a.docx", L""), L"");
    EXPECT_EQ(GetOutlookWorkingFolder(Button_ID_OpenFromMail), L"");
}

TEST_F(OutlookFolders, OutputPathIsAFreePdfOfTheSourcesBaseName) {
    fs::create_directories(DocumentsPath(probe));
    fs::create_directories(TempPath(probe));
    const struct {
        const wchar_t* source;
        const wchar_t* name;
    } rows[] = {
        {L"C:\\Work\\Plan.final.docx", L"Plan.final.pdf"},
        {L"Plan", L"Plan.pdf"},
        {L"C:\\Work.old\\Plan", L"Plan.pdf"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(GetDocumentsOutputPath(row.source, probe), DocumentsPath(probe) + L"\\" + row.name);
        EXPECT_EQ(GetTempOutputPath(row.source, probe), TempPath(probe) + L"\\" + row.name);
    }
    WriteFileText(DocumentsPath(probe) + L"\\Plan.pdf", "x");
    WriteFileText(TempPath(probe) + L"\\Plan.pdf", "x");
    EXPECT_EQ(GetDocumentsOutputPath(L"Plan.docx", probe), DocumentsPath(probe) + L"\\Plan(1).pdf");
    EXPECT_EQ(GetTempOutputPath(L"Plan.docx", probe), TempPath(probe) + L"\\Plan(1).pdf");
    // The folder is made on the way.
    fs::remove_all(TempPath(probe));
    EXPECT_EQ(GetTempOutputPath(L"Plan.docx", probe), TempPath(probe) + L"\\Plan.pdf");
    EXPECT_TRUE(fs::is_directory(TempPath(probe)));
}

TEST(OutlookFileNames, SaveAsTypeHasItsExtension) {
    const struct {
        long type;
        const wchar_t* extension;
    } rows[] = {
        {0, L".txt"}, {1, L".rtf"}, {2, L".oft"}, {3, L".msg"},    {4, L".doc"},  {5, L".html"}, {6, L".vcf"},
        {7, L".vcs"}, {8, L".ics"}, {9, L".msg"}, {10, L".mhtml"}, {11, L".msg"}, {-1, L".msg"}, {1000, L".msg"},
    };
    for (const auto& row : rows) EXPECT_EQ(SaveAsExtension(row.type), row.extension) << row.type;
}

TEST(OutlookFileNames, ForbiddenCharactersAreWindowsOwn) {
    for (unsigned c = 0; c < 0x10000; ++c) {
        const auto unit = static_cast<wchar_t>(c);
        const bool forbidden = c < 32 || std::wstring_view(L"<>:\"/\\|?*").find(unit) != std::wstring_view::npos;
        EXPECT_EQ(IsPlainFileName(std::wstring(L"a") + unit + L"b.doc"), !forbidden) << c;
        EXPECT_EQ(IsPlainWholeFileName(std::wstring(L"a") + unit + L"b.doc"), !forbidden) << c;
        EXPECT_EQ(WithoutForbiddenCharacters(std::wstring(L"a") + unit + L"b"),
                  forbidden ? std::wstring(L"a-b") : std::wstring(L"a") + unit + L"b")
            << c;
    }
    EXPECT_EQ(WithoutForbiddenCharacters(L"??_1.pdf"), L"--_1.pdf");
}

TEST(OutlookFileNames, NamesOfDevicesAreNone) {
    for (const wchar_t* name :
         {L"CON",         L"con",    L"CoN.doc",     L"PRN.doc",  L"AUX.pdf",   L"NUL",           L"nul.tar.gz",
          L"COM1.doc",    L"com9",   L"COM0.doc",    L"LPT1",     L"lpt9.pdf",  L"COM\x00B9.doc", L"LPT\x00B2",
          L"com\x00B3.x", L"CONIN$", L"conout$.doc", L"CON .doc", L"NUL  .txt", L"COM1 .doc",     L"AUX..doc"}) {
        EXPECT_FALSE(IsPlainFileName(name)) << Utf8(name);
        EXPECT_FALSE(IsPlainWholeFileName(name)) << Utf8(name);
    }
    for (const wchar_t* name : {L"CONSOLE.doc", L"COM.doc", L"COM10.doc", L"LPTX.doc", L"xCON.doc", L"a.CON",
                                L"CON1.doc", L"NULL.pdf", L"COM\x2460.doc", L" CON.doc", L"CON$.doc"}) {
        EXPECT_TRUE(IsPlainFileName(name)) << Utf8(name);
        EXPECT_TRUE(IsPlainWholeFileName(name)) << Utf8(name);
    }
}

TEST(OutlookFileNames, NamesThatLookOddButArePlainAreTaken) {
    for (const wchar_t* name : {L".doc", L"...doc", L" .doc", L"a .doc", L"a..doc", L"~",
                                L"\x202E"
                                L"fdp.doc",
                                L"\xD83D\xDE00.doc", L"\xD800.doc", L"\xDC00", L"\x65E5\x672C.doc", L"%TEMP%.doc",
                                L"-.doc", L"'.doc", L"a;b.doc", L"\x7F.doc", L"\x00A0.doc"}) {
        EXPECT_TRUE(IsPlainFileName(name)) << Utf8(name);
        EXPECT_TRUE(IsPlainWholeFileName(name)) << Utf8(name);
    }
}

TEST(OutlookFileNames, WholeNameIsNeitherEmptyNorAFolderNorEndsInABlankOrDot) {
    for (const wchar_t* name : {L"", L".", L"..", L"...", L" ", L"a.", L"a ", L"a.pdf ", L"a.pdf.", L"a. ."}) {
        EXPECT_FALSE(IsPlainWholeFileName(name)) << '"' << Utf8(name) << '"';
    }
    for (const wchar_t* name : {L"a", L" a", L".a", L"..a", L"a.b.c"}) EXPECT_TRUE(IsPlainWholeFileName(name)) << name;
}

TEST(OutlookFileNames, PathInAFolderIsThatOfAPlainAndShortNameOnly) {
    EXPECT_EQ(PathInFolder(L"C:\\a", L"b.pdf"), L"C:\\a\\b.pdf");
    EXPECT_EQ(PathInFolder(L"C:\\a\\", L"b.pdf"), L"C:\\a\\\\b.pdf");
    for (const wchar_t* name : {L"..\\b.pdf", L"a/b.pdf", L"CON.pdf", L"x:y.pdf", L"b?.pdf"}) {
        EXPECT_EQ(PathInFolder(L"C:\\a", name), L"") << Utf8(name);
    }
    EXPECT_EQ(PathInFolder(L"C:\\a", std::wstring(254, L'n')), L"C:\\a\\" + std::wstring(254, L'n'));
    EXPECT_EQ(PathInFolder(L"C:\\a", std::wstring(255, L'n')), L"");
}

TEST(OutlookFileNames, PathHasAtMostTwoHundredFiftyNineCharacters) {
    EXPECT_TRUE(IsShortEnough(std::wstring(259, L'x')));
    EXPECT_FALSE(IsShortEnough(std::wstring(260, L'x')));
}
