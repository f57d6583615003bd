// Attaching files: to PDFs of every form, many of them, hostile ones, and what happens when saving fails.
#include <filesystem>
#include <random>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "engine/Attach.h"
#include "engine/Portfolio.h"
#include "tests/pdf/PdfFiles.h"
#include "tests/pdf/SmallDisk.h"

using namespace zavo::pdf;

namespace {

using Names = std::set<std::string>;

std::string RandomBytes(std::size_t count) {
    std::mt19937_64 source(count);
    std::string bytes;
    while (bytes.size() < count) {
        const std::uint64_t word = source();
        bytes.append(reinterpret_cast<const char*>(&word), sizeof word);
    }
    bytes.resize(count);
    return bytes;
}

std::string Words(std::size_t count) {
    std::string text;
    for (unsigned i = 0; text.size() < count; ++i) text += "word " + std::to_string(i * i) + "\n";
    text.resize(count);
    return text;
}

void Attach(const std::filesystem::path& pdf, const Files& files) {
    EditableDocument document(pdf, "");
    for (const auto& [name, content] : files) document.Add(name, "").SetContent(content);
    document.Save(pdf);
}

// Attaches twice, with a look at all that is in the file each time.
void ExpectAttaching(const std::filesystem::path& pdf, Files files = {}) {
    const Files first = {{"text.txt", Words(20000)}, {"noise.bin", RandomBytes(30000)}, {"empty.txt", ""}};
    const Files second = {{"f\xC3\xBCr \xE6\x97\xA5\xE6\x9C\xAC.pdf", "abc"}};
    for (const Files& added : {first, second}) {
        Attach(pdf, added);
        files.insert(added.begin(), added.end());
        ExpectSound(pdf);
        EXPECT_EQ(AttachmentsByPoppler(pdf), files);
    }
}

std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

PdfMaker HybridMaker() {
    PdfMaker maker;
    maker.more = {"(hidden as well)", "(hidden)"};
    return maker;
}

std::string ErrorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no error";
}

}  // namespace

// --- Forms of PDFs ---------------------------------------------------------------------------------------------------

TEST(Attach, AppendsToATable) {
    const TestFolder folder;
    const std::string old = PdfMaker().Make();
    const auto pdf = folder.MakeFile("a.pdf", old);
    ExpectAttaching(pdf);
    const std::string now = ReadBytes(pdf);
    EXPECT_TRUE(now.starts_with(old));
    EXPECT_EQ(Count(now, "startxref"), 3u);
    EXPECT_EQ(Count(now, "/Type/XRef"), 0u);
    EXPECT_EQ(folder.Names(), Names{"a.pdf"});
}

TEST(Attach, AppendsToAStream) {
    const TestFolder folder;
    const std::string old = PdfMaker().Make(Form::Stream);
    const auto pdf = folder.MakeFile("a.pdf", old);
    ExpectAttaching(pdf);
    const std::string now = ReadBytes(pdf);
    EXPECT_TRUE(now.starts_with(old));
    EXPECT_EQ(Count(now, "/Type/XRef"), 3u);
    EXPECT_EQ(Count(now, "trailer"), 0u);
}

TEST(Attach, AppendsToAHybrid) {
    const TestFolder folder;
    const std::string old = HybridMaker().Make(Form::Hybrid);
    const auto pdf = folder.MakeFile("a.pdf", old);
    ExpectAttaching(pdf);
    EXPECT_TRUE(ReadBytes(pdf).starts_with(old));
    EXPECT_EQ(Count(ReadBytes(pdf), "XRefStm"), 1u);
    EXPECT_EQ(Document::Open(pdf, "")->Resolve("5 0 R"), "(hidden)");
}

TEST(Attach, AppendsToALinearisedFile) {
    const TestFolder folder;
    const auto plain = folder.MakeFile("plain.pdf", PdfMaker().Make());
    const auto pdf = folder.Path("a.pdf");
    for (const char* mode : {"disable", "generate"}) {
        ASSERT_EQ(
            Shell("qpdf --linearize --object-streams=" + std::string(mode) + " " + Quoted(plain) + " " + Quoted(pdf))
                .code,
            0);
        const std::string old = ReadBytes(pdf);
        ExpectAttaching(pdf);
        EXPECT_TRUE(ReadBytes(pdf).starts_with(old));
    }
}

TEST(Attach, AppendsWhereTheLastLineDoesNotEnd) {
    const TestFolder folder;
    std::string old = PdfMaker().Make();
    old.pop_back();
    ExpectAttaching(folder.MakeFile("a.pdf", old));
}

