// Empty portfolios, and portfolios that are filled.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "engine/Attach.h"
#include "engine/Portfolio.h"
#include "tests/pdf/PdfFiles.h"

using namespace zavo::pdf;

TEST(Portfolio, IsAPdfWithOnePageAndNoFiles) {
    const TestFolder folder;
    const auto pdf = folder.Path("box.pdf");
    WriteEmptyPortfolio(pdf);
    ExpectSound(pdf);
    EXPECT_NE(Shell("pdfinfo " + Quoted(pdf)).output.find("Pages:           1\n"), std::string::npos);
    EXPECT_NE(Shell("pdftotext " + Quoted(pdf) + " -").output.find("This document is a collection of files."),
              std::string::npos);
    EXPECT_TRUE(AttachmentsByPoppler(pdf).empty());
    const auto document = Document::Open(pdf, "");
    EXPECT_TRUE(document->IsPlain());
    EXPECT_TRUE(document->ResolveDict(document->Catalog().Find("Collection")).Has("Folders"));
}

TEST(Portfolio, TakesFilesInItsRootFolder) {
    const TestFolder folder;
    const auto pdf = folder.Path("box.pdf");
    WriteEmptyPortfolio(pdf);
    const std::string old = ReadBytes(pdf);
    EditableDocument document(pdf, "");
    Attachment& attachment = document.Add("mail.pdf", "");
    attachment.SetContent("abc");
    EXPECT_TRUE(document.FileInFolder(attachment, "/"));
    document.Save(pdf);
    ExpectSound(pdf);
    EXPECT_EQ(AttachmentKeys(pdf), std::vector<std::string>{"<0>mail.pdf"});
    EXPECT_EQ(AttachmentsByPoppler(pdf), (Files{{"mail.pdf", "abc"}}));
    EXPECT_TRUE(ReadBytes(pdf).starts_with(old));
    EXPECT_EQ(ReadBytes(pdf).find("/Catalog", old.size()), std::string::npos);  // only the tree changed
}

TEST(Portfolio, OverwritesNothing) {
    const TestFolder folder;
    const auto file = folder.MakeFile("box.pdf", "mine");
    EXPECT_THROW(WriteEmptyPortfolio(file), FileError);
    EXPECT_EQ(ReadBytes(file), "mine");
    EXPECT_THROW(WriteEmptyPortfolio(folder.Path("none") / "box.pdf"), FileError);
    EXPECT_EQ(folder.Names(), std::set<std::string>{"box.pdf"});
    std::filesystem::create_symlink("none", folder.Path("link"));
    EXPECT_THROW(WriteEmptyPortfolio(folder.Path("link")), FileError);
    EXPECT_EQ(folder.Names(), (std::set<std::string>{"box.pdf", "link"}));
}
