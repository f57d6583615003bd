// A PDF opened for reading: where its objects are, and their bytes. A file that is damaged or encrypted is repaired and
// decrypted once when it is opened (Normalise.h); after that it reads like any other.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/File.h"
#include "engine/Lexer.h"
#include "engine/PdfError.h"

namespace zavo::pdf {

class Document {
public:
    // Throws FileError where the file cannot be read and PdfError where it is no PDF or needs another password.
    static std::unique_ptr<Document> Open(const std::filesystem::path& path, std::string_view password);
    static std::unique_ptr<Document> FromBytes(std::string bytes, std::string_view password = {});
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    ~Document();

    const std::filesystem::path& Path() const { return path_; }
    const std::string& Password() const { return password_; }

    // Whether the file is read as it stands. One that had to be repaired or decrypted is read from a copy in memory.
    bool IsPlain() const { return !normalised_; }
    // Work with a document has a limit in proportion to its size, because files can be made to be read again and again:
    // objects inside objects, one page a million times. Whoever begins a task says so; what it costs is told by Spend,
    // which throws PdfError beyond the limit. Reading tells by itself.
    void BeginTask() { spent_ = 0; }
    void Spend(std::uint64_t bytes);
    // Whether a task came to that limit. Such a file is not worth a repair.
    bool IsExhausting() const { return isExhausting_; }

    // Goes over to a repaired copy; for whoever meets damage that opening did not see. Throws PdfError.
    void Repair();

    // One more than the highest object number.
    std::uint32_t ObjectLimit() const { return static_cast<std::uint32_t>(entries_.size()); }
    static constexpr std::uint64_t numberLimit = 8388608;  // object numbers end below it (ISO 32000-1, annex C)
    // Whether there is such an object; others read as null.
    bool Exists(std::uint32_t number) const { return number < entries_.size() && entries_[number].kind >= Kind::Plain; }
    std::uint32_t Generation(std::uint32_t number) const;

    // Where an object's value begins and the bytes from there on, at most to the end of what holds it; "null" for one
    // that does not exist. Only an object of the file itself can be a stream. Views are good until ReleaseBytes. Throws
    // PdfError.
    struct Place {
        std::string_view text;
        bool mayBeStream;
    };
    Place Locate(std::uint32_t number);

    struct Object {
        std::string_view value;
        std::string_view stream;  // raw, with its filters
        bool isStream;
    };
    Object Read(std::uint32_t number);

    // The raw bytes of the stream whose dictionary has just been taken from `lexer`, which runs over Locate's text;
    // nothing where no stream follows. Throws PdfError where its length is wrong.
    std::optional<std::string_view> TakeStream(Lexer& lexer, const Dict& dictionary);
    std::optional<std::string_view> TakeStream(Lexer& lexer, std::string_view lengthValue);

    // Follows references to a value that is none; "null" for what does not exist or goes in circles.
    std::string_view Resolve(std::string_view value);
    Dict ResolveDict(std::string_view value) { return Dict(Resolve(value)); }
    std::optional<std::int64_t> ResolveInteger(std::string_view value) { return ParseInteger(Resolve(value)); }

    // The stream's bytes without its filters; throws PdfError where it has any but Flate, or unpacks to far more
    // than the file's size lets expect.
    std::string Decode(const Object& stream);

    const std::string& Version() const { return version_; }  // of the PDF format, as in "1.7"
    const Dict& Trailer() const { return trailer_; }         // of the newest section
    Reference Root() const { return root_; }
    Dict Catalog() { return ResolveDict(rootText_); }

    // What a section appended to the file has to fit to.
    struct Sections {
        std::uint64_t newest = 0;  // offset of the newest cross-reference section
        unsigned count = 0;        // sections in the chain, those of hybrid files included
        bool isStream = false;     // whether the newest is a stream
        std::uint32_t size = 0;    // /Size
    };
    const Sections& CrossReference() const { return sections_; }
    enum class Kind : std::uint8_t { Unset, Free, Plain, InStream };
    struct Entry {
        std::uint64_t place = 0;   // Plain: offset in the file; InStream: number of the object stream
        std::uint32_t detail = 0;  // Plain and Free: generation; InStream: index in the stream
        Kind kind = Kind::Unset;
    };
    const Entry& EntryOf(std::uint32_t number) const { return entries_[number]; }

    std::uint64_t FileSize() const { return size_; }
    // The file's own bytes, or those of the repaired copy. Until they are asked for, a file is read only where its
    // objects are looked at: to attach something to a large one touches little of it.
    std::string_view Bytes();
    // Gives back the memory of the bytes and of what was unpacked from them, as far as it can be read again and is
    // worth reading again. Ends views.
    void ReleaseBytes();
    // Closes the file, so that it can be replaced; nothing may be read after it.
    void CloseFile();
    // Compares a part of Bytes() with `other`, without reading all of them.
    bool EqualAt(std::uint64_t offset, std::string_view other);
    // Passes on what Bytes() has, without keeping what is not kept yet.
    void CopyTo(const Sink& sink);

private:
    struct ObjectStream {
        std::string bytes;
        std::vector<std::pair<std::uint32_t, std::uint32_t>> objects;  // number, offset in bytes
    };

    Document() = default;
    void Load();
    void ReadStructure();
    std::size_t ReadTable(std::size_t position, std::vector<std::uint32_t>& freed);
    Dict ReadSection(std::uint64_t offset, bool newest);
    Dict ReadStreamSection(std::uint64_t offset);
    bool IsPlausible(std::uint64_t number) const;
    // What limits are in proportion to: the bytes as they are read.
    std::uint64_t ReadSize() const { return normalised_ ? own_.size() : size_; }
    bool IsInMemory() const { return normalised_ || !file_ || wholeRead_; }
    std::string_view Window(std::uint64_t offset, std::uint64_t count);
    std::string_view TakeValueAt(std::size_t& position);
    void ForgetBytes();
    bool SetEntry(std::uint64_t number, const Entry& entry);
    void CheckPlaces();
    const ObjectStream& LoadObjectStream(std::uint32_t number);

    std::filesystem::path path_;
    std::string password_;
    std::unique_ptr<InputFile> file_;
    std::uint64_t size_ = 0;
    Buffer buffer_;             // for the whole file
    std::vector<bool> isRead_;  // blocks of it
    bool wholeRead_ = false;
    std::vector<std::uint64_t> places_;  // of plain objects, in order; empty where the file is read whole
    std::string own_;                    // of a repaired copy
    bool normalised_ = false;

    std::vector<Entry> entries_;
    std::string version_;
    std::string trailerText_;
    Dict trailer_;
    std::string rootText_;
    Reference root_;
    Sections sections_;
    std::unordered_map<std::uint32_t, std::unique_ptr<ObjectStream>> objectStreams_;
    std::size_t unpacked_ = 0;  // bytes in objectStreams_
    bool readsObjectStream_ = false;
    bool isExhausting_ = false;
    std::uint64_t spent_ = 0;  // bytes read, unpacked and copied in the current task
};

}  // namespace zavo::pdf