TEST(Attach, RewritesAnEncryptedFileAndKeepsItEncrypted) {
    const TestFolder folder;
    const auto plain = folder.MakeFile("plain.pdf", PdfMaker().Make());
    const auto pdf = folder.Path("a.pdf");
    for (const char* bits : {"256", "128", "40"}) {
        const Ran encrypt = Shell("qpdf --allow-weak-crypto --encrypt '' owner " + std::string(bits) + " -- " +
                                  Quoted(plain) + " " + Quoted(pdf));
        ASSERT_EQ(encrypt.code, 0) << encrypt.output;
        ExpectAttaching(pdf);
        EXPECT_EQ(Shell("qpdf --is-encrypted " + Quoted(pdf)).code, 0);
    }
}

TEST(Attach, RewritesADamagedFile) {
    const TestFolder folder;
    std::string old = PdfMaker().Make();
    ExpectAttaching(folder.MakeFile("start.pdf", old.replace(old.rfind("startxref") + 10, 1, "9")));
    ExpectAttaching(folder.MakeFile("junk.pdf", "junk before the header\n" + PdfMaker().Make()));
    const auto cut = folder.MakeFile("cut.pdf", PdfMaker().Make());
    Attach(cut, {{"first", "abc"}});
    std::filesystem::resize_file(cut, std::filesystem::file_size(cut) - 20);
    ExpectAttaching(cut);  // readers see the state before the torn section, and so does what is appended
}

// Large enough for high object numbers to be believed.
PdfMaker LargeMaker() {
    PdfMaker maker;
    maker.more = {"<</Length 600000>>\nstream\n" + std::string(600000, 'x') + "\nendstream"};
    return maker;
}

TEST(Attach, SizeFarBeyondTheObjectsLosesNothing) {
    for (const Form form : {Form::Table, Form::Stream}) {
        for (const char* size : {"8388603", "8388606", "8388607", "200001", "199999"}) {
            SCOPED_TRACE(size);
            const TestFolder folder;
            std::string old = LargeMaker().Make(form);
            const std::size_t place = old.rfind("/Size ");
            const std::string count = old.substr(place + 6, 1);
            old.replace(place, 7, (form == Form::Stream ? "/Index[0 " + count + "]/Size " : "/Size ") + size);
            const auto pdf = folder.MakeFile("a.pdf", old);
            for (std::size_t files = 1; files <= 3; ++files) {
                ASSERT_TRUE(Document::Open(pdf, "")->IsPlain());
                Attach(pdf, {{"file" + std::to_string(files), "abc"}});
                EXPECT_EQ(ListAttachments(*Document::Open(pdf, "")).size(), files);
            }
            EXPECT_TRUE(ReadBytes(pdf).starts_with(old));
            ExpectSound(pdf);
            EXPECT_EQ(AttachmentsByPoppler(pdf), (Files{{"file1", "abc"}, {"file2", "abc"}, {"file3", "abc"}}));
        }
    }
}

TEST(Attach, UsedUpObjectNumbersAreAnErrorAndLoseNothing) {
    const TestFolder folder;
    std::string old = LargeMaker().Make();
    const std::size_t table = old.rfind("xref\n0 ");
    const std::string far = "8388600 0 obj\n(far)\nendobj\n";
    old.resize(old.rfind("startxref"));
    old += "startxref\n" + std::to_string(table + far.size()) + "\n%%EOF\n";
    old.insert(old.rfind("trailer"), "8388600 1\n0000" + std::to_string(table) + " 00000 n \n");
    old.insert(table, far);
    old.replace(old.rfind("/Size ") + 6, 1, "8388601");
    const auto pdf = folder.MakeFile("a.pdf", old);
    std::size_t count = 0;
    std::string error;
    do {
        old = ReadBytes(pdf);
        EXPECT_EQ(ListAttachments(*Document::Open(pdf, "")).size(), count);
        EXPECT_EQ(Document::Open(pdf, "")->Resolve("8388600 0 R"), "(far)");
        error = ErrorOf([&] { Attach(pdf, {{"file" + std::to_string(++count), "abc"}}); });
    } while (error == "no error" && count < 9);
    EXPECT_EQ(count, 3u);
    EXPECT_EQ(error, "the object numbers are too large for the file to be written anew");
    EXPECT_EQ(ReadBytes(pdf), old);
}

TEST(Attach, OldSignaturesStayIntact) {
    // What a signature covers is the old file's bytes: they are all there, in their place.
    const TestFolder folder;
    const std::string old = PdfMaker().Make() + "%trailing remark\n";
    const auto pdf = folder.MakeFile("a.pdf", old);
    Attach(pdf, {{"a.txt", "abc"}});
    EXPECT_TRUE(ReadBytes(pdf).starts_with(old));
}

