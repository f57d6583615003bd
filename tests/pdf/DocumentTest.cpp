// Opening PDFs: every kind of cross-reference section, damage, and files that are made to harm.
#include "engine/Document.h"

#include <ctime>

#include <gtest/gtest.h>

#include "engine/Deflate.h"
#include "engine/LargeStack.h"
#include "tests/pdf/PdfFiles.h"

namespace zavo::pdf {
namespace {

// `text` with the only occurrence of `from` replaced.
std::string Replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    EXPECT_EQ(text.find(from, place + 1), std::string::npos) << from;
    return text.replace(place, from.size(), to);
}

TEST(Document, ReadsTablesStreamsAndHybrids) {
    for (const Form form : {Form::Table, Form::Stream, Form::Hybrid}) {
        PdfMaker maker;
        maker.more = {"(four)", "(five)"};
        const auto document = Document::FromBytes(maker.Make(form));
        EXPECT_TRUE(document->IsPlain()) << static_cast<int>(form);
        EXPECT_EQ(document->Resolve("4 0 R"), "(four)") << static_cast<int>(form);
        EXPECT_EQ(document->Resolve("5 0 R"), "(five)") << static_cast<int>(form);
        EXPECT_EQ(document->CrossReference().isStream, form == Form::Stream) << static_cast<int>(form);
        EXPECT_EQ(document->CrossReference().count, form == Form::Hybrid ? 2u : 1u) << static_cast<int>(form);
    }
}

TEST(Document, NewerSectionsHideOlderOnes) {
    PdfMaker maker;
    maker.more = {"(old)", "(kept)"};
    std::string pdf = maker.Make();
    const std::size_t start = pdf.rfind("startxref") + 10;
    const std::string previous = pdf.substr(start, pdf.find('\n', start) - start);
    const std::string object = std::to_string(pdf.size());
    pdf += "4 0 obj\n(new)\nendobj\n";
    const std::string section = std::to_string(pdf.size());
    pdf += "xref\n4 1\n" + std::string(10 - object.size(), '0') + object +
           " 00000 n \ntrailer\n<</Size 6/Root 1 0 R/Prev " + previous + ">>\nstartxref\n" + section + "\n%%EOF\n";
    const auto document = Document::FromBytes(pdf);
    EXPECT_TRUE(document->IsPlain());
    EXPECT_EQ(document->Resolve("4 0 R"), "(new)");
    EXPECT_EQ(document->Resolve("5 0 R"), "(kept)");
    EXPECT_EQ(document->CrossReference().count, 2u);
    EXPECT_EQ(document->CrossReference().newest, std::stoull(section));
}

TEST(Document, DamagedFilesAreRepairedOnce) {
    PdfMaker maker;
    maker.more = {"(four)"};
    const std::string good = maker.Make();
    const std::string bad[] = {
        Replaced(good, "startxref\n", "startxref\n9"), "junk before\n" + good,
        good.substr(0, good.rfind("startxref")),       Replaced(good, "4 0 obj", "4 0 obk"),
        Replaced(good, "%PDF-1.7", "%PDF-1.7\n\n"),
    };
    for (const std::string& pdf : bad) {
        const auto document = Document::FromBytes(pdf);
        EXPECT_FALSE(document->IsPlain());
        EXPECT_TRUE(document->Catalog().Has("Pages")) << pdf;
        EXPECT_THROW(document->Repair(), PdfError);
    }
}

TEST(Document, WhatIsNoPdfThrows) {
    const std::string good = PdfMaker().Make();
    for (const std::string& bytes : {std::string(), std::string("%PDF-1.7\n"), std::string("just text"),
                                     std::string("PK\3\4 a zip"), std::string(100000, '\0'), good.substr(0, 30)}) {
        EXPECT_THROW(Document::FromBytes(bytes), PdfError) << bytes.substr(0, 20);
    }
}

TEST(Document, SectionsThatGoInCirclesEnd) {
    std::string pdf = PdfMaker().Make();
    const std::size_t start = pdf.rfind("startxref") + 10;
    const std::string own = pdf.substr(start, pdf.find('\n', start) - start);
    const auto document = Document::FromBytes(Replaced(pdf, "/Root 1 0 R", "/Root 1 0 R/Prev " + own));
    EXPECT_FALSE(document->IsPlain());  // repaired: the sections were found again
}

TEST(Document, ReferencesThatGoInCirclesAreNull) {
    PdfMaker maker;
    maker.more = {"5 0 R", "4 0 R", "6 0 R"};
    const auto document = Document::FromBytes(maker.Make());
    EXPECT_EQ(document->Resolve("4 0 R"), "null");
    EXPECT_EQ(document->Resolve("6 0 R"), "null");
    EXPECT_EQ(document->Resolve("99 0 R"), "null");
    EXPECT_EQ(document->Resolve("0 0 R"), "null");
}

TEST(Document, ObjectStreamWhoseLengthIsInsideItDoesNoHarm) {
    std::string pdf = PdfMaker().Make(Form::Stream);
    const std::size_t place = pdf.find("/Type/ObjStm");
    const std::size_t length = pdf.find("/Length ", place) + 8;
    const std::size_t end = pdf.find('>', length);
    // As many characters as before, because the places of the others have to hold.
    std::string entries = pdf.substr(place + 12, length - place - 12) + "1 0 R";
    entries.resize(end - place, ' ');
    pdf.replace(place, end - place, entries);
    try {
        EXPECT_FALSE(Document::FromBytes(pdf)->IsPlain());
    } catch (const PdfError&) {
    }
}

// Each stream holds the length of the one before.
TEST(Document, ChainOfObjectStreamsCostsNoStack) {
    constexpr std::uint32_t length = 20000;
    constexpr std::uint32_t firstStream = 4;
    constexpr std::uint32_t firstLength = firstStream + length;
    std::string pdf = "%PDF-1.7\n";
    std::string rows(7, '\0');
    const auto addRow = [&rows](int kind, std::size_t place) {
        rows += static_cast<char>(kind);
        for (int shift = 24; shift >= 0; shift -= 8) rows += static_cast<char>((place >> shift) & 0xFF);
        rows.append(2, '\0');
    };
    const auto add = [&](std::uint32_t number, const std::string& text) {
        addRow(1, pdf.size());
        pdf += std::to_string(number) + " 0 obj\n" + text + "\nendobj\n";
    };
    add(1, "<</Type/Catalog/Pages 2 0 R/AF[" + std::to_string(firstLength) + " 0 R]>>");
    add(2, "<</Type/Pages/Kids[3 0 R]/Count 1>>");
    add(3, "<</Type/Page/Parent 2 0 R/MediaBox[0 0 200 200]>>");
    std::size_t before = 0;
    for (std::uint32_t i = 0; i < length; ++i) {
        const std::string head = std::to_string(firstLength + i) + " 0 ";
        const std::string body = head + std::to_string(before) + " ";
        before = body.size();
        const std::string own = i + 1 < length ? std::to_string(firstLength + i + 1) + " 0 R" : std::to_string(before);
        add(firstStream + i, "<</Type/ObjStm/N 1/First " + std::to_string(head.size()) + "/Length " + own +
                                 ">>\nstream\n" + body + "\nendstream");
    }
    for (std::uint32_t i = 0; i < length; ++i) addRow(2, firstStream + i);
    const std::uint32_t table = firstLength + length;
    const std::size_t place = pdf.size();
    addRow(1, place);
    pdf += std::to_string(table) + " 0 obj\n<</Type/XRef/W[1 4 2]/Size " + std::to_string(table + 1) +
           "/Root 1 0 R/Length " + std::to_string(rows.size()) + ">>\nstream\n" + rows +
           "\nendstream\nendobj\nstartxref\n" + std::to_string(place) + "\n%%EOF\n";
    RunWithStack(std::size_t{1} << 20, [&] {
        const auto document = Document::FromBytes(pdf);
        EXPECT_TRUE(document->IsPlain());
        EXPECT_THROW(document->Resolve(std::to_string(firstLength) + " 0 R"), PdfError);
        EXPECT_EQ(document->Resolve(std::to_string(table - 1) + " 0 R"), "11");
    });
}

TEST(Document, HugeObjectNumbersCostNothing) {
    const std::string pdf = PdfMaker().Make();
    for (const char* const start : {"8388600", "4294967295", "99999999999999999999"}) {
        const std::string bad = Replaced(pdf, "xref\n0 4\n", std::string("xref\n") + start + " 4\n");
        try {
            const auto document = Document::FromBytes(bad);
            EXPECT_LT(document->ObjectLimit(), 100u);  // repaired
        } catch (const PdfError&) {
        }
    }
}

// New objects get numbers from there on, which would be out of range when the file is read again.
TEST(Document, SizeFarBeyondTheFileIsRepaired) {
    const auto document = Document::FromBytes(Replaced(PdfMaker().Make(), "/Size 4", "/Size 4000000"));
    EXPECT_FALSE(document->IsPlain());
    EXPECT_LT(document->CrossReference().size, 100u);
}

TEST(Document, HeaderMayHaveBlanksAndCommentsButNotForEver) {
    for (const std::size_t blanks : {std::size_t{1}, std::size_t{100}, std::size_t{1000}}) {
        std::string pdf = PdfMaker().Make();
        const std::size_t place = pdf.size();
        std::string digits = std::to_string(place);
        pdf += "4%" + std::string(blanks, ' ') + "\n0 obj(four)endobj\n";
        const std::string old = pdf.substr(pdf.rfind("startxref") + 10, 3);
        const std::string section = std::to_string(pdf.size());
        pdf += "xref\n4 1\n" + std::string(10 - digits.size(), '0') + digits +
               " 00000 n \ntrailer\n<</Size 5/Root 1 0 R/Prev " + old + ">>\nstartxref\n" + section + "\n%%EOF\n";
        const auto document = Document::FromBytes(pdf);
        EXPECT_EQ(document->IsPlain(), blanks < 200) << blanks;
    }
}

TEST(Document, StreamNeedsItsRightLength) {
    const auto make = [](const std::string& length) {
        PdfMaker maker;
        maker.more = {"<</Length " + length + ">>\nstream\n12345\nendstream", "5"};
        return Document::FromBytes(maker.Make());
    };
    EXPECT_EQ(make("5")->Read(4).stream, "12345");
    EXPECT_EQ(make("5 0 R")->Read(4).stream, "12345");
    for (const char* const length : {"3", "7", "-1", "99999999", "4 0 R", "99 0 R", "(5)"}) {
        EXPECT_THROW(make(length)->Read(4), PdfError) << length;
    }
}

TEST(Document, StreamThatDoesNotBeginOnALineOfItsOwnIsNotRead) {
    for (const char* const begin : {"stream \n", "stream", "streamx\n"}) {
        PdfMaker maker;
        maker.more = {"<</Length 4>>\n" + std::string(begin) + "12\n\nendstream"};
        EXPECT_THROW(Document::FromBytes(maker.Make())->Read(4), PdfError) << begin;
    }
}

TEST(Document, LargeValueIsNotReadAgainAndAgainForEver) {
    PdfMaker maker;
    maker.more = {"(" + std::string(1 << 20, 'x') + ")"};
    const auto document = Document::FromBytes(maker.Make());
    const auto readOften = [&document] {
        for (int i = 0; i < 1000; ++i) document->Resolve("4 0 R");
    };
    EXPECT_THROW(readOften(), PdfError);
    EXPECT_TRUE(document->IsExhausting());
    document->BeginTask();
    EXPECT_EQ(document->Resolve("4 0 R").size(), (1u << 20) + 2);
}

// Each section of such a file names the same stream, which unpacks to more than anyone has.
TEST(Document, SectionsThatUnpackTooMuchAreRefusedWithoutARepair) {
    const std::string packed = Compress(std::string(std::size_t{200} << 20, '\0'), 9);
    std::string pdf = "%PDF-1.7\n1 0 obj\n<</Type/Catalog/Pages 2 0 R>>\nendobj\n";
    const std::string stream = std::to_string(pdf.size());
    pdf += "2 0 obj\n<</Type/XRef/Size 3/W[1 4 2]/Filter/FlateDecode/Length " + std::to_string(packed.size()) +
           ">>\nstream\n" + packed + "\nendstream\nendobj\n";
    std::string previous;
    for (int i = 0; i < 200; ++i) {
        const std::string place = std::to_string(pdf.size());
        pdf += "xref\n0 1\n0000000000 65535 f \ntrailer\n<</Size 3/Root 1 0 R/XRefStm " + stream + previous + ">>\n";
        previous = "/Prev " + place;
    }
    pdf += "startxref\n" + previous.substr(6) + "\n%%EOF\n";
    const std::clock_t start = std::clock();
    EXPECT_THROW(Document::FromBytes(pdf), PdfError);
    EXPECT_LT(std::clock() - start, 5 * CLOCKS_PER_SEC);
}

TEST(Document, PasswordIsAskedForWhereThereIsOne) {
    const TestFolder folder;
    const auto plain = folder.MakeFile("plain.pdf", PdfMaker().Make());
    const struct {
        const char* passwords;
        const char* name;
    } cases[] = {{"'' o", "open.pdf"}, {"u o", "shut.pdf"}};
    for (const auto& c : cases) {
        const Ran ran = Shell("qpdf --encrypt " + std::string(c.passwords) + " 256 -- " + Quoted(plain) + " " +
                              Quoted(folder.Path(c.name)));
        ASSERT_EQ(ran.code, 0) << ran.output;
    }
    const auto open = Document::Open(folder.Path("open.pdf"), "");
    EXPECT_FALSE(open->IsPlain());
    EXPECT_TRUE(open->Catalog().Has("Pages"));
    EXPECT_THROW(Document::Open(folder.Path("shut.pdf"), ""), PdfError);
    EXPECT_TRUE(Document::Open(folder.Path("shut.pdf"), "u")->Catalog().Has("Pages"));
}

TEST(Document, BytesComeBackAfterRelease) {
    const TestFolder folder;
    PdfMaker maker;
    maker.more = {"(four)", "<</Length 300000>>\nstream\n" + std::string(300000, 'x') + "\nendstream"};
    const auto document = Document::Open(folder.MakeFile("a.pdf", maker.Make()), "");
    EXPECT_EQ(document->Resolve("4 0 R"), "(four)");
    const auto place = static_cast<std::uint64_t>(document->Read(5).stream.data() - document->Bytes().data());
    document->ReleaseBytes();
    EXPECT_TRUE(document->EqualAt(place, std::string(300000, 'x')));
    EXPECT_FALSE(document->EqualAt(place + 1, std::string(300000, 'x')));
    EXPECT_EQ(document->Resolve("4 0 R"), "(four)");
}

// A file of which only parts are read until all of it is asked for.
PdfMaker LargeMaker() {
    PdfMaker maker;
    for (int i = 0; i < 30; ++i) {
        const std::string content(static_cast<std::size_t>(9000 + 1000 * i), static_cast<char>('a' + i % 26));
        maker.more.push_back("(before " + std::to_string(i) + ")");
        maker.more.push_back("<</Length " + std::to_string(content.size()) + ">>\nstream\n" + content + "\nendstream");
    }
    maker.more.push_back("(last)");
    return maker;
}

TEST(Document, LargeFilesReadInPartsReadAsWhole) {
    const TestFolder folder;
    for (const Form form : {Form::Table, Form::Stream, Form::Hybrid}) {
        const std::string pdf = LargeMaker().Make(form);
        const auto whole = Document::FromBytes(pdf);
        const auto parts = Document::Open(folder.MakeFile("large.pdf", pdf), "");
        ASSERT_TRUE(parts->IsPlain());
        ASSERT_EQ(parts->ObjectLimit(), whole->ObjectLimit());
        EXPECT_EQ(parts->CrossReference().newest, whole->CrossReference().newest);
        EXPECT_EQ(parts->CrossReference().count, whole->CrossReference().count);
        EXPECT_EQ(parts->Root().number, whole->Root().number);
        for (std::uint32_t number = 0; number < whole->ObjectLimit(); ++number) {
            const Document::Object one = whole->Read(number);
            const Document::Object other = parts->Read(number);
            EXPECT_EQ(one.value, other.value) << number;
            EXPECT_EQ(one.isStream, other.isStream) << number;
            EXPECT_EQ(one.stream, other.stream) << number;
        }
        std::string copy;
        parts->CopyTo([&](std::string_view bytes) { copy += bytes; });
        EXPECT_EQ(copy, pdf);
        EXPECT_EQ(parts->Bytes(), pdf);
    }
}

TEST(Document, ViewsOfLargeFilesStayWhenMoreIsRead) {
    const TestFolder folder;
    const std::string pdf = LargeMaker().Make();
    const auto document = Document::Open(folder.MakeFile("large.pdf", pdf), "");
    const std::string_view first = document->Resolve("4 0 R");
    const std::string_view last = document->Resolve("64 0 R");
    EXPECT_EQ(document->Bytes(), pdf);
    EXPECT_EQ(first, "(before 0)");
    EXPECT_EQ(last, "(last)");
    EXPECT_EQ(static_cast<std::size_t>(last.data() - document->Bytes().data()), pdf.find("(last)"));
}

TEST(Document, DamageInLargeFilesIsRepaired) {
    const TestFolder folder;
    const std::string good = LargeMaker().Make();
    const std::size_t number = good.find("0000000009 00000 n");
    ASSERT_NE(number, std::string::npos);
    std::string behindTheEnd = good;
    behindTheEnd.replace(number, 10, "0009000000");
    std::string farBehindTheEnd = good;
    farBehindTheEnd.replace(number, 10, "9999999999");
    const std::string bad[] = {
        Replaced(good, "startxref\n", "startxref\n9"),
        "junk before\n" + good,
        good.substr(0, good.rfind("startxref")),
        Replaced(good, "64 0 obj", "64 0 obk"),
        Replaced(good, "\n40 0 obj", "\n41 0 obj"),
        behindTheEnd,
        farBehindTheEnd,
    };
    for (std::size_t i = 0; i < std::size(bad); ++i) {
        const auto document = Document::Open(folder.MakeFile("bad.pdf", bad[i]), "");
        EXPECT_FALSE(document->IsPlain()) << i;
        EXPECT_TRUE(document->Catalog().Has("Pages")) << i;
    }
}

TEST(Document, ValueThatRunsIntoTheNextObjectIsDamage) {
    const TestFolder folder;
    const std::string pdf = Replaced(LargeMaker().Make(), "(before 7)", "<<before 7");
    const auto document = Document::Open(folder.MakeFile("bad.pdf", pdf), "");
    EXPECT_TRUE(document->IsPlain());
    EXPECT_THROW(document->Resolve("18 0 R"), PdfError);
    EXPECT_EQ(document->Resolve("20 0 R"), "(before 8)");
}

TEST(Document, TrailerOfAnyLengthIsRead) {
    const TestFolder folder;
    for (const std::size_t length : {std::size_t{4000}, std::size_t{4096}, std::size_t{40000}, std::size_t{400000}}) {
        for (const Form form : {Form::Table, Form::Stream}) {
            const std::string pdf =
                Replaced(LargeMaker().Make(form), "/Root 1 0 R", "/Long(" + std::string(length, 'x') + ")/Root 1 0 R");
            const auto document = Document::Open(folder.MakeFile("long.pdf", pdf), "");
            // "startxref" leads to where the section is: before what became longer.
            EXPECT_TRUE(document->IsPlain()) << length;
            EXPECT_EQ(document->Trailer().Find("Long").size(), length + 2);
        }
    }
}

TEST(Document, DeepNestingAndLongChainsNeedOneMegabyteOfStack) {
    RunWithStack(std::size_t{1} << 20, [] {
        PdfMaker maker;
        maker.more = {std::string(100000, '[') + std::string(100000, ']')};
        EXPECT_TRUE(Document::FromBytes(maker.Make())->IsPlain());
    });
}

}  // namespace
}  // namespace zavo::pdf
