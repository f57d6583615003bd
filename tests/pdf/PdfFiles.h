// PDFs for tests, written by hand so that their form is known, and what other programs read in the engine's.
#pragma once

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/pdf/TestFolder.h"

// --- Other programs --------------------------------------------------------------------------------------------------

struct Ran {
    int code;
    std::string output;  // of both kinds
};

inline Ran Shell(const std::string& command) {
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen((command + " 2>&1").c_str(), "r"), [](FILE*) { return 0; });
    if (!pipe) return {-1, "cannot start " + command};
    std::string output;
    std::array<char, 4096> piece = {};
    while (const std::size_t got = fread(piece.data(), 1, piece.size(), pipe.get())) output.append(piece.data(), got);
    return {pclose(pipe.release()), output};
}

// A word of a shell's command line.
inline std::string Quoted(const std::filesystem::path& path) { return "'" + path.string() + "'"; }

inline void ExpectSound(const std::filesystem::path& pdf) {
    const Ran check = Shell("qpdf --check " + Quoted(pdf));
    EXPECT_EQ(check.code, 0) << check.output;
}

// Names, as a reader shows them, and contents of what is attached.
using Files = std::multiset<std::pair<std::string, std::string>>;

// Poppler numbers the files in the order of the tree. It does not know characters beyond the first 65536.
inline Files AttachmentsByPoppler(const std::filesystem::path& pdf) {
    Files files;
    const TestFolder folder;
    const Ran list = Shell("pdfdetach -enc UTF-8 -list " + Quoted(pdf));
    EXPECT_EQ(list.code, 0) << list.output;
    std::size_t line = list.output.find('\n') + 1;
    for (int number = 1; line != 0 && line < list.output.size(); ++number) {
        const std::size_t end = list.output.find('\n', line);
        const std::string prefix = std::to_string(number) + ": ";
        EXPECT_EQ(list.output.substr(line, prefix.size()), prefix) << list.output;
        const auto out = folder.Path("content");
        const Ran save = Shell("pdfdetach -save " + std::to_string(number) + " -o " + Quoted(out) + " " + Quoted(pdf));
        EXPECT_EQ(save.code, 0) << save.output;
        files.emplace(list.output.substr(line + prefix.size(), end - line - prefix.size()), ReadBytes(out));
        line = end + 1;
    }
    return files;
}

// The keys of the tree of attachments, in its order; qpdf complains where that is not sorted.
inline std::vector<std::string> AttachmentKeys(const std::filesystem::path& pdf) {
    const Ran list = Shell("qpdf --list-attachments " + Quoted(pdf));
    EXPECT_EQ(list.code, 0) << list.output;
    std::vector<std::string> keys;
    for (std::size_t line = 0; line < list.output.size();) {
        const std::size_t end = list.output.find('\n', line);
        const std::string text = list.output.substr(line, end - line);
        if (const std::size_t arrow = text.rfind(" -> "); arrow != std::string::npos)
            keys.push_back(text.substr(0, arrow));
        line = end + 1;
    }
    return keys;
}

// --- PDFs ------------------------------------------------------------------------------------------------------------

enum class Form { Table, Stream, Hybrid };

// A PDF of one page. Objects 1 to 3 are the catalog, the pages and the page; more can be added.
// A hybrid needs two more.
class PdfMaker {
public:
    std::string catalogMore;        // entries of the catalog
    std::vector<std::string> more;  // objects from number 4 on