TEST(Attach, TrailerKeepsWhatItHad) {
    const TestFolder folder;
    PdfMaker maker;
    maker.more = {"<</Title(A title)>>"};
    std::string old = maker.Make();
    old.replace(old.rfind("/Root 1 0 R"), 11, "/Root 1 0 R/Info 4 0 R/ID[<AB><CD>]/Private(kept)");
    const auto pdf = folder.MakeFile("a.pdf", old);
    ExpectAttaching(pdf);
    const std::string now = ReadBytes(pdf).substr(old.size());
    EXPECT_EQ(Count(now, "/Info 4 0 R"), 2u);
    EXPECT_EQ(Count(now, "/Private (kept)"), 2u);
    EXPECT_EQ(Count(now, "/ID[<AB>"), 2u);
    EXPECT_EQ(Count(now, "<CD>"), 0u);
}

TEST(Attach, SavingNothingLeavesTheBytes) {
    const TestFolder folder;
    for (const std::string& old : {PdfMaker().Make(), "junk\n" + PdfMaker().Make()}) {
        const auto pdf = folder.MakeFile("a.pdf", old);
        EditableDocument document(pdf, "");
        document.Add("never filled.txt", "");
        document.Save(pdf);
        EXPECT_EQ(ReadBytes(pdf), old);
    }
}

TEST(Attach, SavesACopyAndStaysAsItWas) {
    const TestFolder folder;
    const std::string old = PdfMaker().Make();
    const auto pdf = folder.MakeFile("a.pdf", old);
    const auto copy = folder.Path("b.pdf");
    EditableDocument document(pdf, "");
    document.Add("a.txt", "").SetContent("abc");
    document.Save(copy);
    EXPECT_EQ(ReadBytes(pdf), old);
    EXPECT_EQ(AttachmentsByPoppler(copy), (Files{{"a.txt", "abc"}}));
    document.Save(pdf);
    EXPECT_EQ(ReadBytes(pdf), ReadBytes(copy));
}

TEST(Attach, DocumentCanBeSavedAgainAndAgain) {
    const TestFolder folder;
    const auto pdf = folder.MakeFile("a.pdf", PdfMaker().Make());
    EditableDocument document(pdf, "");
    Files files;
    for (int i = 0; i < 5; ++i) {
        const std::string name = "file" + std::to_string(i);
        Attachment& attachment = document.Add(name, "");
        attachment.SetContent(name);
        EXPECT_FALSE(attachment.IsSaved());
        document.Save(pdf);
        EXPECT_TRUE(attachment.IsSaved());
        files.emplace(name, name);
        EXPECT_EQ(AttachmentsByPoppler(pdf), files);
    }
    ExpectSound(pdf);
}

TEST(Attach, OtherPathsToTheFileAreTheFile) {
    const TestFolder folder;
    const auto pdf = folder.MakeFile("a.pdf", PdfMaker().Make());
    std::filesystem::create_symlink("a.pdf", folder.Path("link"));
    for (const auto& path : {folder.Path("link"), folder.Path() / "." / "a.pdf"}) {
        EditableDocument document(pdf, "");
        Attachment& attachment = document.Add("a.txt", "");
        attachment.SetContent("abc");
        document.Save(path);
        EXPECT_TRUE(attachment.IsSaved());
    }
    EXPECT_EQ(AttachmentsByPoppler(pdf).size(), 2u);
}

TEST(Attach, DocumentInUseIsNotReplaced) {
    const TestFolder folder;
    const std::string old = PdfMaker().Make();
    const auto pdf = folder.MakeFile("a.pdf", old);
    EditableDocument document(pdf, "");
    document.Add("a.txt", "").SetContent("abc");
    {
        const std::shared_ptr<Document> user = document.Current();
        EXPECT_EQ(ErrorOf([&] { document.Save(pdf); }),
                  pdf.string() + ": cannot be replaced: the document is still in use");
        EXPECT_EQ(ReadBytes(pdf), old);
    }
    document.Save(pdf);
    EXPECT_EQ(AttachmentsByPoppler(pdf).size(), 1u);
}

// --- What is attached ------------------------------------------------------------------------------------------------

