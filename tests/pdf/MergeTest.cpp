// Merging: order, names, damage, and files that are made to harm. What a merge keeps of real documents is checked on a
// corpus of them.
#include "engine/Merge.h"

#include <gtest/gtest.h>

#include "engine/LargeStack.h"
#include "engine/ObjectCopier.h"
#include "engine/Trees.h"
#include "tests/pdf/PdfFiles.h"
#include "tests/pdf/SmallDisk.h"

namespace zavo::pdf {
namespace {

class Merge : public testing::Test {
protected:
    void Add(const std::string& bytes, const MergeOptions& options = {}) {
        const auto path = folder_.MakeFile("input " + std::to_string(++count_) + ".pdf", bytes);
        merger_.Add(Document::Open(path, ""), options);
    }
    void Add(const PdfMaker& maker) { Add(maker.Make()); }

    std::unique_ptr<Document> Save() {
        merger_.Save(Out());
        ExpectSound(Out());
        return Document::Open(Out(), "");
    }
    std::filesystem::path Out() const { return folder_.Path("out.pdf"); }

    // The titles of the bookmarks' top level, UTF-8.
    static std::vector<std::string> Titles(Document& document) {
        std::vector<std::string> titles;
        const Dict outlines = document.ResolveDict(document.Catalog().Find("Outlines"));
        for (std::string item(outlines.Find("First")); !item.empty();) {
            const Dict bookmark = document.ResolveDict(item);
            titles.push_back(TextToUtf8(DecodeString(document.Resolve(bookmark.Find("Title")))));
            item = std::string(bookmark.Find("Next"));
        }
        return titles;
    }
    static std::vector<std::string> FieldNames(Document& document) {
        std::vector<std::string> names;
        const Dict form = document.ResolveDict(document.Catalog().Find("AcroForm"));
        for (const std::string_view field : ArrayItems(document.Resolve(form.Find("Fields")))) {
            names.push_back(TextToUtf8(DecodeString(document.ResolveDict(field).Find("T"))));
        }
        return names;
    }
    static std::vector<std::string> TreeNames(Document& document, const char* category) {
        std::vector<std::string> names;
        const Dict trees = document.ResolveDict(document.Catalog().Find("Names"));
        VisitNameTree(document, trees.Find(category),
                      [&](std::string_view name, std::string_view) { names.push_back(DecodeString(name)); });
        return names;
    }