    std::string Make(Form form = Form::Table) const {
        std::vector<std::string> objects = {"<</Type/Catalog/Pages 2 0 R" + catalogMore + ">>",
                                            "<</Type/Pages/Kids[3 0 R]/Count 1>>",
                                            "<</Type/Page/Parent 2 0 R/MediaBox[0 0 200 200]/Resources<<>>>>"};
        objects.insert(objects.end(), more.begin(), more.end());
        std::string pdf = "%PDF-1.7\n";
        if (form == Form::Table) {
            std::vector<std::size_t> places = {0};
            for (std::size_t i = 0; i < objects.size(); ++i) {
                places.push_back(pdf.size());
                pdf += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
            }
            const std::size_t place = pdf.size();
            return pdf + Table(places, {}) + "trailer\n<<" + Trailer(places.size()) + ">>\nstartxref\n" +
                   std::to_string(place) + "\n%%EOF\n";
        }

        // Two objects are inside an object stream: the catalog and the pages, but in a hybrid the last two, which a
        // reader that knows no such streams does not need.
        const std::size_t hidden = form == Form::Stream ? 1 : objects.size() - 1;
        const auto isHidden = [&](std::size_t number) { return number == hidden || number == hidden + 1; };
        const std::size_t streamNumber = objects.size() + 1;
        std::vector<std::size_t> places(streamNumber + 1);
        for (std::size_t number = 1; number < streamNumber; ++number) {
            if (isHidden(number)) continue;
            places[number] = pdf.size();
            pdf += std::to_string(number) + " 0 obj\n" + objects[number - 1] + "\nendobj\n";
        }
        const std::string& first = objects[hidden - 1];
        const std::string head =
            std::to_string(hidden) + " 0 " + std::to_string(hidden + 1) + " " + std::to_string(first.size() + 1) + " ";
        const std::string body = head + first + " " + objects[hidden];
        places[streamNumber] = pdf.size();
        pdf += std::to_string(streamNumber) + " 0 obj\n<</Type/ObjStm/N 2/First " + std::to_string(head.size()) +
               "/Length " + std::to_string(body.size()) + ">>\nstream\n" + body + "\nendstream\nendobj\n";

        const std::size_t place = pdf.size();
        const std::size_t own = streamNumber + 1;
        std::string rows = std::string(7, '\0');
        for (std::size_t i = 1; i <= streamNumber; ++i) {
            rows += isHidden(i) ? Row(2, streamNumber, i - hidden) : Row(1, places[i], 0);
        }
        rows += Row(1, place, 0);
        pdf += std::to_string(own) + " 0 obj\n<</Type/XRef/W[1 4 2]/Length " + std::to_string(rows.size()) +
               Trailer(own + 1) + ">>\nstream\n" + rows + "\nendstream\nendobj\n";
        std::size_t start = place;
        if (form == Form::Hybrid) {
            start = pdf.size();
            places.push_back(place);
            pdf += Table(places, {hidden, hidden + 1}) + "trailer\n<<" + Trailer(own + 1) + "/XRefStm " +
                   std::to_string(place) + ">>\n";
        }
        return pdf + "startxref\n" + std::to_string(start) + "\n%%EOF\n";
    }

private:
    static std::string Trailer(std::size_t size) { return "/Size " + std::to_string(size) + "/Root 1 0 R"; }

    static std::string Row(int kind, std::size_t place, std::size_t detail) {
        std::string row(1, static_cast<char>(kind));
        for (int shift = 24; shift >= 0; shift -= 8) row += static_cast<char>((place >> shift) & 0xFF);
        return row + static_cast<char>(detail >> 8) + static_cast<char>(detail & 0xFF);
    }

    // Of the objects from 1 on; those in `hidden` are called free.
    static std::string Table(const std::vector<std::size_t>& places, const std::vector<std::size_t>& hidden) {
        std::string table = "xref\n0 " + std::to_string(places.size()) + "\n0000000000 65535 f \n";
        for (std::size_t i = 1; i < places.size(); ++i) {
            const bool isHidden = std::find(hidden.begin(), hidden.end(), i) != hidden.end();
            std::array<char, 32> line = {};
            std::snprintf(line.data(), line.size(), isHidden ? "%010d 65535 f \n" : "%010d 00000 n \n",
                          isHidden ? 0 : static_cast<int>(places[i]));
            table += line.data();
        }
        return table;
    }
};