TEST(Attach, EntriesSayWhatTheyAre) {
    const TestFolder folder;
    const auto pdf = folder.MakeFile("a.pdf", PdfMaker().Make());
    EditableDocument document(pdf, "");
    Attachment& full = document.Add("mail.PDF", "A description (with parentheses)");
    full.SetContent(Words(1000));
    full.SetCreated(0);
    full.SetModified(1709251199);
    document.Add("none", "").SetContent("x");
    Attachment& odd = document.Add("odd.txt", "");
    odd.SetContent("y");
    odd.SetCreated(-1);
    odd.SetModified(INT64_MAX);
    document.Save(pdf);

    const std::string now = ReadBytes(pdf);
    EXPECT_EQ(Count(now, "/Subtype/application#2Fpdf"), 1u);
    EXPECT_EQ(Count(now, "/Subtype/application#2Foctet-stream"), 1u);
    EXPECT_EQ(Count(now, "/Subtype/text#2Fplain"), 1u);
    EXPECT_EQ(Count(now, "/Params<</Size 1000/CreationDate(D:19700101000000Z)/ModDate(D:20240229235959Z)>>"), 1u);
    EXPECT_EQ(Count(now, "/Params<</Size 1>>"), 2u);
    EXPECT_EQ(Count(now, "/Desc(A description \\(with parentheses\\))"), 1u);

    const auto list = ListAttachments(*Document::Open(pdf, ""));
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(list[0].name, "mail.PDF");
    EXPECT_EQ(list[0].size, 1000);
    EXPECT_EQ(list[0].created, 0);
    EXPECT_EQ(list[0].modified, 1709251199);
    EXPECT_EQ(list[2].created, unknownTime);
    EXPECT_EQ(list[2].modified, unknownTime);
}

TEST(Attach, HostileNamesStayNames) {
    const TestFolder folder;
    const auto pdf = folder.MakeFile("a.pdf", PdfMaker().Make());
    const Files files = {{"a)b(c\\d", "1"},
                         {"x>>endobj", "2"},
                         {"../../up.txt", "3"},
                         {"C:\\boot.ini", "4"},
                         {std::string("nul\0l", 5), "5"},
                         {"line\r\nfeed", "6"},
                         {"<0>name", "7"},
                         {"", "8"}};
    Attach(pdf, files);
    ExpectSound(pdf);
    const Files expected = {{"a)b(c_d", "1"}, {"x>>endobj", "2"},  {".._.._up.txt", "3"}, {"C:_boot.ini", "4"},
                            {"nul_l", "5"},   {"line__feed", "6"}, {"<0>name", "7"},      {"_", "8"}};
    EXPECT_EQ(AttachmentsByPoppler(pdf), expected);
}

TEST(Attach, NamesHideNothing) {
    const std::pair<const char*, const char*> rows[] = {
        {"\xC2\x80\xC2\x9B\xC2\x9F\xC2\xA0", "___\xC2\xA0"},                                 // up to U+009F
        {"a\xE2\x80\x8B\xE2\x80\x8E\xE2\x80\x8F", "a___"},                                   // U+200B, 200E, 200F
        {"\xE2\x80\xA7\xE2\x80\xA8\xE2\x80\xAE\xE2\x80\xAF", "\xE2\x80\xA7__\xE2\x80\xAF"},  // 2028 to 202E
        {"invoice\xE2\x80\xAE"
         "fdp.exe",
         "invoice_fdp.exe"},
        {"\xE2\x81\xA5\xE2\x81\xA6\xE2\x81\xA9", "\xE2\x81\xA5__"},  // from U+2066
        {"\xEF\xBB\xBF"
         "a\xD8\x9C",
         "_a_"},                                                                           // U+FEFF, 061C
        {"\xE0\xA4\x95\xE2\x80\x8D\xE2\x80\x8C", "\xE0\xA4\x95\xE2\x80\x8D\xE2\x80\x8C"},  // joiners
        {"\xF0\x9F\x93\x8E", "\xF0\x9F\x93\x8E"},
    };
    for (const auto& [name, expected] : rows) EXPECT_EQ(Attachment(name, "", {}).Name(), expected);
}

TEST(Attach, NamesOfAllPlanesAreKept) {
    const TestFolder folder;
    const auto pdf = folder.MakeFile("a.pdf", PdfMaker().Make());
    const std::string name = "clip \xF0\x9F\x93\x8E.txt";
    Attach(pdf, {{name, "abc"}});
    EXPECT_EQ(AttachmentKeys(pdf), std::vector<std::string>{name});
    EXPECT_EQ(ListAttachments(*Document::Open(pdf, ""))[0].name, name);
}

TEST(Attach, EqualNamesGetKeysOfTheirOwn) {
    const TestFolder folder;
    const auto pdf = folder.MakeFile("a.pdf", PdfMaker().Make());
    Attach(pdf, {{"mail.pdf", "1"}, {"mail.pdf", "2"}, {".profile", "a"}, {".profile", "b"}});
    Attach(pdf, {{"mail.pdf", "3"}});
    EXPECT_EQ(AttachmentKeys(pdf),
              (std::vector<std::string>{".profile", ".profile (2)", "mail (2).pdf", "mail (3).pdf", "mail.pdf"}));
    EXPECT_EQ(AttachmentsByPoppler(pdf),
              (Files{{"mail.pdf", "1"}, {"mail.pdf", "2"}, {"mail.pdf", "3"}, {".profile", "a"}, {".profile", "b"}}));
}

