// Empty portfolios.
#include "engine/Portfolio.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Dates.h"
#include "engine/File.h"
#include "engine/FileSystem.h"
#include "engine/Hash.h"

namespace zavo::pdf {

namespace {

// What a reader shows that knows no portfolios.
constexpr std::string_view pageContent =
    "BT\n"
    "/F1 20 Tf 72 720 Td (This document is a collection of files.) Tj\n"
    "/F1 12 Tf 0 -36 Td 18 TL (They are attached to it: open your PDF reader's list of attachments to see them,) Tj\n"
    "T* (or open this document in a reader that shows collections.) Tj\n"
    "ET\n";

}  // namespace

void WriteEmptyPortfolio(const std::filesystem::path& path) {
    if (filesystem::Exists(path)) throw FileError(Utf8FromPath(path) + ": exists already");
    const std::string now = DateText(static_cast<std::int64_t>(std::time(nullptr)));
    const std::string dates = "/CreationDate(" + now + ")/ModDate(" + now + ")";
    // Objects 1 to 9. The tree of attachments and the root folder are objects of their own, because what is attached
    // later changes the one and leads to the other.
    const std::array<std::string, 9> objects = {
        "<</Type/Catalog/Pages 2 0 R/Extensions<</ADBE<</BaseVersion/1.7/ExtensionLevel 3>>>>/PageMode/UseAttachments"
        "/Names 6 0 R/Collection 8 0 R>>",
        "<</Type/Pages/Kids[3 0 R]/Count 1>>",
        "<</Type/Page/Parent 2 0 R/MediaBox[0 0 612 792]/Resources<</Font<</F1 5 0 R>>>>/Contents 4 0 R>>",
        "<</Length " + std::to_string(pageContent.size()) + ">>\nstream\n" + std::string(pageContent) + "\nendstream",
        "<</Type/Font/Subtype/Type1/BaseFont/Helvetica/Encoding/WinAnsiEncoding>>",
        "<</EmbeddedFiles 7 0 R>>",
        "<</Names[]>>",
        "<</Type/Collection/View/D/Folders 9 0 R/Sort<</S/FileName/A true>>/Schema<</Type/CollectionSchema"
        "/FileName<</Type/CollectionField/Subtype/F/N(Name)/O 0>>"
        "/Desc<</Type/CollectionField/Subtype/Desc/N(Description)/O 1>>"
        "/ModDate<</Type/CollectionField/Subtype/ModDate/N(Modified)/O 2>>"
        "/CreationDate<</Type/CollectionField/Subtype/CreationDate/N(Created)/O 3>>"
        "/Size<</Type/CollectionField/Subtype/Size/N(Size)/O 4>>>>>>",
        "<</Type/Folder/ID 0/Name()" + dates + "/Free[1 2147483647]>>",
    };

    ReplacementFile file(path);
    file.Write("%PDF-1.7\n%\xE2\xE3\xCF\xD3\n");
    std::string table = "xref\n0 " + std::to_string(objects.size() + 1) + "\n0000000000 65535 f \n";
    std::uint64_t digest[2] = {1, 2};
    for (std::size_t i = 0; i < objects.size(); ++i) {
        std::array<char, 32> line = {};
        std::snprintf(line.data(), line.size(), "%010llu 00000 n \n", static_cast<unsigned long long>(file.Position()));
        table += line.data();
        file.Write(std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n");
        for (std::uint64_t& half : digest) half = HashBytes(objects[i], half);
    }
    // The path tells apart what two calls in one second make.
    const std::string name = Utf8FromPath(std::filesystem::absolute(path));
    std::array<char, 40> id = {};
    std::snprintf(id.data(), id.size(), "<%016llX%016llX>", static_cast<unsigned long long>(HashBytes(name, digest[0])),
                  static_cast<unsigned long long>(HashBytes(name, digest[1])));
    const std::uint64_t place = file.Position();
    file.Write(table + "trailer\n<</Size " + std::to_string(objects.size() + 1) + "/Root 1 0 R/ID[" + id.data() +
               id.data() + "]>>\nstartxref\n" + std::to_string(place) + "\n%%EOF\n");
    file.Commit();
}

}  // namespace zavo::pdf