    TestFolder folder_;
    Merger merger_;
    int count_ = 0;
};

// A document with one bookmark, one field and a link to a named destination.
PdfMaker Rich(const std::string& name) {
    PdfMaker maker;
    maker.catalogMore =
        "/Outlines 4 0 R/AcroForm<</Fields[6 0 R]/DA(/F 0 Tf)>>/Names<</Dests<</Names[(top)[3 0 R/Fit]]>>>>";
    maker.more = {"<</First 5 0 R/Last 5 0 R/Count 1>>", "<</Title(" + name + ")/Parent 4 0 R/Dest(top)>>",
                  "<</FT/Tx/T(Name)/V(" + name + ")>>",
                  "<</Type/Annot/Subtype/Link/Rect[0 0 9 9]/A<</D(top)/S/GoTo>>>>",
                  "<</Type/Annot/Subtype/Link/Rect[0 0 9 9]/A<</S/GoToR/F(x.pdf)/D(top)>>>>"};
    return maker;
}

TEST_F(Merge, BookmarksOfAllInputsInOrderAndTheFilesNameWhereThereAreNone) {
    Add(Rich("one"));
    Add(PdfMaker());
    Add(PdfMaker().Make(), {true, true, "A title"});
    Add(Rich("four"));
    const auto document = Save();
    EXPECT_EQ(Titles(*document), (std::vector<std::string>{"one", "input 2", "A title", "four"}));
    const Dict outlines = document->ResolveDict(document->Catalog().Find("Outlines"));
    EXPECT_EQ(outlines.Find("Count"), "4");
    const Dict last = document->ResolveDict(outlines.Find("Last"));
    EXPECT_EQ(last.Find("Title"), "(four)");
    EXPECT_TRUE(last.Has("Prev"));
}

TEST_F(Merge, BookmarksThatGoInCirclesEnd) {
    PdfMaker maker;
    maker.catalogMore = "/Outlines 4 0 R";
    maker.more = {"<</First 5 0 R/Last 6 0 R/Count 2>>", "<</Title(a)/Parent 4 0 R/Next 6 0 R/Prev 6 0 R>>",
                  "<</Title(b)/Parent 4 0 R/Prev 5 0 R/Next 5 0 R>>"};
    Add(maker);
    Add(maker);
    const auto document = Save();
    EXPECT_EQ(Titles(*document), (std::vector<std::string>{"a", "b", "a", "b"}));
}

TEST_F(Merge, EqualNamesBecomeUnique) {
    for (int i = 0; i < 3; ++i) Add(Rich("x"));
    const auto document = Save();
    EXPECT_EQ(FieldNames(*document), (std::vector<std::string>{"Name", "Name+1", "Name+2"}));
    EXPECT_EQ(TreeNames(*document, "Dests"), (std::vector<std::string>{"top", "top#2", "top#3"}));
    std::string dests;
    const Dict outlines = document->ResolveDict(document->Catalog().Find("Outlines"));
    for (std::string item(outlines.Find("First")); !item.empty();) {
        const Dict bookmark = document->ResolveDict(item);
        dests += bookmark.Find("Dest");
        item = std::string(bookmark.Find("Next"));
    }
    EXPECT_EQ(dests, "(top)(top#2)(top#3)");
}

TEST_F(Merge, FieldsThatShareANameInTheirOwnInputGoOnSharingIt) {
    PdfMaker maker;
    maker.catalogMore = "/AcroForm<</Fields[4 0 R 5 0 R 6 0 R]>>";
    maker.more = {"<</FT/Tx/T(a)>>", "<</FT/Tx/T(a)>>", "<</FT/Tx/T(b)>>"};
    Add(maker);
    Add(maker);
    EXPECT_EQ(FieldNames(*Save()), (std::vector<std::string>{"a", "a", "b", "a+1", "a+1", "b+1"}));
}

TEST_F(Merge, NewFieldNameIsNoneThatTheInputHas) {
    PdfMaker maker;
    maker.catalogMore = "/AcroForm<</Fields[4 0 R 5 0 R]>>";
    maker.more = {"<</FT/Tx/T(a)>>", "<</FT/Tx/T(a+1)>>"};
    Add(maker);
    Add(maker);
    EXPECT_EQ(FieldNames(*Save()), (std::vector<std::string>{"a", "a+1", "a+2", "a+1+1"}));
}

TEST_F(Merge, ObjectNumbersMayBeginHigh) {
    std::string pdf = "%PDF-1.4\n";
    std::string table;
    const char* const objects[] = {"<</Type/Catalog/Pages 60001 0 R>>", "<</Type/Pages/Kids[60002 0 R]/Count 1>>",
                                   "<</Type/Page/Parent 60001 0 R/MediaBox[0 0 9 9]>>"};
    for (int i = 0; i < 3; ++i) {
        const std::string place = std::to_string(pdf.size());
        table += std::string(10 - place.size(), '0') + place + " 00000 n \n";
        pdf += std::to_string(60000 + i) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const std::string start = std::to_string(pdf.size());
    pdf += "xref\n0 1\n0000000000 65535 f \n60000 3\n" + table +
           "trailer\n<</Size 60003/Root 60000 0 R>>\nstartxref\n" + start + "\n%%EOF\n";
    Add(pdf);
    EXPECT_EQ(Titles(*Save()), std::vector<std::string>{"input 1"});
}

TEST_F(Merge, OnlyGoToActionsFollowARenamedDestination) {
    PdfMaker maker = Rich("x");
    maker.catalogMore += "/OpenAction<</S/GoTo/D(top)/Next<</D(top)/S/GoToR/F(y.pdf)>>>>/AF[7 0 R 8 0 R]";
    Add(Rich("first"));
    Add(maker);
    const auto document = Save();
    const std::vector<std::string_view> actions = ArrayItems(document->Resolve(document->Catalog().Find("AF")));
    ASSERT_EQ(actions.size(), 2u);
    EXPECT_EQ(document->ResolveDict(document->ResolveDict(actions[0]).Find("A")).Find("D"), "(top#2)");
    EXPECT_EQ(document->ResolveDict(document->ResolveDict(actions[1]).Find("A")).Find("D"), "(top)");
}

TEST_F(Merge, NameThatIsNoStringFindsItsDestinationToo) {
    PdfMaker maker;
    maker.catalogMore = "/Dests<</top[3 0 R/Fit]>>/AF[4 0 R]/Names<</Dests<</Names[(top)[3 0 R/FitB]]>>>>";
    maker.more = {"[<</Dest/top>><</Dest(top)>><</Dest/none>>]"};
    Add(maker);
    const auto document = Save();
    const std::vector<std::string_view> links = ArrayItems(document->Resolve(document->Catalog().Find("AF")));
    ASSERT_EQ(links.size(), 1u);
    EXPECT_EQ(document->Resolve(links[0]), "[<</Dest(top#2)>><</Dest(top)>><</Dest(none#0)>>]");
}

TEST_F(Merge, LinkThatLedNowhereLeadsToNoOtherInput) {
    PdfMaker maker;
    maker.catalogMore = "/AF[4 0 R]";
    maker.more = {"<</Dest(top)>>"};
    Add(maker);
    Add(Rich("has top"));
    const auto document = Save();
    const std::vector<std::string_view> links = ArrayItems(document->Resolve(document->Catalog().Find("AF")));
    EXPECT_EQ(document->ResolveDict(links.at(0)).Find("Dest"), "(top#0)");
}

TEST_F(Merge, TextsBehindReferencesAreRenamedToo) {
    PdfMaker maker;
    maker.catalogMore =
        "/AF[4 0 R]/Names<</Dests<</Names[(top)[3 0 R/Fit]]>>>>"
        "/AcroForm<</Fields[8 0 R]/DR<</Font<</F 9 0 R>>>>>>";
    maker.more = {"[<</Dest 5 0 R>><</D 5 0 R/S 6 0 R>><</D 5 0 R/S/GoToR>>]",
                  "(top)",
                  "/GoTo",
                  "(/F 0 Tf)",
                  "<</FT/Tx/T(x)/DA 7 0 R>>",
                  "<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>"};
    Add(maker);
    maker.more.back() = "<</Type/Font/Subtype/Type1/BaseFont/Courier>>";
    Add(maker);
    const auto document = Save();
    const std::vector<std::string_view> links = ArrayItems(document->Resolve(document->Catalog().Find("AF")));
    EXPECT_EQ(document->Resolve(links.at(1)), "[<</Dest (top#2)>><</D (top#2)/S /GoTo>><</D (top)/S/GoToR>>]");
    const Dict form = document->ResolveDict(document->Catalog().Find("AcroForm"));
    const Dict field = document->ResolveDict(ArrayItems(form.Find("Fields")).at(1));
    EXPECT_EQ(field.Find("DA"), "(/F_2 0 Tf)");
}

TEST_F(Merge, ReferenceMayHaveACommentInside) {
    PdfMaker maker;
    maker.catalogMore = "/AF[4%not 5\n0 R]";
    maker.more = {"(x)"};
    Add(maker);
    const auto document = Save();
    EXPECT_EQ(document->Resolve(ArrayItems(document->Resolve(document->Catalog().Find("AF"))).at(0)), "(x)");
}

TEST_F(Merge, StringFindsADestinationThatIsNamedTheOldWay) {
    PdfMaker maker;
    maker.catalogMore = "/Dests<</top[3 0 R/Fit]>>/AF[4 0 R]";
    maker.more = {"[<</Dest(top)>><</Dest/top>>]"};
    Add(maker);
    Add(maker);
    const auto document = Save();
    const std::vector<std::string_view> links = ArrayItems(document->Resolve(document->Catalog().Find("AF")));
    EXPECT_EQ(document->Resolve(links.at(1)), "[<</Dest(top#2)>><</Dest(top#2)>>]");
}

TEST_F(Merge, BookmarkWithoutATitleDoesNotEndTheList) {
    PdfMaker maker;
    maker.catalogMore = "/Outlines 4 0 R";
    maker.more = {"<</First 5 0 R/Last 7 0 R/Count 3>>", "<</Title(a)/Parent 4 0 R/Next 6 0 R>>",
                  "<</Parent 4 0 R/Prev 5 0 R/Next 7 0 R>>", "<</Title(c)/Parent 4 0 R/Prev 6 0 R>>"};
    Add(maker);
    const auto document = Save();
    EXPECT_EQ(Titles(*document), (std::vector<std::string>{"a", "", "c"}));
}

TEST_F(Merge, ResourcesThatPagesInheritAreStoredOnce) {
    PdfMaker maker;
    maker.more = {"<</Type/Pages/Parent 2 0 R/Count 2/Resources<</Font<</F 7 0 R>>>>/Kids[5 0 R 6 0 R]>>",
                  "<</Type/Page/Parent 4 0 R/MediaBox[0 0 9 9]>>", "<</Type/Page/Parent 4 0 R/MediaBox[0 0 9 9]>>",
                  "<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>"};
    maker.catalogMore = "/Pages 4 0 R";
    std::string pdf = maker.Make();
    pdf.replace(pdf.find("/Pages 2 0 R/"), 12, "            ");
    Add(pdf);
    const auto document = Save();
    const Dict root = document->ResolveDict(document->Catalog().Find("Pages"));
    const Dict node = document->ResolveDict(ArrayItems(root.Find("Kids")).at(0));
    std::set<std::string> resources;
    for (const std::string_view page : ArrayItems(node.Find("Kids"))) {
        const Dict dictionary = document->ResolveDict(page);
        EXPECT_TRUE(ParseReference(dictionary.Find("Resources")));
        EXPECT_TRUE(document->ResolveDict(dictionary.Find("Resources")).Has("Font"));
        resources.emplace(dictionary.Find("Resources"));
    }
    EXPECT_EQ(resources.size(), 1u);
}

TEST_F(Merge, FieldsOfOneNameInOneInputKeepOneName) {
    PdfMaker maker;
    maker.catalogMore = "/AcroForm<</Fields[4 0 R 5 0 R]>>";
    maker.more = {"<</FT/Tx/T(x)>>", "<</FT/Tx/T(x)>>"};
    Add(maker);
    Add(maker);
    EXPECT_EQ(FieldNames(*Save()), (std::vector<std::string>{"x", "x", "x+1", "x+1"}));
}

TEST_F(Merge, WithoutBookmarksAndFieldsThereAreNone) {
    Add(Rich("x").Make(), {false, false, {}});
    const auto document = Save();
    EXPECT_FALSE(document->Catalog().Has("Outlines"));
    EXPECT_FALSE(document->Catalog().Has("AcroForm"));
}

TEST_F(Merge, FlagsHoldForTheirInputOnly) {
    Add(Rich("a").Make(), {false, true, {}});
    Add(Rich("b").Make(), {true, false, {}});
    const auto document = Save();
    EXPECT_EQ(Titles(*document), std::vector<std::string>{"b"});
    EXPECT_EQ(FieldNames(*document), std::vector<std::string>{"Name"});
}

TEST_F(Merge, SignaturesGoAndTheirFieldsStay) {
    PdfMaker maker;
    maker.catalogMore = "/AcroForm<</Fields[4 0 R]/SigFlags 3>>/Perms<</DocMDP 6 0 R>>";
    maker.more = {"<</T(s)/FT/Sig/Kids[5 0 R]>>", "<</Parent 4 0 R/T(k)/V 6 0 R>>",
                  "<</Type/Sig/ByteRange[0 1 2 3]/Contents<00>>>"};
    Add(maker);
    const auto document = Save();
    EXPECT_EQ(FieldNames(*document), std::vector<std::string>{"s"});
    EXPECT_EQ(ReadBytes(Out()).find("ByteRange"), std::string::npos);
    const Dict form = document->ResolveDict(document->Catalog().Find("AcroForm"));
    EXPECT_FALSE(form.Has("SigFlags"));
    EXPECT_FALSE(document->Catalog().Has("Perms"));
    const Dict field = document->ResolveDict(ArrayItems(form.Find("Fields")).at(0));
    const Dict kid = document->ResolveDict(ArrayItems(field.Find("Kids")).at(0));
    EXPECT_EQ(kid.Find("T"), "(k)");
    EXPECT_FALSE(kid.Has("V"));
}

TEST_F(Merge, SignaturesGoAlsoWhereNoFormNamesTheirField) {
    PdfMaker maker;
    maker.catalogMore = "/AF[4 0 R]/AcroForm<</Fields[4 0 R]>>";
    maker.more = {"<</Type/Annot/Subtype/Widget/Rect[0 0 9 9]/FT/Sig/T(s)/V 5 0 R>>",
                  "<</Type/Sig/ByteRange[0 1 2 3]/Contents<00>>>"};
    Add(maker.Make(), {true, false, {}});
    maker.catalogMore = "/AF[4 0 R]";
    Add(maker);
    const auto document = Save();
    const std::vector<std::string_view> fields = ArrayItems(document->Resolve(document->Catalog().Find("AF")));
    ASSERT_EQ(fields.size(), 2u);
    for (const std::string_view field : fields) {
        EXPECT_EQ(document->Resolve(document->ResolveDict(field).Find("V")), "null");
    }
}

// Blocks of two words whose differences cancel each other out, whatever the seed is.
TEST_F(Merge, ForgedHashesDoNotMakeForEndlessComparisons) {
    const auto document = Document::FromBytes(PdfMaker().Make());
    SharedResources shared;
    std::vector<std::string> values;
    for (unsigned which = 0; which < 1024; ++which) {
        std::string value(160, 'x');
        for (std::size_t block = 0; block < 10; ++block) {
            if (!(which >> block & 1)) continue;
            for (const std::size_t place : {7u, 11u, 15u}) {
                char& c = value[block * 16 + place];
                c = static_cast<char>(static_cast<unsigned char>(c) ^ 0x80u);
            }
        }
        values.push_back(value);
    }
    std::set<std::uint64_t> hashes;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const SharedResources::Content content{values[i], {}, false};
        hashes.insert(shared.Hash(content));
        shared.Add(*document, content, shared.Hash(content), static_cast<std::uint32_t>(i + 1));
    }
    EXPECT_EQ(hashes.size(), 1u);
    int found = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const SharedResources::Content content{values[i], {}, false};
        const std::uint32_t number = shared.Find(content, shared.Hash(content));
        if (number == 0) continue;
        EXPECT_EQ(number, i + 1);
        ++found;
    }
    EXPECT_LT(found, 100);
}

TEST_F(Merge, EqualResourcesAreStoredOnce) {
    PdfMaker maker;
    maker.catalogMore = "/AF[6 0 R]";
    maker.more = {"<</Type/Font/Subtype/Type1/BaseFont/Helvetica/FontDescriptor 5 0 R>>", "<</FontFile 7 0 R/Flags 4>>",
                  "<</Font<</F1 4 0 R>>/Own 8 0 R>>", "<</Length 5>>\nstream\nabcde\nendstream", "<</Other 1>>"};
    for (int i = 0; i < 3; ++i) Add(maker);
    const auto document = Save();
    std::set<std::string> fonts;
    std::set<std::string> others;
    for (const std::string_view item : ArrayItems(document->Resolve(document->Catalog().Find("AF")))) {
        const Dict resources = document->ResolveDict(item);
        fonts.emplace(Dict(resources.Find("Font")).Find("F1"));
        others.emplace(resources.Find("Own"));
    }
    EXPECT_EQ(fonts.size(), 1u);
    EXPECT_EQ(others.size(), 3u);  // what is no resource belongs to its document
}

TEST_F(Merge, ResourcesThatGoInCirclesAreCopied) {
    PdfMaker maker;
    maker.catalogMore = "/AF[4 0 R]";
    maker.more = {"<</Font<</F 5 0 R>>>>", "<</Encoding 6 0 R>>", "<</Encoding 5 0 R/SMask 6 0 R>>"};
    Add(maker);
    Add(maker);
    const auto document = Save();
    const Dict holder = document->ResolveDict(ArrayItems(document->Resolve(document->Catalog().Find("AF"))).at(1));
    const std::string font(Dict(holder.Find("Font")).Find("F"));
    const Dict encoding = document->ResolveDict(document->ResolveDict(font).Find("Encoding"));
    EXPECT_EQ(encoding.Find("Encoding"), font);
}

TEST_F(Merge, PageThatStandsInTheTreeTwiceIsThereTwice) {
    const std::string pdf = PdfMaker().Make();
    std::string twice = pdf;
    twice.replace(twice.find("/Kids[3 0 R]/Count 1"), 20, "/Kids[3 0 R 3 0 R]  ");
    // The table's places are wrong now, so that the file is repaired first.
    merger_.Add(Document::FromBytes(twice), {});
    const auto document = Save();
    EXPECT_EQ(document->ResolveDict(document->Catalog().Find("Pages")).Find("Count"), "2");
}

TEST_F(Merge, ThousandsOfPagesHaveABalancedTree) {
    for (int i = 0; i < 2600; ++i) merger_.Add(Document::FromBytes(PdfMaker().Make()), {});
    const auto document = Save();
    const Dict root = document->ResolveDict(document->Catalog().Find("Pages"));
    EXPECT_EQ(root.Find("Count"), "2600");
    EXPECT_EQ(ArrayItems(root.Find("Kids")).size(), 2u);
}

TEST_F(Merge, StreamWithAWrongLengthIsRepaired) {
    PdfMaker maker;
    maker.more = {"<</Length 3>>\nstream\nq Q q Q\nendstream"};
    std::string bytes = maker.Make();
    bytes.replace(bytes.find("/Resources<<>>"), 14, "/Contents 4 0 R");  // one byte more, taken from below
    bytes.replace(bytes.find("200 200"), 7, "200 20");
    Add(PdfMaker());
    Add(bytes);
    Add(PdfMaker());
    const auto document = Save();
    EXPECT_EQ(document->ResolveDict(document->Catalog().Find("Pages")).Find("Count"), "3");
    const Ran text = Shell("qpdf --show-object=trailer " + Quoted(Out()));
    EXPECT_EQ(text.code, 0) << text.output;
    EXPECT_EQ(Titles(*document), (std::vector<std::string>{"input 1", "input 2", "input 3"}));
}

TEST_F(Merge, NothingToMergeWritesNothing) {
    EXPECT_THROW(merger_.Save(Out()), PdfError);
    EXPECT_TRUE(folder_.Names().empty());
}

TEST_F(Merge, FailureLeavesTheOldFile) {
    folder_.MakeFile("out.pdf", "the old file");
    EXPECT_THROW(merger_.Save(Out()), PdfError);
    EXPECT_EQ(ReadBytes(Out()), "the old file");
    merger_.Add(Document::FromBytes(PdfMaker().Make()), {});
    EXPECT_THROW(merger_.Save(folder_.Path("no folder") / "out.pdf"), FileError);
    EXPECT_EQ(folder_.Names(), std::set<std::string>{"out.pdf"});
    merger_.Save(Out());
    ExpectSound(Out());
}

TEST_F(Merge, WhatDoesNotOpenLeavesTheOthers) {
    const auto plain = folder_.MakeFile("plain.pdf", PdfMaker().Make());
    const auto open = folder_.Path("open.pdf");
    const auto shut = folder_.Path("shut.pdf");
    ASSERT_EQ(Shell("qpdf --encrypt '' owner 256 -- " + Quoted(plain) + " " + Quoted(open)).code, 0);
    ASSERT_EQ(Shell("qpdf --encrypt secret owner 256 -- " + Quoted(plain) + " " + Quoted(shut)).code, 0);
    const std::string rich = Rich("x").Make();
    const auto truncated = folder_.MakeFile("truncated.pdf", rich.substr(0, rich.size() - 200));
    for (const auto& path : {folder_.MakeFile("empty.pdf", ""), folder_.MakeFile("text.pdf", "text"), shut,
                             folder_.MakeFile("begin.pdf", rich.substr(0, 60))}) {
        EXPECT_THROW(Document::Open(path, ""), PdfError) << path;
    }
    EXPECT_THROW(Document::Open(folder_.Path(), ""), FileError);
    EXPECT_THROW(Document::Open(folder_.Path("none.pdf"), ""), FileError);
    for (const auto& path : {plain, truncated, open}) merger_.Add(Document::Open(path, ""), {});
    const auto document = Save();
    EXPECT_EQ(Titles(*document), (std::vector<std::string>{"plain", "x", "open"}));
    EXPECT_EQ(document->ResolveDict(document->Catalog().Find("Pages")).Find("Count"), "3");
}

TEST_F(Merge, FullDiskAndReadOnlyTargetLeaveTheOldFile) {
    folder_.MakeFile("out.pdf", "the old file");
    PdfMaker large;
    for (int i = 0; i < 20000; ++i) {
        large.catalogMore += i == 0 ? "/AF[" : "";
        large.catalogMore += std::to_string(i + 4) + " 0 R ";
        large.more.push_back("(" + std::to_string(std::hash<int>()(i) * 2654435761u) + ")");
    }
    large.catalogMore += "]";
    Add(large);
    Add(PdfMaker());
    const std::set<std::string> names = folder_.Names();
    {
        const SmallDisk disk(20000);
        EXPECT_THROW(merger_.Save(Out()), FileError);
    }
    std::filesystem::permissions(Out(), std::filesystem::perms::owner_read);
    EXPECT_THROW(merger_.Save(Out()), FileError);
    EXPECT_EQ(ReadBytes(Out()), "the old file");
    EXPECT_EQ(folder_.Names(), names);
    std::filesystem::permissions(Out(), std::filesystem::perms::owner_all);
    Save();
}

TEST_F(Merge, LongAndNonLatinPathsAreTaken) {
    std::filesystem::path path = folder_.Path();
    while (path.native().size() < 1000) path /= PathFromUtf8("\xE6\x97\xA5\xE6\x9C\xAC " + std::string(80, 'x'));
    std::filesystem::create_directories(path);
    const auto input = path / PathFromUtf8("\xD0\x9F\xD0\xB8\xD1\x81\xD1\x8C\xD0\xBC\xD0\xBE.pdf");
    std::ofstream(input, std::ios::binary) << PdfMaker().Make();
    const auto out = path / PathFromUtf8("\xD7\x90.pdf");
    for (int i = 0; i < 2; ++i) merger_.Add(Document::Open(input, ""), {});
    merger_.Save(out);
    ExpectSound(out);
    EXPECT_EQ(Titles(*Document::Open(out, "")),
              std::vector<std::string>(2, "\xD0\x9F\xD0\xB8\xD1\x81\xD1\x8C\xD0\xBC\xD0\xBE"));
}

TEST_F(Merge, TargetThatIsReadElsewhereStaysWholeForItsReader) {
    const std::string old(1000000, 'o');
    const InputFile reader(folder_.MakeFile("out.pdf", old));
    Add(PdfMaker());
    Save();
    EXPECT_EQ(reader.ReadAll().View(), old);
}

TEST_F(Merge, LargeInheritedResourcesAreStoredOnce) {
    const std::string marker = "/Marked(" + std::string(500, '1') + ")";
    Add("%PDF-1.7\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n2 0 obj<</Type/Pages/Count 3/MediaBox[0 0 9 9]"
        "/Resources<</Properties<<" +
        marker +
        ">>>>/Kids[3 0 R 4 0 R 5 0 R]>>endobj\n3 0 obj<</Type/Page>>endobj\n4 0 obj<</Type/Page>>endobj\n"
        "5 0 obj<</Type/Page>>endobj\ntrailer<</Root 1 0 R>>");
    Save();
    ASSERT_EQ(Shell("qpdf --qdf " + Quoted(Out()) + " " + Quoted(folder_.Path("plain.pdf"))).code, 0);
    const std::string plain = ReadBytes(folder_.Path("plain.pdf"));
    EXPECT_NE(plain.find(std::string(500, '1')), std::string::npos);
    EXPECT_EQ(plain.find(std::string(500, '1')), plain.rfind(std::string(500, '1')));
}

TEST_F(Merge, SameInputsGiveTheSameBytes) {
    for (int i = 0; i < 5; ++i) Add(Rich("x"));
    merger_.Save(Out());
    const std::string first = ReadBytes(Out());
    merger_.Save(Out());
    EXPECT_EQ(ReadBytes(Out()), first);
}

TEST_F(Merge, DocumentMayBeThereTwice) {
    const std::shared_ptr<Document> document = Document::FromBytes(Rich("x").Make());
    merger_.Add(document, {});
    merger_.Add(document, {});
    EXPECT_EQ(FieldNames(*Save()), (std::vector<std::string>{"Name", "Name+1"}));
}

// What a stranger can make to exhaust a stack: chains of everything that leads on to something.
TEST_F(Merge, LongChainsCostNoStack) {
    constexpr int length = 100000;
    const auto chain = [](const std::string& before, const std::string& after) {
        std::vector<std::string> objects;
        for (int i = 0; i < length; ++i) {
            objects.push_back("<<" + before + std::to_string(i + 5) + " 0 R" + after + ">>");
        }
        objects.push_back("<</End true>>");
        return objects;
    };
    const struct {
        const char* catalog;
        std::vector<std::string> objects;
    } cases[] = {
        {"/OpenAction 4 0 R", chain("/S/GoTo/D[3 0 R/Fit]/Next ", "")},
        {"/Outlines<</First 4 0 R>>", chain("/Title(x)/Next ", "")},
        {"/Outlines<</First 4 0 R>>", chain("/Title(x)/First ", "")},
        {"/AcroForm<</Fields[4 0 R]>>", chain("/T(x)/Kids[", "]")},
        {"/StructTreeRoot<</K 4 0 R>>", chain("/S/P/K ", "")},
        {"/AF[4 0 R]", chain("/SMask ", "")},
        {"/AF[4 0 R]", chain("/Font<</F ", ">>")},
        {"/Names<</Dests 4 0 R>>", chain("/Kids[", "]")},
        {"/PageLabels 4 0 R", chain("/Kids[", "]")},
        {"/Threads[4 0 R]", chain("/N ", "/V 3 0 R")},
    };
    RunWithStack(std::size_t{1} << 20, [&] {
        for (const auto& c : cases) {
            PdfMaker maker;
            maker.catalogMore = c.catalog;
            maker.more = c.objects;
            Merger merger;
            merger.Add(Document::FromBytes(maker.Make()), {});
            merger.Save(Out());
            EXPECT_TRUE(Document::Open(Out(), "")->IsPlain()) << c.objects[0];
        }
    });
}

// None of these ends within a minute where the cost grows with the square of the size.
TEST_F(Merge, ManyThingsOfOneKindCostNoMoreEach) {
    constexpr int count = 60000;
    const auto repeated = [](const std::string& text) {
        std::string all;
        for (int i = 0; i < count; ++i) all += text;
        return all;
    };
    const auto numbered = [](const std::string& before, const std::string& after) {
        std::string all;
        for (int i = 0; i < count; ++i) all += before + std::to_string(i + 5) + after;
        return all;
    };
    // Halves of pairs: different names that read alike, each there twice.
    std::string names;
    for (int i = 0; i < count; ++i) {
        std::array<char, 32> name = {};
        std::snprintf(name.data(), name.size(), "<FEFF%04X%04X>", 0xD800 + i % 1024, 0xD800 + i / 1024);
        for (int twice = 0; twice < 2; ++twice) names += name.data() + std::string(" 4 0 R ");
    }
    const struct {
        std::string catalog;
        std::vector<std::string> objects;
    } cases[] = {
        {"/AcroForm<</Fields[" + numbered("", " 0 R ") + "]>>", std::vector<std::string>(count + 1, "<</T(x)>>")},
        {"/AcroForm<</Fields[4 0 R]/DR<</Font<<" + numbered("/F ", " 0 R") + ">>>>>>",
         std::vector<std::string>(count + 1, "<</T(x)>>")},
        {"/Names<</Dests 4 0 R>>", {repeated("<</Kids[") + repeated("]>>")}},
        {"/Names<</EmbeddedFiles<</Names[" + names + "]>>>>", {"<</Type/Filespec/F(x)>>"}},
    };
    for (const auto& c : cases) {
        PdfMaker maker;
        maker.catalogMore = c.catalog;
        maker.more = c.objects;
        Merger merger;
        merger.Add(Document::FromBytes(maker.Make()), {});
        merger.Save(Out());
        EXPECT_TRUE(Document::Open(Out(), "")->IsPlain()) << c.catalog.substr(0, 100);
    }
}

TEST_F(Merge, ListThatManyFieldsShareIsReadOnce) {
    constexpr int count = 4000;
    PdfMaker maker;
    std::string list = "[";
    for (int i = 0; i < count; ++i) list += std::to_string(i + 5) + " 0 R ";
    list += "]";
    maker.catalogMore = "/AcroForm<</Fields" + list + ">>";
    maker.more = {list};
    for (int i = 0; i < count; ++i) maker.more.push_back("<</T(x" + std::to_string(i) + ")/Kids 4 0 R>>");
    Add(maker);
    EXPECT_EQ(FieldNames(*Save()).size(), static_cast<std::size_t>(count));
}

// An input whose plain types are just the names that a renamed one would get next.
TEST_F(Merge, PlainStructureTypesKeepTheirMeaningWhateverTheyAreCalled) {
    const auto make = [](const std::vector<std::string>& roles, const std::string& map) {
        PdfMaker maker;
        maker.catalogMore = "/StructTreeRoot 4 0 R";
        std::string kids;
        for (std::size_t i = 0; i < roles.size(); ++i) kids += std::to_string(i + 6) + " 0 R ";
        maker.more = {"<</K 5 0 R/RoleMap<<" + map + ">>>>", "<</S/Document/P 4 0 R/K[" + kids + "]>>"};
        for (const std::string& role : roles) maker.more.push_back("<</S/" + role + "/P 5 0 R>>");
        return maker;
    };
    std::vector<std::string> plain{"r"};
    for (int i = 0; i < 1000; ++i) plain.push_back(plain.back() + "_2");
    Add(make({"r"}, "/r/P"));
    Add(make(plain, ""));
    const auto document = Save();
    const Dict roles =
        document->ResolveDict(document->ResolveDict(document->Catalog().Find("StructTreeRoot")).Find("RoleMap"));
    ASSERT_EQ(roles.Entries().size(), 1u);
    EXPECT_EQ(std::count(plain.begin(), plain.end(), DecodeName(roles.Entries()[0].key)), 0);
}

TEST_F(Merge, ObjectsThatAreMissingAreNull) {
    PdfMaker maker;
    maker.catalogMore = "/AF[4 0 R]/Outlines 99 0 R/AcroForm 98 0 R/Names<</Dests 97 0 R>>/StructTreeRoot 96 0 R";
    maker.more = {"[95 0 R 0 0 R 99999999 0 R (x)]"};
    Add(maker);
    const auto document = Save();
    const std::vector<std::string_view> items = ArrayItems(document->Resolve(document->Catalog().Find("AF")));
    EXPECT_EQ(document->Resolve(items.at(0)), "[null null null (x)]");
}

}  // namespace
}  // namespace zavo::pdf
