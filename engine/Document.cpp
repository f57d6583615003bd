// A PDF opened for reading.
#include "engine/Document.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

#include "engine/Deflate.h"
#include "engine/Normalise.h"

namespace zavo::pdf {

namespace {

constexpr std::string_view nullText = "null";
// What a task may cost: in proportion to the file, with room for small ones. Documents as they are meant cost a few
// times their size.
constexpr std::uint64_t freeWork = std::uint64_t{64} << 20;
constexpr std::uint64_t workFactor = 64;
constexpr std::uint64_t decodeLimit = std::uint64_t{128} << 20;  // one object or cross-reference stream, unpacked
constexpr std::uint64_t cacheLimit = std::uint64_t{1} << 30;     // all object streams of a document, unpacked
constexpr std::size_t headerLimit = 256;                         // of "12 0 obj", with what is between
constexpr int hopLimit = 64;                                     // references to references
constexpr std::uint64_t smallFile = std::uint64_t{128} << 10;    // kept in memory rather than read again
constexpr std::uint64_t looseObject = 512;                       // bytes; smaller ones are read with the whole file
constexpr std::uint64_t blockSize = 4096;                        // what of a file is read at least
constexpr std::uint64_t pieceSize = std::uint64_t{64} << 10;     // and at most where only the places are looked at
constexpr std::uint64_t tailSize = 4096;                         // where "startxref" has to be

std::uint64_t Digits(const char* text, std::size_t count) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        if (!IsDigit(text[i])) throw PdfError("a cross-reference entry is damaged");
        value = value * 10 + static_cast<std::uint64_t>(text[i] - '0');
    }
    return value;
}

bool IsVersion(std::string_view text) {
    return text.size() == 3 && IsDigit(text[0]) && text[1] == '.' && IsDigit(text[2]);
}

// Takes "12 0 obj" at the place. What is inside may not go on for ever: every object would be read to the file's end.
bool TakeHeader(std::string_view bytes, std::uint64_t place, std::size_t& behind, Reference& reference) {
    const auto begin = static_cast<std::size_t>(std::min<std::uint64_t>(place, bytes.size()));
    Lexer lexer(bytes.substr(0, begin + std::min(headerLimit, bytes.size() - begin)), begin);
    const std::optional<std::int64_t> number = ParseInteger(lexer.Next().text);
    const std::optional<std::int64_t> generation = ParseInteger(lexer.Next().text);
    if (!number || !generation || *number < 0 || *number >= static_cast<std::int64_t>(Document::numberLimit) ||
        *generation < 0 || *generation > 65535) {
        return false;
    }
    reference = {static_cast<std::uint32_t>(*number), static_cast<std::uint32_t>(*generation)};
    lexer.SkipBlanks();
    if (!lexer.Bytes().substr(lexer.Position()).starts_with("obj")) return false;
    behind = lexer.Position() + 3;
    return true;
}

}  // namespace

Document::~Document() = default;

std::unique_ptr<Document> Document::Open(const std::filesystem::path& path, std::string_view password) {
    std::unique_ptr<Document> document(new Document);
    document->path_ = path;
    document->password_ = password;
    document->file_ = std::make_unique<InputFile>(path);
    document->size_ = document->file_->Size();
    document->Load();
    return document;
}

std::unique_ptr<Document> Document::FromBytes(std::string bytes, std::string_view password) {
    std::unique_ptr<Document> document(new Document);
    document->password_ = password;
    document->size_ = bytes.size();
    document->own_ = std::move(bytes);
    document->Load();
    return document;
}

void Document::Load() {
    try {
        ReadStructure();
        if (!trailer_.Has("Encrypt")) return;
    } catch (const PdfError&) {
        // Repair says what is wrong where it cannot help.
    }
    Repair();
}

void Document::Repair() {
    if (normalised_ || isExhausting_) throw PdfError("the file is damaged beyond repair");
    std::string repaired = Normalise(Bytes(), password_);
    ReleaseBytes();
    own_ = std::move(repaired);
    normalised_ = true;
    ReadStructure();
}

