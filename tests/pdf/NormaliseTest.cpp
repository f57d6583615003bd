// Repairing, decrypting and extending whole documents: what comes out is read with qpdf, on a thread of a small stack.
#include "engine/Normalise.h"

#include <gtest/gtest.h>

#include <qpdf/Pl_Buffer.hh>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFEFStreamObjectHelper.hh>
#include <qpdf/QPDFEmbeddedFileDocumentHelper.hh>
#include <qpdf/QPDFFileSpecObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>
#include <random>

#include "engine/Deflate.h"
#include "engine/LargeStack.h"

namespace zavo::pdf {
namespace {

// A PDF of these objects, numbered from 1; the first is the catalogue.
std::string MakePdf(const std::vector<std::string>& objects) {
    std::string pdf = "%PDF-1.7\n%\xE2\xE3\xCF\xD3\n";
    std::string table = "0000000000 65535 f \n";
    int number = 0;
    for (const std::string& object : objects) {
        std::string offset = std::to_string(pdf.size());
        offset.insert(0, 10 - offset.size(), '0');
        table += offset + " 00000 n \n";
        pdf += std::to_string(++number) + " 0 obj\n" + object + "\nendobj\n";
    }
    const std::string start = std::to_string(pdf.size());
    const std::string size = std::to_string(objects.size() + 1);
    pdf += "xref\n0 " + size + "\n" + table + "trailer\n<</Size " + size + "/Root 1 0 R>>\n";
    return pdf + "startxref\n" + start + "\n%%EOF\n";
}

std::string MakeStream(const std::string& entries, const std::string& bytes) {
    return "<<" + entries + "/Length " + std::to_string(bytes.size()) + ">>\nstream\n" + bytes + "\nendstream";
}

const char* const pageText = "BT /F1 12 Tf (Kept as it is) Tj ET";
const char* const metadataText = "<?xpacket begin=''?><x:xmpmeta xmlns:x='adobe:ns:meta/'/><?xpacket end='w'?>";

// One page; its content is not compressed, its metadata is.
std::string PlainPdf() {
    return MakePdf({"<</Type/Catalog/Pages 2 0 R/Metadata 5 0 R/Info(a text)>>", "<</Type/Pages/Kids[3 0 R]/Count 1>>",
                    "<</Type/Page/Parent 2 0 R/MediaBox[0 0 595 842]/Contents 4 0 R/Annots[6 0 R]>>",
                    MakeStream("", pageText),
                    MakeStream("/Type/Metadata/Subtype/XML/Filter/FlateDecode", Compress(metadataText, 9)),
                    "<</Type/Annot/Subtype/Widget/FT/Sig/T(s)/Rect[0 0 1 1]/V<</Type/Sig/Filter/Adobe.PPKLite"
                    "/ByteRange[0 10 20 30]/Contents<00112233>>>>>"});
}

enum class Method { Plain, ObjectStreams, Rc4, Aes256 };

std::string WriteWithQpdf(std::string_view bytes, Method method, const char* userPassword) {
    QPDF pdf;
    pdf.processMemoryFile("input", bytes.data(), bytes.size());
    pdf.getRoot().getKey("/Metadata").setFilterOnWrite(false);
    QPDFWriter writer(pdf);
    writer.setOutputMemory();
    writer.setCompressStreams(false);
    if (method == Method::ObjectStreams) writer.setObjectStreamMode(qpdf_o_generate);
    if (method == Method::Rc4) {
        writer.setR3EncryptionParametersInsecure(userPassword, "owner", true, true, true, true, true, true,
                                                 qpdf_r3p_full);
    }
    if (method == Method::Aes256) {
        writer.setR6EncryptionParameters(userPassword, "owner", true, true, true, true, true, true, qpdf_r3p_full,
                                         true);
    }
    writer.write();
    const auto result = writer.getBufferSharedPointer();
    return {reinterpret_cast<const char*>(result->getBuffer()), result->getSize()};
}

// Reads with qpdf. `bytes` has to stay.
std::unique_ptr<QPDF> Read(const std::string& bytes, const char* password = "") {
    auto pdf = std::make_unique<QPDF>();
    pdf->setSuppressWarnings(true);
    pdf->processMemoryFile("result", bytes.data(), bytes.size(), password);
    return pdf;
}

std::string StreamText(QPDFObjectHandle stream) {
    const auto bytes = stream.getStreamData(qpdf_dl_all);
    return {reinterpret_cast<const char*>(bytes->getBuffer()), bytes->getSize()};
}

bool Contains(const std::string& bytes, std::string_view part) { return bytes.find(part) != std::string::npos; }

void OnSmallStack(const std::function<void()>& work) { RunWithStack(std::size_t{1} << 20, work); }

void ExpectNormal(const std::string& bytes) {
    EXPECT_TRUE(bytes.starts_with("%PDF-1."));
    EXPECT_TRUE(Contains(bytes, "\nxref\n0 "));
    EXPECT_FALSE(Contains(bytes, "/ObjStm"));
    EXPECT_FALSE(Contains(bytes, "/XRef"));
    EXPECT_FALSE(Contains(bytes, "/Encrypt"));
    EXPECT_TRUE(Contains(bytes, pageText));
    EXPECT_TRUE(Contains(bytes, Compress(metadataText, 9)));
    const std::unique_ptr<QPDF> pdf = Read(bytes);
    ASSERT_EQ(pdf->getAllPages().size(), 1U);
    for (const QPDFExc& warning : pdf->getWarnings()) ADD_FAILURE() << warning.what();
    EXPECT_EQ(pdf->getRoot().getKey("/Info").getUTF8Value(), "a text");
    QPDFObjectHandle signature = pdf->getAllPages()[0].getKey("/Annots").getArrayItem(0).getKey("/V");
    EXPECT_EQ(signature.getKey("/Contents").getStringValue(), std::string("\x00\x11\x22\x33", 4));
    EXPECT_EQ(signature.getKey("/ByteRange").getArrayNItems(), 4);
}

TEST(Normalise, PlainDocumentsStayAsTheyAre) {
    OnSmallStack([] { ExpectNormal(Normalise(PlainPdf(), "")); });
}

TEST(Normalise, ObjectStreamsAreUnpacked) {
    const std::string packed = WriteWithQpdf(PlainPdf(), Method::ObjectStreams, "");
    ASSERT_TRUE(Contains(packed, "/ObjStm"));
    OnSmallStack([&] { ExpectNormal(Normalise(packed, "")); });
}

TEST(Normalise, DamageIsRepaired) {
    const std::string plain = PlainPdf();
    std::string badStart = plain;
    badStart.replace(badStart.find("startxref\n") + 10, 1, "9");
    std::string badOffsets = plain;
    for (std::size_t at = badOffsets.find(" 00000 n"); at != std::string::npos;
         at = badOffsets.find(" 00000 n", at + 1)) {
        badOffsets[at - 1] = badOffsets[at - 1] == '3' ? '4' : '3';
    }
    OnSmallStack([&] {
        ExpectNormal(Normalise(plain.substr(0, plain.find("xref\n0 ")) + "trailer<</Root 1 0 R>>", ""));
        ExpectNormal(Normalise(plain.substr(0, plain.find("startxref")), ""));
        ExpectNormal(Normalise(badStart, ""));
        ExpectNormal(Normalise(badOffsets, ""));
        ExpectNormal(Normalise("From: a mail\r\n\r\n" + plain, ""));
        ExpectNormal(Normalise(plain + std::string(5000, 'x'), ""));
    });
}

TEST(Normalise, EncryptionIsTakenAway) {
    for (const Method method : {Method::Rc4, Method::Aes256}) {
        const std::string open = WriteWithQpdf(PlainPdf(), method, "");
        const std::string locked = WriteWithQpdf(PlainPdf(), method, "secret");
        ASSERT_TRUE(Contains(open, "/Encrypt"));
        ASSERT_FALSE(Contains(open, pageText));
        OnSmallStack([&] {
            ExpectNormal(Normalise(open, ""));
            ExpectNormal(Normalise(locked, "secret"));
            ExpectNormal(Normalise(locked, "owner"));
            EXPECT_THROW(Normalise(locked, ""), PdfError);
            EXPECT_THROW(Normalise(locked, "wrong"), PdfError);
        });
    }
}

TEST(Normalise, WhatIsNoPdfOrHasNoPagesIsRefused) {
    std::mt19937 random(1);
    std::string noise(20000, '\0');
    for (char& c : noise) c = static_cast<char>(random());
    OnSmallStack([&] {
        EXPECT_THROW(Normalise("", ""), PdfError);
        EXPECT_THROW(Normalise("a text", ""), PdfError);
        EXPECT_THROW(Normalise("PK\3\4", ""), PdfError);
        EXPECT_THROW(Normalise(noise, ""), PdfError);
        EXPECT_THROW(Normalise(PlainPdf().substr(0, 100), ""), PdfError);
        EXPECT_THROW(Normalise(MakePdf({"<</Type/Catalog>>"}), ""), PdfError);
        EXPECT_THROW(Normalise(MakePdf({"<</Type/Catalog/Pages 2 0 R>>", "<</Type/Pages/Kids[]/Count 0>>"}), ""),
                     PdfError);
        EXPECT_THROW(Normalise(MakePdf({"<</Type/Catalog/Pages 2 0 R>>", "<</Type/Pages/Kids[2 0 R]/Count 1>>"}), ""),
                     PdfError);
    });
}

TEST(Normalise, WhatDoesNotBeginLikeAPdfIsSaidToBeNone) {
    const auto errorOf = [](const std::string& bytes) {
        try {
            Normalise(bytes, "");
        } catch (const PdfError& error) {
            return std::string(error.what());
        }
        return std::string("no error");
    };
    EXPECT_EQ(errorOf(""), "this is not a PDF");
    EXPECT_EQ(errorOf("a text"), "this is not a PDF");
    EXPECT_EQ(errorOf(std::string(1024, ' ') + "%PDF-1.7"), "this is not a PDF");
    EXPECT_NE(errorOf(std::string(1000, ' ') + "%PDF-1.7"), "this is not a PDF");
    // What opens without a header still does.
    EXPECT_EQ(errorOf(PlainPdf().substr(8)), "no error");
}

TEST(Normalise, TheSameBytesGiveTheSameResult) {
    const std::string encrypted = WriteWithQpdf(PlainPdf(), Method::Aes256, "");
    EXPECT_TRUE(Normalise(encrypted, "") == Normalise(encrypted, ""));
    EXPECT_TRUE(Normalise(PlainPdf(), "") == Normalise(PlainPdf(), ""));
}

TEST(Normalise, NothingIsPrinted) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_THROW(Normalise("a text", ""), PdfError);
    Normalise(PlainPdf().substr(0, PlainPdf().size() - 20), "");
    // What qpdf finds fault with without knowing whose it is.
    std::string odd = PlainPdf();
    odd.replace(odd.find("/Kids["), 6, "/Kids[1 ");
    Normalise(odd, "");
    const std::string out = testing::internal::GetCapturedStdout();
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(out, "");
    EXPECT_EQ(err, "");
}

// Catalogue, pages, one page, and the objects of a chain from number 4, each of which points to the next.
std::string ChainPdf(const std::string& catalogue, const std::string& page, const std::string& before,
                     const std::string& after, int links) {
    std::vector<std::string> objects = {"<</Type/Catalog/Pages 2 0 R" + catalogue + ">>",
                                        "<</Type/Pages/Kids[3 0 R]/Count 1>>",
                                        "<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]" + page + ">>"};
    for (int link = 0; link + 1 < links; ++link) objects.push_back(before + std::to_string(link + 5) + " 0 R" + after);
    objects.push_back("<<>>");
    return MakePdf(objects);
}

TEST(Normalise, LongChainsCostNoStack) {
    constexpr int links = 100000;
    OnSmallStack([] {
        for (const std::string& pdf : {ChainPdf("", "/AA<</O 4 0 R>>", "<</S/URI/URI(x)/Next ", ">>", links),
                                       ChainPdf("/Outlines<</First 4 0 R>>", "", "<</Title(x)/Next ", ">>", links),
                                       ChainPdf("/AcroForm<</Fields[4 0 R]>>", "", "<</T(x)/Kids[", "]>>", links)}) {
            EXPECT_EQ(Read(Normalise(pdf, ""))->getObjectCount(), static_cast<std::size_t>(links) + 3);
        }
    });
}

// A tree of pages with this many levels over its one page.
std::string DeepPages(int levels, bool damaged) {
    std::vector<std::string> objects = {"<</Type/Catalog/Pages 2 0 R>>"};
    for (int level = 0; level < levels; ++level) {
        objects.push_back("<</Type/Pages/Count 1/Kids[" + std::to_string(level + 3) + " 0 R]>>");
    }
    objects.push_back("<</Type/Page/MediaBox[0 0 9 9]>>");
    const std::string pdf = MakePdf(objects);
    return damaged ? pdf.substr(0, pdf.rfind("startxref")) : pdf;
}

TEST(Normalise, PageTreesOfTooManyLevelsAreRefused) {
    OnSmallStack([] {
        for (const bool damaged : {false, true}) {
            const std::string pdf = Normalise(DeepPages(5000, damaged), "");
            RunWithLargeStack([&pdf] { EXPECT_EQ(Read(pdf)->getAllPages().size(), 1U); });
            EXPECT_THROW(Normalise(DeepPages(100000, damaged), ""), PdfError);
        }
    });
}

// Whether such a document is taken is qpdf's affair; that it does no harm is ours.
void NormaliseOrRefuse(const std::string& pdf) {
    try {
        EXPECT_TRUE(Normalise(pdf, "").starts_with("%PDF-"));
    } catch (const PdfError&) {
    }
}

TEST(Normalise, DeepNestingDoesNoHarm) {
    constexpr int levels = 100000;
    std::string arrays(levels, '[');
    arrays.append(levels, ']');
    std::string dictionaries;
    for (int level = 0; level < levels; ++level) dictionaries += "<</A";
    OnSmallStack([&] {
        NormaliseOrRefuse(ChainPdf("/X" + arrays, "", "", "", 1));
        NormaliseOrRefuse(ChainPdf("/X" + dictionaries, "", "", "", 1));
    });
}

TEST(Normalise, StreamsWhoseLengthsAreStreamsDoNoHarm) {
    constexpr int links = 300000;
    const std::string pdf = ChainPdf("/X 4 0 R", "", "<</Length ", ">>stream\nabc\nendstream", links);
    OnSmallStack([&] { NormaliseOrRefuse(pdf); });
}

QpdfAttachment Text(const std::string& name, const std::string& text) {
    QpdfAttachment attachment;
    attachment.name = name;
    attachment.size = text.size();
    attachment.content = [text](const Sink& sink) {
        for (std::size_t at = 0; at < text.size(); at += 3) sink(std::string_view(text).substr(at, 3));
    };
    return attachment;
}

std::string Rewrite(const std::string& bytes, const std::vector<QpdfAttachment>& attachments,
                    const char* password = "") {
    std::string result;
    OnSmallStack([&] {
        RewriteWithAttachments(bytes, password, attachments, [&](std::string_view piece) { result += piece; });
    });
    return result;
}

TEST(RewriteWithAttachments, FilesAndWhatIsKnownOfThemAreEmbedded) {
    QpdfAttachment stored = Text("Bericht \xC3\xA4 \xE2\x82\xAC.txt", "stored content");
    stored.description =
        "\xC3\x9C"
        "ber";
    stored.treeKeyPrefix = "<0>";
    stored.mimeType = "text/plain";
    stored.created = 0;
    stored.modified = 951827696;  // 2000-02-29 12:34:56
    stored.md5 = std::string("\0\1\2\3\4\5\6\7\x80\x90\xA0\xB0\xC0\xD0\xE0\xF0", 16);
    QpdfAttachment packed = Text("b.bin", Compress("packed content", 6));
    packed.deflated = true;
    packed.size = 14;
    packed.created = 253402300800;  // the year 10000

    const std::string result = Rewrite(PlainPdf(), {stored, packed});
    EXPECT_TRUE(Contains(result, "stored content"));
    EXPECT_TRUE(Contains(result, Compress("packed content", 6)));
    EXPECT_TRUE(Contains(result, pageText));
    EXPECT_TRUE(Contains(result, Compress(metadataText, 9)));
    const std::unique_ptr<QPDF> pdf = Read(result);
    QPDFEmbeddedFileDocumentHelper tree(*pdf);
    ASSERT_EQ(tree.getEmbeddedFiles().size(), 2U);

    const auto first = tree.getEmbeddedFile("<0>" + stored.name);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->getObjectHandle().getKey("/UF").getUTF8Value(), stored.name);
    EXPECT_EQ(first->getObjectHandle().getKey("/F").getStringValue(), "Bericht _ _.txt");
    EXPECT_EQ(first->getDescription(), stored.description);
    EXPECT_EQ(first->getEmbeddedFileStream("/F").getObjGen(), first->getEmbeddedFileStream("/UF").getObjGen());
    EXPECT_EQ(StreamText(first->getEmbeddedFileStream()), "stored content");
    QPDFEFStreamObjectHelper stream(first->getEmbeddedFileStream());
    EXPECT_EQ(stream.getSubtype(), "text/plain");
    EXPECT_EQ(stream.getSize(), 14U);
    EXPECT_EQ(stream.getCreationDate(), "D:19700101000000Z");
    EXPECT_EQ(stream.getModDate(), "D:20000229123456Z");
    EXPECT_EQ(stream.getChecksum(), stored.md5);