TEST(Attach, LargeContentGoesThroughAFile) {
    const TestFolder folder;
    const auto pdf = folder.MakeFile("a.pdf", PdfMaker().Make());
    const std::string noise = RandomBytes(40 << 20);
    const std::string text = Words(40 << 20);
    const auto noiseFile = folder.MakeFile("noise", noise);
    const auto textFile = folder.MakeFile("text", text);
    EditableDocument document(pdf, "");
    document.Add("noise bytes", "").SetContent(noise);
    document.Add("text bytes", "").SetContent(text);
    document.Add("noise file", "").SetContent(InputFile(noiseFile));
    document.Add("text file", "").SetContent(InputFile(textFile));
    EXPECT_EQ(folder.Names(), (Names{"a.pdf", "noise", "text"}));
    document.Save(pdf);
    const Files files = AttachmentsByPoppler(pdf);
    ASSERT_EQ(files.size(), 4u);
    for (const auto& [name, content] : files)
        EXPECT_TRUE(content == (name.starts_with("noise") ? noise : text)) << name;
    EXPECT_LT(std::filesystem::file_size(pdf), 2 * noise.size() + text.size());
}

// --- Trees -----------------------------------------------------------------------------------------------------------

TEST(Attach, WritesOnlyWhatChanges) {
    const TestFolder folder;
    PdfMaker maker;
    maker.catalogMore = "/Names 4 0 R";
    maker.more = {"<</Dests<<>>/EmbeddedFiles 5 0 R>>", "<</Names[]>>"};
    const std::string old = maker.Make();
    const auto pdf = folder.MakeFile("a.pdf", old);
    ExpectAttaching(pdf);
    const std::string now = ReadBytes(pdf).substr(old.size());
    EXPECT_EQ(Count(now, "\n5 0 obj"), 2u);
    for (const char* place : {"\n1 0 obj", "\n2 0 obj", "\n3 0 obj", "\n4 0 obj"}) EXPECT_EQ(Count(now, place), 0u);
}

TEST(Attach, KeepsTheOtherNames) {
    const TestFolder folder;
    PdfMaker direct;
    direct.catalogMore = "/Names<</JavaScript 4 0 R>>/Lang(en)";
    direct.more = {"<</Names[]>>"};
    PdfMaker indirect;
    indirect.catalogMore = "/Names 4 0 R/Lang(en)";
    indirect.more = {"<</JavaScript 5 0 R/EmbeddedFiles<</Names[]>>>>", "<</Names[]>>"};
    for (const PdfMaker& maker : {direct, indirect}) {
        const std::string old = maker.Make();
        const auto pdf = folder.MakeFile("a.pdf", old);
        ExpectAttaching(pdf);
        const std::string now = ReadBytes(pdf).substr(old.size());
        EXPECT_EQ(Count(now, "/JavaScript"), 1u);  // the second time nothing above the tree changes
        EXPECT_EQ(Count(now, "/Lang"), maker.catalogMore == direct.catalogMore ? 1u : 0u);
    }
}

TEST(Attach, TakesOddTreesOver) {
    const std::string spec = "<</Type/Filespec/F(old)/UF(old)/EF<</F 5 0 R>>>>";
    const std::string file = "<</Type/EmbeddedFile/Length 3>>\nstream\nold\nendstream";
    const std::pair<const char*, std::vector<std::string>> trees[] = {
        {"flat and unsorted", {"<</Names[(z)6 0 R(b)6 0 R(x)6 0 R]>>"}},
        {"keys twice", {"<</Names[(b)6 0 R(b)6 0 R(b)6 0 R]>>"}},
        {"kids without limits", {"<</Kids[7 0 R 8 0 R]>>", "<</Names[(b)6 0 R(c)6 0 R]>>", "<</Names[(n)6 0 R]>>"}},
        {"wrong limits",
         {"<</Kids[7 0 R 8 0 R]>>", "<</Limits[(x)(z)]/Names[(n)6 0 R(o)6 0 R]>>",
          "<</Limits[(a)(b)]/Names[(c)6 0 R]>>"}},
        {"kids in circles",
         {"<</Kids[7 0 R]>>", "<</Limits[(a)(z)]/Kids[8 0 R 7 0 R]>>",
          "<</Limits[(a)(c)]/Names[(a)6 0 R(b)6 0 R(c)6 0 R]>>"}},
        {"a circle alone",
         {"<</Kids[7 0 R 8 0 R]>>", "<</Limits[(k)(z)]/Kids[7 0 R]>>",
          "<</Limits[(a)(c)]/Names[(a)6 0 R(b)6 0 R(c)6 0 R]>>"}},
        {"direct kids", {"<</Kids[<</Limits[(a)(c)]/Names[(a)6 0 R(b)6 0 R(c)6 0 R]>>]>>"}},
        {"names beside kids", {"<</Names[(b)6 0 R]/Kids[7 0 R]>>", "<</Limits[(c)(d)]/Names[(c)6 0 R(d)6 0 R]>>"}},
        {"a dead kid", {"<</Kids[7 0 R 99 0 R]>>", "<</Limits[(a)(c)]/Names[(a)6 0 R(b)6 0 R(c)6 0 R]>>"}},
    };
    for (const auto& [what, nodes] : trees) {
        SCOPED_TRACE(what);
        const TestFolder folder;
        PdfMaker maker;
        maker.catalogMore = "/Names<</EmbeddedFiles 4 0 R>>";
        maker.more = {nodes[0], file, spec};
        maker.more.insert(maker.more.end(), nodes.begin() + 1, nodes.end());
        ExpectAttaching(folder.MakeFile("a.pdf", maker.Make()), {{"old", "old"}, {"old", "old"}, {"old", "old"}});
    }
}