std::string_view Document::Bytes() {
    if (normalised_ || !file_) return own_;
    if (!wholeRead_) Window(0, size_);
    wholeRead_ = true;
    return buffer_.View();
}

// The file's bytes up to `count` behind `offset`. Those before it may not have been read; places in the file are places
// in every window.
std::string_view Document::Window(std::uint64_t offset, std::uint64_t count) {
    const std::uint64_t size = ReadSize();
    offset = std::min(offset, size);
    const std::uint64_t end = offset + std::min(count, size - offset);
    if (IsInMemory()) return Bytes().substr(0, static_cast<std::size_t>(end));
    const auto blocks = static_cast<std::size_t>((size + blockSize - 1) / blockSize);
    if (isRead_.size() != blocks) {
        buffer_ = Buffer(static_cast<std::size_t>(size));
        isRead_.assign(blocks, false);
    }
    const auto last = static_cast<std::size_t>((end + blockSize - 1) / blockSize);
    for (auto block = static_cast<std::size_t>(offset / blockSize); block < last;) {
        const std::size_t first = block;
        while (block < last && !isRead_[block]) ++block;
        if (block > first) {
            const std::uint64_t begin = first * blockSize;
            const std::uint64_t behind = std::min<std::uint64_t>(block * blockSize, size);
            file_->ReadAt(begin, buffer_.Data() + begin, static_cast<std::size_t>(behind - begin));
            std::fill(isRead_.begin() + static_cast<std::ptrdiff_t>(first),
                      isRead_.begin() + static_cast<std::ptrdiff_t>(block), true);
        } else {
            ++block;
        }
    }
    return buffer_.View().substr(0, static_cast<std::size_t>(end));
}

// Takes the dictionary at `position`, however long it is; the position is behind it then.
std::string_view Document::TakeValueAt(std::size_t& position) {
    for (std::uint64_t count = blockSize;; count *= 8) {
        const std::string_view bytes = Window(position, count);
        try {
            Lexer lexer(bytes, position);
            const std::string_view value = TakeValue(lexer);
            position = lexer.Position();
            return value;
        } catch (const PdfError&) {
            if (bytes.size() == ReadSize()) throw;
        }
    }
}

void Document::ReleaseBytes() {
    objectStreams_.clear();
    unpacked_ = 0;
    if (size_ <= smallFile && file_) return;
    ForgetBytes();
}

void Document::ForgetBytes() {
    buffer_ = Buffer();
    isRead_.clear();
    wholeRead_ = false;
}

void Document::CloseFile() {
    ReleaseBytes();
    ForgetBytes();
    file_.reset();
}

bool Document::EqualAt(std::uint64_t offset, std::string_view other) {
    if (IsInMemory()) {
        const std::string_view bytes = Bytes();
        return offset <= bytes.size() && bytes.substr(offset, other.size()) == other;
    }
    char piece[16384];
    while (!other.empty()) {
        const std::size_t count = std::min(other.size(), sizeof piece);
        file_->ReadAt(offset, piece, count);
        if (std::memcmp(piece, other.data(), count) != 0) return false;
        offset += count;
        other.remove_prefix(count);
    }
    return true;
}

void Document::CopyTo(const Sink& sink) {
    if (IsInMemory()) {
        sink(Bytes());
    } else {
        file_->CopyTo(sink);
    }
}

std::uint32_t Document::Generation(std::uint32_t number) const {
    return Exists(number) && entries_[number].kind == Kind::Plain ? entries_[number].detail : 0;
}

// --- Cross-reference sections ----------------------------------------------------------------------------------------

