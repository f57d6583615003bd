// Damages PDFs at random.
#include "tests/pdf/mutate/Mutator.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <string_view>

#include "engine/Lexer.h"

namespace zavo::pdf {

namespace {

// What files that are made to harm are made of.
constexpr std::string_view names[] = {"/AF",
                                      "/AP",
                                      "/AcroForm",
                                      "/Annots",
                                      "/CO",
                                      "/ClassMap",
                                      "/Collection",
                                      "/Contents",
                                      "/Count",
                                      "/D",
                                      "/DA",
                                      "/DR",
                                      "/DecodeParms",
                                      "/Dest",
                                      "/Dests",
                                      "/EF",
                                      "/Encrypt",
                                      "/EmbeddedFiles",
                                      "/F",
                                      "/Fields",
                                      "/Filter",
                                      "/First",
                                      "/Font",
                                      "/GoTo",
                                      "/ID",
                                      "/IDTree",
                                      "/Index",
                                      "/K",
                                      "/Kids",
                                      "/Last",
                                      "/Length",
                                      "/Limits",
                                      "/N",
                                      "/Names",
                                      "/Next",
                                      "/Nums",
                                      "/OCProperties",
                                      "/ObjStm",
                                      "/Outlines",
                                      "/P",
                                      "/Page",
                                      "/PageLabels",
                                      "/Pages",
                                      "/Parent",
                                      "/ParentTree",
                                      "/Prev",
                                      "/Resources",
                                      "/Root",
                                      "/S",
                                      "/SMask",
                                      "/Sig",
                                      "/Size",
                                      "/StructParent",
                                      "/StructParents",
                                      "/StructTreeRoot",
                                      "/T",
                                      "/Title",
                                      "/Type",
                                      "/UF",
                                      "/V",
                                      "/W",
                                      "/XObject",
                                      "/XRef",
                                      "/XRefStm"};
constexpr std::string_view tokens[] = {"<<",
                                       ">>",
                                       "[",
                                       "]",
                                       "(",
                                       ")",
                                       "<",
                                       ">",
                                       "/",
                                       "%",
                                       "null",
                                       "stream",
                                       "endstream",
                                       "endobj",
                                       "1 0 R",
                                       "0 0 R",
                                       "1 0 obj",
                                       "xref",
                                       "trailer",
                                       "startxref\n0\n",
                                       "<</Type",
                                       "-1",
                                       "0",
                                       "1",
                                       "2147483647",
                                       "4294967296",
                                       "9223372036854775807",
                                       "99999999999999999999",
                                       "(\xFE\xFF\xD8)",
                                       "(\\",
                                       "<F",
                                       "1.5",
                                       "+-1",
                                       "R",
                                       "#00",
                                       "/#",
                                       "%%EOF\n",
                                       "\r",
                                       "\n"};
constexpr std::string_view numbers[] = {"0", "1", "2", "7", "-1", "65535", "65536", "8388607", "2147483648"};

std::size_t FindFrom(std::string_view bytes, std::string_view what, std::size_t start) {
    const std::size_t place = bytes.find(what, start);
    return place == std::string_view::npos ? bytes.find(what) : place;
}

// Writes `text` over what is at the place, with blanks to the end of it or, where it is longer, moving what follows.
void PutOver(std::string& bytes, std::size_t place, std::size_t size, std::string_view text) {
    std::string padded(text);
    padded.resize(std::max(size, text.size()), ' ');
    bytes.replace(place, size, padded);
}

}  // namespace

std::string Mutator::Make() {
    std::string bytes = AnyFile();
    const std::size_t count = 1 + (OneIn(2) ? 0 : Below(8));
    for (std::size_t i = 0; i < count; ++i) MutateOnce(bytes);
    return OneIn(4) ? WithNewTable(std::move(bytes)) : bytes;
}

// Short ones are the more likely.
std::size_t Mutator::RangeLength(std::size_t limit) {
    const std::size_t longest = std::size_t{1} << (1 + Below(16));
    return std::min(limit, 1 + Below(longest));
}

void Mutator::MutateOnce(std::string& bytes) {
    if (bytes.empty()) return;
    switch (Below(16)) {
        case 0: bytes.resize(Below(bytes.size())); break;
        case 1:
        case 2: FlipBytes(bytes); break;
        case 3: CutRange(bytes); break;
        case 4: CopyRange(bytes); break;
        case 5: SwapRanges(bytes); break;
        case 6:
        case 7:
        case 8: ChangeDigits(bytes); break;
        case 9:
        case 10:
        case 11: ChangeReference(bytes); break;
        case 12:
        case 13: ReplaceName(bytes); break;
        case 14: InsertToken(bytes); break;
        default: Splice(bytes); break;
    }
}

void Mutator::FlipBytes(std::string& bytes) {
    for (std::size_t i = 1 + Below(16); i > 0; --i) bytes[Below(bytes.size())] = static_cast<char>(Below(256));
}

void Mutator::CutRange(std::string& bytes) {
    const std::size_t place = Below(bytes.size());
    bytes.erase(place, RangeLength(bytes.size() - place));
}

void Mutator::CopyRange(std::string& bytes) {
    const std::size_t place = Below(bytes.size());
    const std::string part = bytes.substr(place, RangeLength(bytes.size() - place));
    const std::size_t target = Below(bytes.size());
    if (OneIn(2)) {
        bytes.insert(target, part);
    } else {
        bytes.replace(target, std::min(part.size(), bytes.size() - target), part);
    }
}

void Mutator::SwapRanges(std::string& bytes) {
    const std::size_t one = Below(bytes.size());
    const std::size_t other = Below(bytes.size());
    const std::size_t distance = one < other ? other - one : one - other;
    const std::size_t length = std::min({RangeLength(bytes.size()), distance, bytes.size() - std::max(one, other)});
    std::swap_ranges(bytes.begin() + static_cast<std::ptrdiff_t>(one),
                     bytes.begin() + static_cast<std::ptrdiff_t>(one + length),
                     bytes.begin() + static_cast<std::ptrdiff_t>(other));
}

// Of references, offsets, lengths and all other numbers.
void Mutator::ChangeDigits(std::string& bytes) {
    std::size_t place = Below(bytes.size());
    while (place < bytes.size() && !IsDigit(bytes[place])) ++place;
    std::size_t end = place;
    while (end < bytes.size() && IsDigit(bytes[end])) ++end;
    if (place == end) return;
    if (OneIn(3)) {
        PutOver(bytes, place, end - place, numbers[Below(std::size(numbers))]);
    } else {
        bytes[place + Below(end - place)] = static_cast<char>('0' + Below(10));
    }
}

// To another object, with as many digits.
void Mutator::ChangeReference(std::string& bytes) {
    const std::size_t end = FindFrom(bytes, " 0 R", Below(bytes.size()));
    if (end == std::string::npos) return;
    std::size_t begin = end;
    while (begin > 0 && IsDigit(bytes[begin - 1])) --begin;
    std::size_t limit = 1;
    for (std::size_t i = begin; i < end && limit < 1000000; ++i) limit *= 10;
    PutOver(bytes, begin, end - begin, std::to_string(Below(limit)));
}

void Mutator::ReplaceName(std::string& bytes) {
    const auto find = [this](const std::string& text, std::size_t& place) {
        place = text.empty() ? std::string::npos : FindFrom(text, "/", Below(text.size()));
        if (place == std::string::npos) return std::string_view();
        std::size_t end = place + 1;
        while (end < text.size() && IsRegular(text[end])) ++end;
        return std::string_view(text).substr(place, end - place);
    };
    std::size_t place = 0;
    std::size_t otherPlace = 0;
    const std::string_view old = find(bytes, place);
    if (old.empty()) return;
    const std::string_view known = names[Below(std::size(names))];
    const std::string_view other = OneIn(2) ? find(AnyFile(), otherPlace) : known;
    PutOver(bytes, place, old.size(), other.empty() ? known : other);
}

void Mutator::InsertToken(std::string& bytes) {
    const std::string_view token = tokens[Below(std::size(tokens))];
    const std::size_t place = Below(bytes.size());
    if (OneIn(2)) {
        bytes.insert(place, token);
    } else {
        bytes.replace(place, std::min(token.size(), bytes.size() - place), token);
    }
}

void Mutator::Splice(std::string& bytes) {
    const std::string& other = AnyFile();
    bytes.resize(Below(bytes.size()));
    bytes.append(other, Below(other.size()));
}

std::string WithNewTable(std::string bytes) {
    std::map<std::uint64_t, std::size_t> places;
    for (std::size_t at = bytes.find(" 0 obj"); at != std::string::npos; at = bytes.find(" 0 obj", at + 1)) {
        std::size_t begin = at;
        while (begin > 0 && at - begin < 6 && IsDigit(bytes[begin - 1])) --begin;
        if (begin == at) continue;
        const std::uint64_t number = std::stoull(bytes.substr(begin, at - begin));
        if (number > 0 && number < bytes.size()) places[number] = begin;
    }
    const std::size_t root = bytes.rfind("/Root");
    if (places.empty() || root == std::string::npos) return bytes;
    const std::string rootEntry = bytes.substr(root, bytes.find('R', root + 5) + 1 - root);
    const std::size_t start = bytes.size() + 1;
    bytes += "\nxref\n";
    for (const auto& [number, place] : places) {
        std::array<char, 32> line = {};
        std::snprintf(line.data(), line.size(), "%010zu 00000 n \n", place);
        bytes += std::to_string(number) + " 1\n" + line.data();
    }
    return bytes + "trailer\n<</Size " + std::to_string(places.rbegin()->first + 1) + rootEntry + ">>\nstartxref\n" +
           std::to_string(start) + "\n%%EOF\n";
}

}  // namespace zavo::pdf