TEST(Attach, DeepTreeIsTakenOver) {
    const TestFolder folder;
    PdfMaker maker;
    maker.catalogMore = "/Names<</EmbeddedFiles 4 0 R>>";
    constexpr int depth = 20000;
    for (int i = 0; i < depth; ++i) maker.more.push_back("<</Limits[(a)(a)]/Kids[" + std::to_string(i + 5) + " 0 R]>>");
    const std::string last = std::to_string(depth + 5);
    maker.more.push_back("<</Limits[(a)(a)]/Names[(a)" + last + " 0 R]>>");
    maker.more.push_back("<</Type/Filespec/F(old)/UF(old)/EF<</F " + std::to_string(depth + 6) + " 0 R>>>>");
    maker.more.push_back("<</Type/EmbeddedFile/Length 3>>\nstream\nold\nendstream");
    ExpectAttaching(folder.MakeFile("a.pdf", maker.Make()), {{"old", "old"}});
}

TEST(Attach, DamagedAttachmentDoesNotHideTheOthers) {
    PdfMaker maker;
    maker.catalogMore = "/Names<</EmbeddedFiles<</Names[(a.txt)4 0 R(b.txt)5 0 R]>>>>";
    maker.more = {"<</Type/Filespec/F(a.txt)/EF(", "<</Type/Filespec/F(shown.txt)>>"};
    const auto document = Document::FromBytes(maker.Make());
    std::vector<std::string> names;
    for (const ListedAttachment& entry : ListAttachments(*document)) names.push_back(entry.name);
    EXPECT_EQ(names, (std::vector<std::string>{"a.txt", "shown.txt"}));
}

// A tree whose root, or what leads to it, is another object of the document as well: that one stays as it is.
TEST(Attach, ObjectsThatAreSomethingElseStay) {
    const TestFolder folder;
    const struct {
        const char* catalog;
        const char* object;
    } rows[] = {
        {"/Names<</EmbeddedFiles 1 0 R>>", ""},
        {"/Names<</EmbeddedFiles 3 0 R>>", ""},
        {"/Names<</EmbeddedFiles 4 0 R>>", "<</Length 3>>\nstream\nabc\nendstream"},
        {"/Names 4 0 R", "<</Length 3>>\nstream\nabc\nendstream"},
        {"/Names 4 0 R", "(text)"},
    };
    for (const auto& row : rows) {
        PdfMaker maker;
        maker.catalogMore = row.catalog;
        maker.more = {row.object[0] ? row.object : "null"};
        const auto pdf = folder.MakeFile("a.pdf", maker.Make());
        Attach(pdf, {{"a.txt", "abc"}});
        ExpectSound(pdf);
        EXPECT_EQ(AttachmentsByPoppler(pdf), (Files{{"a.txt", "abc"}})) << row.catalog << row.object;
        const auto document = Document::Open(pdf, "");
        EXPECT_TRUE(document->IsPlain());
        EXPECT_TRUE(document->ResolveDict("3 0 R").Has("MediaBox")) << row.catalog;
        if (row.object[0] == '<') {
            EXPECT_EQ(document->Read(4).stream, "abc") << row.catalog;
        }
        if (row.object[0] == '(') {
            EXPECT_EQ(document->Resolve("4 0 R"), "(text)") << row.catalog;
        }
    }
}