void Document::ReadStructure() {
    BeginTask();
    entries_.clear();
    places_.clear();
    objectStreams_.clear();
    unpacked_ = 0;
    trailer_ = Dict();
    root_ = {};
    rootText_.clear();
    sections_ = {};

    if (size_ <= smallFile) Bytes();
    const std::string_view head = Window(0, 8);
    if (!head.starts_with("%PDF-")) throw PdfError("this is not a PDF");
    version_ = IsVersion(head.substr(5)) ? head.substr(5) : "1.7";
    const std::uint64_t tail = ReadSize() - std::min(ReadSize(), tailSize);
    const std::string_view bytes = Window(tail, tailSize);
    const std::size_t mark = bytes.rfind("startxref");
    if (mark == std::string_view::npos || mark < tail) throw PdfError("the file's end is missing");
    Lexer lexer(bytes, mark + 9);
    const std::optional<std::int64_t> start = ParseInteger(lexer.Next().text);
    if (!start || *start < 0) throw PdfError("the cross-reference section is not found");

    std::unordered_set<std::uint64_t> seen;
    sections_.newest = static_cast<std::uint64_t>(*start);
    for (std::uint64_t offset = sections_.newest;;) {
        if (!seen.insert(offset).second) throw PdfError("the cross-reference sections go in circles");
        const Dict trailer = ReadSection(offset, sections_.count == 0);
        for (const Dict::Entry& entry : trailer.Entries()) Spend(entry.value.size());
        ++sections_.count;
        if (rootText_.empty()) {
            if (const std::optional<Reference> root = ParseReference(trailer.Find("Root"))) {
                root_ = *root;
                rootText_ = trailer.Find("Root");
            }
        }
        const std::string_view previous = trailer.Find("Prev");
        if (previous.empty()) break;
        const std::optional<std::int64_t> place = ParseInteger(previous);
        if (!place || *place < 0) throw PdfError("the cross-reference section is not found");
        offset = static_cast<std::uint64_t>(*place);
    }
    CheckPlaces();
    if (trailer_.Has("Encrypt")) return;  // nothing can be read as it stands
    const Dict catalog = Catalog();
    if (!ResolveDict(catalog.Find("Pages")).Has("Kids")) throw PdfError("the file has no pages");
    const std::string_view version = Resolve(catalog.Find("Version"));
    if (IsVersion(version.substr(version.empty() ? 0 : 1))) version_ = std::max(version_, DecodeName(version));
}

Dict Document::ReadSection(std::uint64_t offset, bool newest) {
    if (offset >= ReadSize()) throw PdfError("the cross-reference section is not found");
    Lexer lexer(Window(offset, headerLimit), static_cast<std::size_t>(offset));
    Dict trailer;
    bool isStream = false;
    if (lexer.Next().text == "xref") {
        std::vector<std::uint32_t> freed;
        std::size_t position = ReadTable(lexer.Position(), freed);
        trailer = Dict(TakeValueAt(position));
        if (const std::string_view hybrid = trailer.Find("XRefStm"); !hybrid.empty()) {
            // The table calls free what only the stream knows.
            const std::optional<std::int64_t> place = ParseInteger(hybrid);
            if (!place || *place < 0) throw PdfError("the cross-reference section is not found");
            for (const std::uint32_t number : freed) entries_[number].kind = Kind::Unset;
            ReadStreamSection(static_cast<std::uint64_t>(*place));
            for (const std::uint32_t number : freed) {
                if (entries_[number].kind == Kind::Unset) entries_[number].kind = Kind::Free;
            }
            ++sections_.count;
        }
    } else {
        trailer = ReadStreamSection(offset);
        isStream = true;
    }
    if (newest) {
        sections_.isStream = isStream;
        const std::optional<std::int64_t> size = ParseInteger(trailer.Find("Size"));
        if (!size || *size < 0 || !IsPlausible(static_cast<std::uint64_t>(*size))) {
            throw PdfError("the cross-reference section is damaged");
        }
        sections_.size = static_cast<std::uint32_t>(*size);
        // The text is kept, because the file's bytes may be released.
        trailerText_ = "<<";
        for (const Dict::Entry& entry : trailer.Entries()) {
            trailerText_.append(entry.key).append(" ").append(entry.value).append("\n");
        }
        trailerText_ += ">>";
        trailer_ = Dict(trailerText_);
    }
    return trailer;
}

