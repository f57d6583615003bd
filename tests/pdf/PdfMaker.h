// PDFs for tests, written by hand so that their form is known.
#pragma once

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <vector>

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
