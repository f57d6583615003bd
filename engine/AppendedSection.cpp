// New and changed objects behind the bytes of a PDF.
#include "engine/AppendedSection.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

#include "engine/Deflate.h"
#include "engine/Hash.h"

namespace zavo::pdf {

namespace {

using Entry = Document::Entry;
using Kind = Document::Kind;

constexpr unsigned sectionLimit = 64;
constexpr std::uint64_t tableOffsetLimit = 10'000'000'000;  // ten digits
constexpr std::uint32_t neverReused = 65535;                // generation of a free number
constexpr std::size_t compressFrom = 4096;
constexpr std::uint64_t leastObjectSize = 3;  // bytes of a file for each of its numbers

// What the trailer of the new section says itself, and what only made sense in the dictionary that it stood in.
constexpr std::string_view ownKeys[] = {"Size",   "Prev",   "XRefStm",     "ID", "Type",    "W",  "Index",
                                        "Length", "Filter", "DecodeParms", "F",  "FFilter", "DL", "FDecodeParms"};

std::string HexText(std::uint64_t number) {
    std::array<char, 17> digits = {};
    std::snprintf(digits.data(), digits.size(), "%016llX", static_cast<unsigned long long>(number));
    return digits.data();
}

// Calls `run` with the begin and the end of every run of numbers that are not unset.
template <typename Run>
void ForEachRun(const std::vector<Entry>& entries, Run run) {
    for (std::size_t begin = 0; begin < entries.size();) {
        std::size_t end = begin;
        while (end < entries.size() && entries[end].kind != Kind::Unset) ++end;
        if (end > begin) run(begin, end);
        begin = end + 1;
    }
}

void AppendNumber(std::string& bytes, std::uint64_t number, unsigned width) {
    for (unsigned i = width; i-- > 0;) bytes += static_cast<char>((number >> (8 * i)) & 0xFF);
}

// The first number for new objects. What the trailer says counts unless the file has no room for so many objects:
// numbers from there would soon be none, and other readers take no such numbers.
std::uint32_t FirstNewNumber(const Document& document) {
    const std::uint32_t size = document.CrossReference().size;
    const std::uint32_t behindAll = std::max(document.ObjectLimit(), std::uint32_t{1});
    return size <= document.FileSize() / leastObjectSize ? std::max(behindAll, size) : behindAll;
}

}  // namespace

AppendedSection::AppendedSection(Document& document, ReplacementFile& file)
    : document_(document), file_(file), limit_(FirstNewNumber(document)) {
    document.CopyTo([&](std::string_view bytes) { file_.Write(bytes); });
    Write("\n");
}

void AppendedSection::Write(std::string_view bytes) {
    digest_[0] = HashBytes(bytes, digest_[0]);
    digest_[1] = HashBytes(bytes.substr(0, 4096), digest_[1] + bytes.size());
    file_.Write(bytes);
}

Reference AppendedSection::NewObject() {
    // The number behind it has to be a good one too: it becomes /Size.
    if (limit_ + 1 >= Document::numberLimit) throw PdfError("no object number is left");
    return {limit_++, 0};
}

void AppendedSection::Begin(Reference place) {
    written_.push_back({place, file_.Position()});
    Write(std::to_string(place.number) + " " + std::to_string(place.generation) + " obj\n");
}

void AppendedSection::WriteObject(Reference place, std::string_view value) {
    Begin(place);
    Write(value);
    Write("\nendobj\n");
}

void AppendedSection::WriteStream(Reference place, std::string_view dictionary, const Spool& content) {
    Begin(place);
    Write(dictionary);
    Write("\nstream\n");
    content.CopyTo([this](std::string_view bytes) { Write(bytes); });
    Write("\nendstream\nendobj\n");
}

void AppendedSection::Finish() {
    const Document::Sections& old = document_.CrossReference();
    const bool consolidated = old.count >= sectionLimit;
    std::vector<Entry> entries;
    if (consolidated) {
        entries.resize(document_.ObjectLimit());
        for (std::uint32_t i = 0; i < entries.size(); ++i) entries[i] = document_.EntryOf(i);
    }
    entries.resize(limit_);
    for (const Written& object : written_) {
        entries[object.place.number] = {object.offset, object.place.generation, Kind::Plain};
    }
    // A table has no words for objects in object streams; sections of both forms may be in one file then.
    const bool isStream = old.isStream || std::any_of(entries.begin(), entries.end(),
                                                      [](const Entry& entry) { return entry.kind == Kind::InStream; });
    std::uint64_t place = 0;
    if (isStream) {
        const Reference own = NewObject();
        place = file_.Position();
        entries.push_back({place, 0, Kind::Plain});
        if (consolidated) ChainFreeNumbers(entries);
        WriteStreamSection(own, entries, consolidated);
    } else {
        if (consolidated) ChainFreeNumbers(entries);
        place = file_.Position();
        WriteTable(entries, consolidated);
    }
    Write("startxref\n" + std::to_string(place) + "\n%%EOF\n");
}

// Links the numbers that no object has, as a section has to that stands for all.
void AppendedSection::ChainFreeNumbers(std::vector<Entry>& entries) {
    std::uint64_t next = 0;
    for (std::size_t number = entries.size(); number-- > 0;) {
        Entry& entry = entries[number];
        if (entry.kind == Kind::Plain || entry.kind == Kind::InStream) continue;
        if (entry.kind == Kind::Unset || number == 0) entry.detail = neverReused;
        entry.kind = Kind::Free;
        entry.place = next;
        next = number;
    }
}

// What the trailer says: the inside of its dictionary.
std::string AppendedSection::Trailer(bool consolidated) const {
    const Dict& old = document_.Trailer();
    std::string text = "/Size " + std::to_string(limit_);
    if (!consolidated) text += "/Prev " + std::to_string(document_.CrossReference().newest);
    for (const Dict::Entry& entry : old.Entries()) {
        const bool own = std::any_of(std::begin(ownKeys), std::end(ownKeys),
                                     [&](std::string_view key) { return IsName(entry.key, key); });
        if (!own) text.append("\n").append(entry.key).append(" ").append(entry.value);
    }
    // The first half of the identifier is the document's for ever, the second one is that of this state of it.
    const std::string state = "<" + HexText(digest_[0]) + HexText(digest_[1]) + ">";
    const std::vector<std::string_view> identifier = ArrayItems(old.Find("ID"));
    const bool known = identifier.size() == 2 && IsString(identifier[0]);
    return text.append("\n/ID[").append(known ? identifier[0] : state).append(state).append("]");
}

void AppendedSection::WriteTable(const std::vector<Entry>& entries, bool consolidated) {
    std::string table = "xref\n";
    ForEachRun(entries, [&](std::size_t begin, std::size_t end) {
        table += std::to_string(begin) + " " + std::to_string(end - begin) + "\n";
        for (std::size_t i = begin; i < end; ++i) {
            const Entry& entry = entries[i];
            if (entry.place >= tableOffsetLimit) throw PdfError("the file is too large for its form");
            std::array<char, 32> line = {};
            std::snprintf(line.data(), line.size(), "%010llu %05u %c \n", static_cast<unsigned long long>(entry.place),
                          entry.detail, entry.kind == Kind::Plain ? 'n' : 'f');
            table += line.data();
        }
    });
    Write(table + "trailer\n<<" + Trailer(consolidated) + ">>\n");
}

void AppendedSection::WriteStreamSection(Reference own, const std::vector<Entry>& entries, bool consolidated) {
    unsigned width = 1;
    while (width < 8 && (file_.Position() >> (8 * width)) != 0) ++width;  // nothing is behind this section

    std::string index;
    std::string table;
    ForEachRun(entries, [&](std::size_t begin, std::size_t end) {
        index += std::to_string(begin) + " " + std::to_string(end - begin) + " ";
        for (std::size_t i = begin; i < end; ++i) {
            const Entry& entry = entries[i];
            AppendNumber(table, entry.kind == Kind::Free ? 0 : entry.kind == Kind::Plain ? 1 : 2, 1);
            AppendNumber(table, entry.place, width);
            AppendNumber(table, entry.detail, 4);
        }
    });
    const bool compressed = table.size() >= compressFrom;
    if (compressed) table = Compress(table, 6);
    Write(std::to_string(own.number) + " 0 obj\n<</Type/XRef/W[1 " + std::to_string(width) + " 4]/Index[" + index +
          "]/Length " + std::to_string(table.size()) + (compressed ? "/Filter/FlateDecode" : "") +
          Trailer(consolidated) + ">>\nstream\n" + table + "\nendstream\nendobj\n");
}

}  // namespace zavo::pdf