// `freed` gets the numbers that this table and no newer section calls free. Returns the place of the trailer.
std::size_t Document::ReadTable(std::size_t position, std::vector<std::uint32_t>& freed) {
    constexpr std::size_t entrySize = 20;
    for (;;) {
        Lexer lexer(Window(position, headerLimit), position);
        const Token token = lexer.Next();
        if (token.text == "trailer") return lexer.Position();
        const std::optional<std::int64_t> start = ParseInteger(token.text);
        const std::optional<std::int64_t> count = ParseInteger(lexer.Next().text);
        lexer.SkipBlanks();
        position = lexer.Position();
        if (!start || !count || *start < 0 || *count < 0 ||
            static_cast<std::uint64_t>(*count) > (ReadSize() - position) / entrySize) {
            throw PdfError("the cross-reference table is damaged");
        }
        const std::size_t length = static_cast<std::size_t>(*count) * entrySize;
        const std::string_view bytes = Window(position, length);
        for (std::int64_t i = 0; i < *count; ++i) {
            const char* const text = bytes.data() + position + static_cast<std::size_t>(i) * entrySize;
            const std::uint64_t place = Digits(text, 10);
            const auto generation = static_cast<std::uint32_t>(Digits(text + 11, 5));
            const char use = text[17];
            if (text[10] != ' ' || text[16] != ' ' || (use != 'n' && use != 'f')) {
                throw PdfError("the cross-reference table is damaged");
            }
            // Nothing can be at the file's very start: some writers mark unused numbers so.
            const Kind kind = use == 'n' && place != 0 ? Kind::Plain : Kind::Free;
            const auto number = static_cast<std::uint64_t>(*start) + static_cast<std::uint64_t>(i);
            if (SetEntry(number, {place, generation, kind}) && kind == Kind::Free) {
                freed.push_back(static_cast<std::uint32_t>(number));
            }
        }
        position += length;
    }
}

Dict Document::ReadStreamSection(std::uint64_t offset) {
    std::size_t behind = 0;
    Reference own;
    if (!TakeHeader(Window(offset, headerLimit), offset, behind, own)) {
        throw PdfError("the cross-reference section is not found");
    }
    Object object = {TakeValueAt(behind), {}, true};
    Dict trailer(object.value);
    const std::int64_t length = std::max<std::int64_t>(ResolveInteger(trailer.Find("Length")).value_or(0), 0);
    Lexer lexer(Window(behind, static_cast<std::uint64_t>(length) + headerLimit), behind);
    const std::optional<std::string_view> stream = TakeStream(lexer, trailer);
    if (!stream || !IsName(trailer.Find("Type"), "XRef")) throw PdfError("the cross-reference stream is damaged");
    object.stream = *stream;
    const std::string table = Decode(object);

    std::uint64_t widths[3];
    const std::vector<std::string_view> widthItems = ArrayItems(trailer.Find("W"));
    if (widthItems.size() != 3) throw PdfError("the cross-reference stream is damaged");
    for (std::size_t i = 0; i < 3; ++i) {
        const std::optional<std::int64_t> width = ParseInteger(widthItems[i]);
        if (!width || *width < 0 || *width > 8) throw PdfError("the cross-reference stream is damaged");
        widths[i] = static_cast<std::uint64_t>(*width);
    }
    const std::uint64_t entrySize = widths[0] + widths[1] + widths[2];
    if (entrySize == 0) throw PdfError("the cross-reference stream is damaged");

    std::vector<std::string_view> index = ArrayItems(trailer.Find("Index"));
    if (index.empty()) index = {"0", trailer.Find("Size")};
    entries_.reserve(static_cast<std::size_t>(table.size() / entrySize));
    std::size_t position = 0;
    for (std::size_t part = 0; part + 1 < index.size(); part += 2) {
        const std::optional<std::int64_t> start = ParseInteger(index[part]);
        const std::optional<std::int64_t> count = ParseInteger(index[part + 1]);
        if (!start || !count || *start < 0 || *count < 0) throw PdfError("the cross-reference stream is damaged");
        for (std::int64_t i = 0; i < *count && position + entrySize <= table.size(); ++i) {
            std::uint64_t fields[3] = {1, 0, 0};  // a type that is left out is 1
            for (std::size_t field = 0; field < 3; ++field) {
                if (widths[field] == 0) continue;
                std::uint64_t value = 0;
                for (std::uint64_t k = 0; k < widths[field]; ++k) {
                    value = (value << 8) | static_cast<unsigned char>(table[position++]);
                }
                fields[field] = value;
            }
            Entry entry{fields[1], static_cast<std::uint32_t>(fields[2]), Kind::Free};
            if (fields[0] == 1 && fields[1] != 0) entry.kind = Kind::Plain;
            if (fields[0] == 2) entry.kind = Kind::InStream;
            SetEntry(static_cast<std::uint64_t>(*start) + static_cast<std::uint64_t>(i), entry);
        }
    }
    return trailer;
}

