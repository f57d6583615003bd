// Files that are made to cost far more than their size lets expect: what is read or written again and again, and what
// unpacks to more than anyone has. Each is dealt with in a time and a memory that have a limit, or refused.
#include <array>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "engine/Attach.h"
#include "engine/Deflate.h"
#include "engine/LargeStack.h"
#include "engine/Merge.h"
#include "tests/pdf/PdfFiles.h"

namespace zavo::pdf {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr double secondsForOne = 30;
#else
constexpr double secondsForOne = 3;  // of which this machine needs a third
#endif
constexpr std::size_t smallStack = std::size_t{1} << 20;
constexpr std::size_t outputLimit = std::size_t{400} << 20;

// Numbered objects one behind the other, with a table; their texts may lie inside each other.
class Objects {
public:
    void Add(const std::string& text) { AddOpen(text + "\nendobj\n"); }
    // One that does not end, so that what follows is inside it.
    void AddOpen(const std::string& text) {
        places_.push_back(pdf_.size());
        pdf_ += std::to_string(places_.size()) + " 0 obj\n" + text;
    }
    // The number alone and the begin of a comment: numbers that share the rest of their object.
    void AddNumber() {
        places_.push_back(pdf_.size());
        pdf_ += std::to_string(places_.size()) + "%";
    }
    void Append(const std::string& text) { pdf_ += text; }