    const auto second = tree.getEmbeddedFile("b.bin");
    ASSERT_TRUE(second);
    EXPECT_EQ(StreamText(second->getEmbeddedFileStream()), "packed content");
    EXPECT_FALSE(second->getObjectHandle().hasKey("/Desc"));
    const QPDFObjectHandle params = second->getEmbeddedFileStream().getDict().getKey("/Params");
    EXPECT_EQ(params.unparse(), "<< /Size 14 >>");
}

TEST(RewriteWithAttachments, NamesThatExistGetANumber) {
    const std::string once = Rewrite(PlainPdf(), {Text("a.b.txt", "1"), Text("a.b.txt", "2"), Text("none", "3")});
    const std::string twice = Rewrite(once, {Text("a.b.txt", "4"), Text("none", "5"), Text(".hidden", "6"),
                                             Text(".hidden", "7"), Text("", "8"), Text("", "9")});
    const std::unique_ptr<QPDF> pdf = Read(twice);
    QPDFEmbeddedFileDocumentHelper tree(*pdf);
    std::string found;
    for (const auto& [key, file] : tree.getEmbeddedFiles()) {
        found += key + "=" + StreamText(file->getEmbeddedFileStream()) + " " + file->getFilename() + "\n";
    }
    EXPECT_EQ(found,
              "=8 \n"
              " (2)=9 \n"
              ".hidden=6 .hidden\n"
              ".hidden (2)=7 .hidden\n"
              "a.b (2).txt=2 a.b.txt\n"
              "a.b (3).txt=4 a.b.txt\n"
              "a.b.txt=1 a.b.txt\n"
              "none=3 none\n"
              "none (2)=5 none\n");
}