// A number far beyond what the file has room for would only cost memory.
bool Document::IsPlausible(std::uint64_t number) const {
    return number < numberLimit && number <= (std::uint64_t{1} << 18) + 16 * ReadSize();
}

// The first section that names an object is the newest; false where one has done so.
bool Document::SetEntry(std::uint64_t number, const Entry& entry) {
    if (!IsPlausible(number)) throw PdfError("an object number is out of range");
    if (number >= entries_.size()) entries_.resize(number + 1);
    if (entries_[number].kind != Kind::Unset) return false;
    entries_[number] = entry;
    return true;
}

// Makes sure that every object is where it should be: what is not makes this a file to repair.
void Document::CheckPlaces() {
    std::vector<std::uint32_t> numbers;
    for (std::uint32_t number = 0; number < entries_.size(); ++number) {
        if (entries_[number].kind == Kind::Plain) numbers.push_back(number);
    }
    const auto check = [&](std::string_view bytes, std::uint64_t begin, std::uint32_t number) {
        Reference found;
        std::size_t behind = 0;
        const std::uint64_t place = entries_[number].place;
        if (place < begin || !TakeHeader(bytes, place - begin, behind, found) || found.number != number) {
            throw PdfError("an object is not where it should be");
        }
    };
    if (numbers.size() > size_ / looseObject) Bytes();
    if (IsInMemory()) {
        for (const std::uint32_t number : numbers) check(Bytes(), 0, number);
        return;
    }
    // Of a file of large objects only where they begin is looked at, in the order of the file and in few pieces.
    std::sort(numbers.begin(), numbers.end(),
              [&](std::uint32_t one, std::uint32_t other) { return entries_[one].place < entries_[other].place; });
    places_.reserve(numbers.size());
    for (const std::uint32_t number : numbers) places_.push_back(entries_[number].place);
    if (!places_.empty() && places_.back() >= size_) throw PdfError("an object is not where it should be");
    Buffer piece(pieceSize);
    for (std::size_t first = 0, next = 0; first < numbers.size(); first = next) {
        const std::uint64_t begin = places_[first];
        std::uint64_t end = begin;
        while (next < numbers.size() && places_[next] - begin <= pieceSize - headerLimit &&
               places_[next] - begin <= end - begin + blockSize) {
            end = std::min(places_[next++] + headerLimit, size_);
        }
        file_->ReadAt(begin, piece.Data(), static_cast<std::size_t>(end - begin));
        const std::string_view bytes = piece.View().substr(0, static_cast<std::size_t>(end - begin));
        for (std::size_t i = first; i < next; ++i) check(bytes, begin, numbers[i]);
    }
}

// --- Objects ---------------------------------------------------------------------------------------------------------

