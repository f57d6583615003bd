// Writes a new PDF object by object: values into object streams, streams as they come, and one cross-reference stream.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/File.h"

namespace zavo::pdf {

// "12 0 R"
std::string ReferenceTo(std::uint32_t number);

class ObjectWriter {
public:
    // `version` as in "1.7". The file is written from its start.
    ObjectWriter(ReplacementFile& file, std::string_view version);

    // A number that no object has yet. What gets none in the end reads as null.
    std::uint32_t Allocate();

    void WriteValue(std::uint32_t number, std::string_view value);
    // `dictionary` has the stream's /Length; `bytes` are as its filters left them.
    void WriteStream(std::uint32_t number, std::string_view dictionary, std::string_view bytes);
    // A value under a number of its own.
    std::uint32_t Add(std::string_view value);

    // Writes what ends the file; `trailer` is the inside of the trailer's dictionary, with /Root.
    void Finish(std::string_view trailer);

private:
    struct Entry {
        std::uint64_t place = 0;
        std::uint32_t index = 0;
        std::uint8_t type = 0;  // as in a cross-reference stream: 0 free, 1 at an offset, 2 in an object stream
    };

    void Write(std::string_view bytes);
    void WriteObjectStream();
    std::string CrossReferenceTable(unsigned placeWidth) const;

    ReplacementFile& file_;
    std::vector<Entry> entries_;
    std::string values_;                                            // the object stream that is being filled
    std::vector<std::pair<std::uint32_t, std::size_t>> positions_;  // number and place of each of its values
    std::uint64_t digest_[2];                                       // of all bytes written
};

}  // namespace zavo::pdf