TEST(Attach, RewriteKeepsFilesWhateverTheTreeWasLike) {
    const TestFolder folder;
    for (const char* const tree : {"<</Kids[null]>>", "<</Kids[5 0 R]>>", "<</Names[(only a key)]>>", "(text)"}) {
        PdfMaker maker;
        maker.catalogMore = "/Names<</EmbeddedFiles 4 0 R>>";
        maker.more = {tree};
        const auto pdf = folder.MakeFile("a.pdf", "junk\n" + maker.Make());
        Attach(pdf, {{"a.txt", "abc"}, {"b.txt", "def"}});
        ExpectSound(pdf);
        EXPECT_EQ(AttachmentsByPoppler(pdf), (Files{{"a.txt", "abc"}, {"b.txt", "def"}})) << tree;
    }
}

TEST(Attach, LargeFlatTreeIsSplit) {
    const TestFolder folder;
    PdfMaker maker;
    maker.catalogMore = "/Names<</EmbeddedFiles 4 0 R>>";
    std::string names;
    for (int i = 0; i < 10000; ++i) names += "(key" + std::to_string(100000 + i) + ")5 0 R\n";
    maker.more = {"<</Names[" + names + "]>>", "<</Type/Filespec/F(old)/UF(old)/EF<</F 6 0 R>>>>",
                  "<</Type/EmbeddedFile/Length 3>>\nstream\nold\nendstream"};
    const std::string old = maker.Make();
    const auto pdf = folder.MakeFile("a.pdf", old);
    Attach(pdf, {{"key100500+", "new"}});
    ExpectSound(pdf);
    EXPECT_EQ(AttachmentKeys(pdf).size(), 10001u);
    const std::size_t first = ReadBytes(pdf).size();
    Attach(pdf, {{"key100500-", "new"}});
    EXPECT_EQ(AttachmentKeys(pdf).size(), 10002u);
    EXPECT_LT(ReadBytes(pdf).size() - first, 4000u);  // one leaf
}

TEST(Attach, TwoHundredOneByOne) {
    for (const Form form : {Form::Table, Form::Stream, Form::Hybrid}) {
        const TestFolder folder;
        const auto pdf = folder.MakeFile("a.pdf", HybridMaker().Make(form));
        Files files;
        std::vector<std::size_t> growth;
        std::mt19937 random(7);
        for (int i = 0; i < 200; ++i) {
            const std::string name = "mail " + std::to_string(random() % 100000) + ".pdf";
            const std::size_t before = ReadBytes(pdf).size();
            Attach(pdf, {{name, name}});
            growth.push_back(ReadBytes(pdf).size() - before);
            files.emplace(name, name);
            ASSERT_LE(Document::Open(pdf, "")->CrossReference().count, 64u);
            ASSERT_TRUE(Document::Open(pdf, "")->IsPlain());
        }
        ExpectSound(pdf);
        EXPECT_EQ(AttachmentsByPoppler(pdf), files);
        EXPECT_EQ(Document::Open(pdf, "")->Resolve("5 0 R"), "(hidden)");
        // Sections that stand for all earlier ones, and the others.
        const std::size_t whole = static_cast<std::size_t>(
            std::count_if(growth.begin(), growth.end(), [](std::size_t bytes) { return bytes > 6000; }));
        EXPECT_LE(whole, 4u);
    }
}

TEST(Attach, ThousandOfOneName) {
    const TestFolder folder;
    const auto pdf = folder.MakeFile("a.pdf", PdfMaker().Make());
    {
        EditableDocument document(pdf, "");
        for (int i = 0; i < 1000; ++i) document.Add("mail.pdf", "").SetContent(std::to_string(i));
        document.Save(pdf);
    }
    ExpectSound(pdf);
    const std::vector<std::string> keys = AttachmentKeys(pdf);
    EXPECT_EQ(Names(keys.begin(), keys.end()).size(), 1000u);
}

TEST(Attach, HundredThousandObjects) {
    const TestFolder folder;
    PdfMaker maker;
    for (int i = 0; i < 100000; ++i) maker.more.push_back("<</Number " + std::to_string(i) + ">>");
    for (const Form form : {Form::Table, Form::Stream}) {
        const std::string old = maker.Make(form);
        const auto pdf = folder.MakeFile("a.pdf", old);
        Attach(pdf, {{"a.txt", "abc"}});
        EXPECT_LT(ReadBytes(pdf).size() - old.size(), 2000u);
        for (int i = 0; i < 70; ++i) Attach(pdf, {{"a" + std::to_string(i), "abc"}});
        ExpectSound(pdf);
        EXPECT_EQ(AttachmentKeys(pdf).size(), 71u);
    }
}

// --- Folders ---------------------------------------------------------------------------------------------------------