Document::Place Document::Locate(std::uint32_t number) {
    if (!Exists(number)) return {nullText, false};
    const Entry& entry = entries_[number];
    if (entry.kind == Kind::Plain) {
        // What a sound object is made of ends before the next one begins.
        const auto next = std::upper_bound(places_.begin(), places_.end(), entry.place);
        const std::uint64_t end = IsInMemory() || next == places_.end() ? ReadSize() : *next;
        const std::string_view bytes = Window(entry.place, end - std::min(end, entry.place));
        Reference found;
        std::size_t behind = 0;
        if (!TakeHeader(bytes, entry.place, behind, found) || found.number != number) {
            throw PdfError("an object is not where it should be");
        }
        return {bytes.substr(behind), true};
    }
    if (entry.place >= numberLimit) throw PdfError("an object stream is missing");
    const ObjectStream& stream = LoadObjectStream(static_cast<std::uint32_t>(entry.place));
    if (entry.detail < stream.objects.size() && stream.objects[entry.detail].first == number) {
        return {std::string_view(stream.bytes).substr(stream.objects[entry.detail].second), false};
    }
    throw PdfError("an object stream is damaged");
}

const Document::ObjectStream& Document::LoadObjectStream(std::uint32_t number) {
    if (const auto known = objectStreams_.find(number); known != objectStreams_.end()) return *known->second;
    if (!Exists(number) || entries_[number].kind != Kind::Plain) throw PdfError("an object stream is missing");
    // Its length and the like cannot be inside another (ISO 32000-1, 7.5.7): a chain of them would exhaust the stack.
    if (readsObjectStream_) throw PdfError("an object stream needs another");
    const struct Reading {
        bool& flag;
        explicit Reading(bool& which) : flag(which) { flag = true; }
        Reading(const Reading&) = delete;
        Reading& operator=(const Reading&) = delete;
        ~Reading() { flag = false; }
    } reading(readsObjectStream_);
    const Object object = Read(number);
    const Dict dictionary(object.value);
    const std::optional<std::int64_t> count = ResolveInteger(dictionary.Find("N"));
    const std::optional<std::int64_t> first = ResolveInteger(dictionary.Find("First"));
    if (!object.isStream || !count || !first || *count < 0 || *first < 0) {
        throw PdfError("an object stream is damaged");
    }
    auto stream = std::make_unique<ObjectStream>();
    stream->bytes = Decode(object);
    unpacked_ += stream->bytes.size();
    if (unpacked_ > cacheLimit) throw PdfError("the object streams are too large");
    if (static_cast<std::uint64_t>(*first) > stream->bytes.size()) throw PdfError("an object stream is damaged");
    Lexer lexer(std::string_view(stream->bytes).substr(0, static_cast<std::size_t>(*first)));
    for (std::int64_t i = 0; i < *count; ++i) {
        const std::optional<std::int64_t> own = ParseInteger(lexer.Next().text);
        const std::optional<std::int64_t> offset = ParseInteger(lexer.Next().text);
        if (!own || !offset || *own < 0 || *own >= static_cast<std::int64_t>(Document::numberLimit) || *offset < 0 ||
            *offset > static_cast<std::int64_t>(stream->bytes.size()) - *first) {
            throw PdfError("an object stream is damaged");
        }
        stream->objects.emplace_back(static_cast<std::uint32_t>(*own), static_cast<std::uint32_t>(*first + *offset));
    }
    std::unique_ptr<ObjectStream>& place = objectStreams_[number];
    place = std::move(stream);
    return *place;
}

Document::Object Document::Read(std::uint32_t number) {
    const Place place = Locate(number);
    Lexer lexer(place.text);
    Object object = {TakeValue(lexer), {}, false};
    if (place.mayBeStream && object.value.starts_with("<<")) {
        if (const std::optional<std::string_view> stream = TakeStream(lexer, Dict(object.value))) {
            object.stream = *stream;
            object.isStream = true;
        }
    }
    return object;
}