TEST(RewriteWithAttachments, EncryptionIsKept) {
    for (const Method method : {Method::Rc4, Method::Aes256}) {
        const std::string result = Rewrite(WriteWithQpdf(PlainPdf(), method, "user"), {Text("a", "content")}, "user");
        EXPECT_FALSE(Contains(result, "content"));
        EXPECT_THROW(Read(result), QPDFExc);
        const std::unique_ptr<QPDF> pdf = Read(result, "user");
        EXPECT_EQ(StreamText(QPDFEmbeddedFileDocumentHelper(*pdf).getEmbeddedFile("a")->getEmbeddedFileStream()),
                  "content");
        EXPECT_EQ(StreamText(pdf->getAllPages()[0].getKey("/Contents")), pageText);
        EXPECT_TRUE(Read(result, "owner")->ownerPasswordMatched());
    }
}

TEST(RewriteWithAttachments, WithoutAttachmentsTheDocumentIsWritten) {
    const std::string result = Rewrite(PlainPdf().substr(0, PlainPdf().rfind("startxref")), {});
    EXPECT_EQ(Read(result)->getAllPages().size(), 1U);
    EXPECT_FALSE(Read(result)->getRoot().hasKey("/Names"));
}

TEST(RewriteWithAttachments, WhatContentAndSinkThrowComesThrough) {
    QpdfAttachment unreadable = Text("a", "");
    unreadable.content = [](const Sink& sink) {
        sink("begin");
        throw FileError("unreadable");
    };
    const auto ignore = [](std::string_view) {};
    int written = 0;
    const auto full = [&](std::string_view) {
        ++written;
        throw FileError("full");
    };
    for (const Method method : {Method::Plain, Method::Aes256}) {
        const std::string pdf = WriteWithQpdf(PlainPdf(), method, "");
        EXPECT_THROW(RewriteWithAttachments(pdf, "", {unreadable}, ignore), FileError);
        EXPECT_THROW(RewriteWithAttachments(pdf, "", {Text("a", "content")}, full), FileError);
    }
    EXPECT_EQ(written, 2);
    EXPECT_THROW(RewriteWithAttachments("a text", "", {}, ignore), PdfError);
}

}  // namespace
}  // namespace zavo::pdf