TEST(Attach, RootFolderWithoutCollectionChangesNothing) {
    const TestFolder folder;
    const auto pdf = folder.MakeFile("a.pdf", PdfMaker().Make());
    EditableDocument document(pdf, "");
    Attachment& attachment = document.Add("a.txt", "");
    attachment.SetContent("abc");
    EXPECT_TRUE(document.FileInFolder(attachment, "/"));
    EXPECT_FALSE(document.FileInFolder(attachment, "/none"));
    document.Save(pdf);
    EXPECT_EQ(AttachmentKeys(pdf), std::vector<std::string>{"a.txt"});
}

TEST(Attach, FoldersOfACollectionAreFound) {
    const TestFolder folder;
    PdfMaker maker;
    maker.catalogMore = "/Collection<</Type/Collection/Folders 4 0 R>>";
    maker.more = {"<</Type/Folder/ID 7/Name()/Child 5 0 R>>",
                  "<</Type/Folder/ID 8/Name(Inbox)/Parent 4 0 R/Next 6 0 R>>",
                  "<</Type/Folder/ID 9/Name(Sent)/Parent 4 0 R/Next 5 0 R/Child 7 0 R>>",
                  "<</Type/Folder/ID 10/Name(2024)/Parent 6 0 R>>"};
    const auto pdf = folder.MakeFile("a.pdf", maker.Make());
    EditableDocument document(pdf, "");
    const std::pair<const char*, bool> rows[] = {
        {"/", true}, {"/Inbox", true}, {"/Sent/2024/", true}, {"/None", false}, {"/Inbox/2024", false}};
    for (const auto& [path, found] : rows) {
        Attachment& attachment = document.Add("a.txt", "");
        attachment.SetContent(path);
        EXPECT_EQ(document.FileInFolder(attachment, path), found) << path;
    }
    document.Save(pdf);
    ExpectSound(pdf);
    EXPECT_EQ(AttachmentKeys(pdf),
              (std::vector<std::string>{"<10>a.txt", "<7>a.txt", "<8>a.txt", "a (2).txt", "a.txt"}));
}

// --- Failures --------------------------------------------------------------------------------------------------------

TEST(Attach, FailedSavesLeaveTheOldFile) {
    const TestFolder folder;
    for (const std::string& old : {PdfMaker().Make(), "junk\n" + PdfMaker().Make()}) {
        const auto pdf = folder.MakeFile("a.pdf", old);
        EditableDocument document(pdf, "");
        document.Add("a.bin", "").SetContent(RandomBytes(200000));
        {
            const SmallDisk disk(100000);
            EXPECT_EQ(ErrorOf([&] { document.Save(pdf); }), pdf.string() + ": cannot be written: File too large");
        }
        ASSERT_EQ(chmod(pdf.c_str(), 0444), 0);
        EXPECT_EQ(ErrorOf([&] { document.Save(pdf); }), pdf.string() + ": cannot be written: the file is read-only");
        EXPECT_EQ(ReadBytes(pdf), old);
        EXPECT_EQ(folder.Names(), Names{"a.pdf"});

        ASSERT_EQ(chmod(pdf.c_str(), 0644), 0);
        document.Save(pdf);
        EXPECT_EQ(AttachmentsByPoppler(pdf).size(), 1u);
    }
}

TEST(Attach, WhatIsNoPdfDoesNotOpen) {
    const TestFolder folder;
    for (const std::string& bytes :
         {std::string(), std::string("text"), RandomBytes(5000), std::string("%PDF-1.7\n")}) {
        const auto file = folder.MakeFile("a.pdf", bytes);
        EXPECT_THROW(EditableDocument(file, ""), PdfError);
        EXPECT_EQ(ReadBytes(file), bytes);
    }
    EXPECT_THROW(EditableDocument(folder.Path("none"), ""), FileError);
    EXPECT_THROW(EditableDocument(folder.Path(), ""), FileError);
}

TEST(Attach, FileWithAUserPasswordOpensWithItOnly) {
    const TestFolder folder;
    const auto plain = folder.MakeFile("plain.pdf", PdfMaker().Make());
    const auto pdf = folder.Path("a.pdf");
    ASSERT_EQ(Shell("qpdf --encrypt secret owner 256 -- " + Quoted(plain) + " " + Quoted(pdf)).code, 0);
    EXPECT_THROW(EditableDocument(pdf, ""), PdfError);
    EditableDocument document(pdf, "secret");
    document.Add("a.txt", "").SetContent("abc");
    document.Save(pdf);
    EXPECT_EQ(Shell("qpdf --password=secret --show-attachment=a.txt " + Quoted(pdf)).output, "abc");
    EXPECT_THROW(EditableDocument(pdf, ""), PdfError);
}