std::optional<std::string_view> Document::TakeStream(Lexer& lexer, const Dict& dictionary) {
    const std::size_t begin = lexer.Position();
    if (!lexer.Next().text.starts_with("stream")) return std::nullopt;
    lexer.MoveTo(begin);
    return TakeStream(lexer, dictionary.Find("Length"));
}

std::optional<std::string_view> Document::TakeStream(Lexer& lexer, std::string_view lengthValue) {
    const std::string_view keyword = lexer.Next().text;
    if (!keyword.starts_with("stream")) return std::nullopt;
    const std::string_view bytes = lexer.Bytes();
    std::size_t begin = lexer.Position();
    if (keyword.size() > 6 || begin >= bytes.size() || (bytes[begin] != '\r' && bytes[begin] != '\n')) {
        throw PdfError("a stream does not begin on a line of its own");
    }
    if (begin < bytes.size() && bytes[begin] == '\r') ++begin;
    if (begin < bytes.size() && bytes[begin] == '\n') ++begin;
    const std::optional<std::int64_t> length = ResolveInteger(lengthValue);
    if (!length || *length < 0 || static_cast<std::uint64_t>(*length) > bytes.size() - begin) {
        throw PdfError("a stream's length is wrong");
    }
    const auto count = static_cast<std::size_t>(*length);
    std::size_t end = begin + count;
    while (end < bytes.size() && IsWhite(bytes[end])) ++end;
    if (!bytes.substr(end).starts_with("endstream")) throw PdfError("a stream's length is wrong");
    lexer.MoveTo(end + 9);
    return bytes.substr(begin, count);
}

std::string_view Document::Resolve(std::string_view value) {
    for (int hop = 0; hop < hopLimit; ++hop) {
        const std::optional<Reference> reference = ParseReference(value);
        if (!reference) {
            Spend(value.size());
            return value;
        }
        Lexer lexer(Locate(reference->number).text);
        value = TakeValue(lexer);
    }
    return nullText;
}

void Document::Spend(std::uint64_t bytes) {
    spent_ += bytes;
    if (spent_ <= freeWork + workFactor * ReadSize()) return;
    isExhausting_ = true;
    throw PdfError("the file is made to be read without an end");
}

std::string Document::Decode(const Object& stream) {
    const auto limit = static_cast<std::size_t>(std::min(decodeLimit, freeWork + workFactor * ReadSize()));
    const Dict dictionary(stream.value);
    std::string_view filter = Resolve(dictionary.Find("Filter"));
    std::string_view parameters = Resolve(dictionary.Find("DecodeParms"));
    if (const std::vector<std::string_view> filters = ArrayItems(filter); !filters.empty()) {
        if (filters.size() > 1) throw PdfError("a stream has several filters");
        filter = Resolve(filters[0]);
        const std::vector<std::string_view> all = ArrayItems(parameters);
        if (!all.empty()) parameters = Resolve(all[0]);
    } else if (filter.starts_with("[")) {
        filter = {};
    }
    if (filter.empty() || filter == nullText) {
        if (stream.stream.size() > limit) throw PdfError("a stream is too large");
        return std::string(stream.stream);
    }
    if (!IsName(filter, "FlateDecode") && !IsName(filter, "Fl")) throw PdfError("a stream has an unexpected filter");
    std::string bytes;
    try {
        bytes = Inflate(stream.stream, limit);
    } catch (const PdfTooLarge&) {
        isExhausting_ = true;
        throw;
    }
    Spend(bytes.size());
    const Dict settings(parameters);
    const auto number = [&](std::string_view name, std::int64_t otherwise) {
        const std::int64_t value = ResolveInteger(settings.Find(name)).value_or(otherwise);
        if (value < 0 || value > 1 << 20) throw PdfError("a stream's predictor is damaged");
        return static_cast<int>(value);
    };
    const int predictor = number("Predictor", 1);
    if (predictor <= 1) return bytes;
    return UndoPredictor(bytes, predictor, number("Colors", 1), number("BitsPerComponent", 8), number("Columns", 1));
}

}  // namespace zavo::pdf