    std::string Make() const {
        std::string pdf = pdf_ + "xref\n0 " + std::to_string(places_.size() + 1) + "\n0000000000 65535 f \n";
        for (const std::size_t place : places_) {
            std::array<char, 32> line = {};
            std::snprintf(line.data(), line.size(), "%010zu 00000 n \n", place);
            pdf += line.data();
        }
        return pdf + "trailer\n<</Size " + std::to_string(places_.size() + 1) + "/Root 1 0 R>>\nstartxref\n" +
               std::to_string(pdf_.size()) + "\n%%EOF\n";
    }

private:
    std::string pdf_ = "%PDF-1.7\n";
    std::vector<std::size_t> places_;
};

Objects Begin(const std::string& catalogMore) {
    Objects objects;
    objects.Add("<</Type/Catalog/Pages 2 0 R" + catalogMore + ">>");
    objects.Add("<</Type/Pages/Kids[3 0 R]/Count 1>>");
    objects.Add("<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]>>");
    return objects;
}

std::string Repeated(int count, const std::string& text) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

// --- The files: each about a megabyte --------------------------------------------------------------------------------

// Each object is a string in which the next one begins.
std::string ObjectsInsideEachOther() {
    constexpr int count = 20000;
    Objects objects = Begin("/AF 4 0 R");
    std::string list = "[";
    for (int i = 0; i < count; ++i) list += std::to_string(i + 5) + " 0 R ";
    objects.Add(list + "]");
    for (int i = 0; i < count; ++i) objects.AddOpen("(\\\n");
    objects.Append(Repeated(count, ")") + "\nendobj\n");
    return objects.Make();
}

// Each place in the table leads to a comment that ends far behind.
std::string HeadersFarAway() {
    Objects objects = Begin("");
    for (int i = 0; i < 30000; ++i) objects.AddNumber();
    objects.Append("\n0 obj null\nendobj\n");
    return objects.Make();
}

std::string OnePageManyTimes() {
    Objects objects;
    objects.Add("<</Type/Catalog/Pages 2 0 R>>");
    objects.Add("<</Type/Pages/Count 100000/Kids[" + Repeated(100000, "3 0 R ") + "]>>");
    objects.Add("<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]/X(" + std::string(500000, 'x') + ")>>");
    return objects.Make();
}

std::string InheritedByManyPages() {
    constexpr int count = 20000;
    Objects objects;
    objects.Add("<</Type/Catalog/Pages 2 0 R>>");
    std::string kids;
    for (int i = 0; i < count; ++i) kids += std::to_string(i + 3) + " 0 R ";
    objects.Add("<</Type/Pages/Count " + std::to_string(count) + "/Resources<</Properties<</X(" +
                std::string(200000, 'x') + ")>>>>/MediaBox[0 0 9 9]/Kids[" + kids + "]>>");
    for (int i = 0; i < count; ++i) objects.Add("<</Type/Page/Parent 2 0 R>>");
    return objects.Make();
}

std::string OneAttachmentManyTimes() {
    Objects objects = Begin("/Names<</EmbeddedFiles 4 0 R>>");
    objects.Add("<</Names[" + Repeated(50000, "(x)5 0 R ") + "]>>");
    objects.Add("<</Type/Filespec/F(x)/X(" + std::string(500000, 'x') + ")>>");
    return objects.Make();
}

std::string TreeInsideItself() {
    Objects objects = Begin("/Names<</EmbeddedFiles 4 0 R/Dests 4 0 R>>");
    objects.Add(Repeated(60000, "<</Kids[") + Repeated(60000, "]>>"));
    return objects.Make();
}

std::string FieldsOfOneName() {
    constexpr int count = 40000;
    std::string fields;
    for (int i = 0; i < count; ++i) fields += std::to_string(i + 4) + " 0 R ";
    Objects objects = Begin("/AcroForm<</Fields[" + fields + "]>>");
    for (int i = 0; i < count; ++i) objects.Add("<</T(x)>>");
    return objects.Make();
}

std::string FontsOfOneName() {
    std::string fonts;
    for (int i = 0; i < 40000; ++i) fonts += "/F(" + std::to_string(i) + ")";
    return Begin("/AcroForm<</Fields[4 0 R]/DR<</Font<<" + fonts + ">>>>>>").Make();
}

std::string ActionsInsideEachOther() {
    return Begin("/OpenAction" + Repeated(40000, "<</D(x)/S/GoTo/Next") + "null" + Repeated(40000, ">>")).Make();
}

// A section whose trailer holds the next one as a string.
std::string SectionsInsideEachOther() {
    constexpr int count = 20000;
    const std::string good = Begin("").Make();
    std::string pdf = good;
    const std::string old = good.substr(good.rfind("startxref") + 10);
    std::size_t place = pdf.size();
    const std::size_t first = place;
    for (int i = 0; i < count; ++i) {
        const std::string head = "xref\ntrailer\n<</Size 4/Root 1 0 R/Prev ";
        constexpr std::size_t digits = 8;
        std::string next = std::to_string(pdf.size() + head.size() + digits + 3);
        next.resize(digits, ' ');
        pdf += head + next + "/A<";
    }
    return pdf + ">>>\nstartxref\n" + std::to_string(first) + "\n%%EOF\n";
}

// Object streams, each of which unpacks to 100 MB.
std::string ObjectStreamsThatUnpackToMuch(int count) {
    std::string pdf = "%PDF-1.7\n1 0 obj\n<</Type/Catalog/Pages 2 0 R/AF[";
    for (int i = 0; i < count; ++i) pdf += std::to_string(1000 + i) + " 0 R ";
    pdf += "]>>\nendobj\n";
    std::vector<std::size_t> places = {9};
    const auto add = [&](const std::string& text) {
        places.push_back(pdf.size());
        pdf += std::to_string(places.size()) + " 0 obj\n" + text + "\nendobj\n";
    };
    add("<</Type/Pages/Kids[3 0 R]/Count 1>>");
    add("<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]>>");
    for (int i = 0; i < count; ++i) {
        const std::string packed =
            Compress(std::to_string(1000 + i) + " 0 " + std::string(100'000'000, ' ') + "null", 1);
        add("<</Type/ObjStm/N 1/First 7/Filter/FlateDecode/Length " + std::to_string(packed.size()) + ">>\nstream\n" +
            packed + "\nendstream");
    }
    const auto row = [](int kind, std::size_t place) {
        std::string text(1, static_cast<char>(kind));
        for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>((place >> shift) & 0xFF);
        return text + std::string(1, '\0');
    };
    std::string rows;
    for (const std::size_t place : places) rows += row(1, place);
    for (int i = 0; i < count; ++i) rows += row(2, static_cast<std::size_t>(i) + 4);
    const std::size_t start = pdf.size();
    pdf += "999 0 obj\n<</Type/XRef/W[1 4 1]/Size 2000/Root 1 0 R/Index[1 " + std::to_string(places.size()) + " 1000 " +
           std::to_string(count) + "]/Length " + std::to_string(rows.size()) + ">>\nstream\n" + rows +
           "\nendstream\nendobj\n";
    return pdf + "startxref\n" + std::to_string(start) + "\n%%EOF\n";
}

std::string DeepArrays() { return Begin("/AF " + std::string(400000, '[') + std::string(400000, ']')).Make(); }

// --- Chains of a hundred thousand links ------------------------------------------------------------------------------

constexpr int chainLength = 100000;

// Objects from number 4 on, each of which leads to the next.
std::string Chain(const std::string& catalogMore, const std::string& before, const std::string& after,
                  const std::string& last = "<<>>") {
    Objects objects = Begin(catalogMore);
    for (int i = 0; i < chainLength; ++i) objects.Add("<<" + before + std::to_string(i + 5) + " 0 R" + after + ">>");
    objects.Add(last);
    return objects.Make();
}

std::string ChainOfSections() {
    const std::string good = Begin("").Make();
    std::string pdf = good;
    std::string previous = good.substr(good.rfind("startxref") + 10);
    previous.resize(previous.find('\n'));
    for (int i = 0; i < chainLength; ++i) {
        const std::size_t place = pdf.size();
        pdf += "xref\n0 0\ntrailer\n<</Size 4/Root 1 0 R/Prev " + previous + ">>\n";
        previous = std::to_string(place);
    }
    return pdf + "startxref\n" + previous + "\n%%EOF\n";
}

std::string ChainOfStreamLengths() {
    Objects objects = Begin("/AF 4 0 R");
    for (int i = 0; i < chainLength; ++i) {
        objects.Add("<</Length " + std::to_string(i + 5) + " 0 R>>\nstream\n\nendstream");
    }
    objects.Add("0");
    return objects.Make();
}

struct Case {
    const char* name;
    std::function<std::string()> make;
};

const Case cases[] = {
    {"objects inside each other", ObjectsInsideEachOther},
    {"headers far away", HeadersFarAway},
    {"one page many times", OnePageManyTimes},
    {"inherited by many pages", InheritedByManyPages},
    {"one attachment many times", OneAttachmentManyTimes},
    {"tree inside itself", TreeInsideItself},
    {"fields of one name", FieldsOfOneName},
    {"fonts of one name", FontsOfOneName},
    {"actions inside each other", ActionsInsideEachOther},
    {"sections inside each other", SectionsInsideEachOther},
    {"object streams that unpack to much", [] { return ObjectStreamsThatUnpackToMuch(10); }},
    {"deep arrays", DeepArrays},
    {"chain of sections", ChainOfSections},
    {"chain of stream lengths", ChainOfStreamLengths},
    {"chain of references",
     [] {
         Objects objects = Begin("/Names 4 0 R/AcroForm 4 0 R");
         for (int i = 0; i < chainLength; ++i) objects.Add(std::to_string(i + 5) + " 0 R");
         return objects.Make();
     }},
    {"chain of attachment nodes", [] { return Chain("/Names<</EmbeddedFiles 4 0 R>>", "/Kids[", "]"); }},
    {"chain of attachment nodes with limits",
     [] {
         return Chain("/Names<</EmbeddedFiles 4 0 R>>", "/Limits[(a)(b)]/Kids[", "]",
                      "<</Limits[(a)(b)]/Names[(a)(x)(b)(x)]>>");
     }},
    {"chain of folders", [] { return Chain("/Collection<</Folders 4 0 R>>", "/ID 1/Name(x)/Child ", ""); }},
    {"chain of neighbouring folders", [] { return Chain("/Collection<</Folders 4 0 R>>", "/ID 1/Name(x)/Next ", ""); }},
    {"chain of page nodes",
     [] {
         Objects objects;
         objects.Add("<</Type/Catalog/Pages 2 0 R>>");
         for (int i = 0; i < chainLength; ++i) {
             objects.Add("<</Type/Pages/Count 1/Kids[" + std::to_string(i + 3) + " 0 R]>>");
         }
         objects.Add("<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]>>");
         return objects.Make();
     }},
    {"chain of fields", [] { return Chain("/AcroForm<</Fields[4 0 R]>>", "/T(x)/Kids[", "]"); }},
    {"chain of elements", [] { return Chain("/StructTreeRoot<</K 4 0 R>>", "/S/P/K ", ""); }},
};

// The processor time of the work, which does not depend on what else the machine does; what it refuses is fine.
double Seconds(const std::function<void()>& work) {
    const std::clock_t start = std::clock();
    RunWithStack(smallStack, [&] {
        try {
            work();
        } catch (const PdfError&) {
        }
    });
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

long PeakMegabytes() {
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

TEST(Cost, HasALimitWhateverTheFile) {
    const TestFolder folder;
    for (const Case& c : cases) {
        const std::string bytes = c.make();
        const auto path = folder.MakeFile("a.pdf", bytes);
        const auto out = folder.Path("out.pdf");
        const double open = Seconds([&] { Document::Open(path, ""); });
        const double merge = Seconds([&] {
            Merger merger;
            merger.Add(Document::FromBytes(PdfMaker().Make()), {});
            merger.Add(Document::Open(path, ""), {});
            merger.Save(out);
        });
        const double attach = Seconds([&] {
            EditableDocument document(path, "");
            Attachment& attachment = document.Add("a.txt", "");
            attachment.SetContent("abc");
            document.FileInFolder(attachment, "/x/x");
            document.Save(path);
        });
        const double list = Seconds([&] { ListAttachments(*Document::Open(path, "")); });
        EXPECT_LT(open, secondsForOne) << c.name;
        EXPECT_LT(merge, secondsForOne) << c.name;
        EXPECT_LT(attach, secondsForOne) << c.name;
        EXPECT_LT(list, secondsForOne) << c.name;
        const std::size_t written = std::filesystem::exists(out) ? std::filesystem::file_size(out) : 0;
        EXPECT_LT(written, outputLimit) << c.name;
        std::filesystem::remove(out);
        std::printf(
            "%-36s %4zu KB: open %.2f s, merge %.2f s, attach %.2f s, list %.2f s, %zu MB written, %ld MB peak\n",
            c.name, bytes.size() / 1024, open, merge, attach, list, written >> 20, PeakMegabytes());
    }
}

}  // namespace
}  // namespace zavo::pdf
