// New and changed objects behind the bytes of a PDF, with the cross-reference section that makes them part of it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/Document.h"
#include "engine/File.h"

namespace zavo::pdf {

class AppendedSection {
public:
    // The document has to be plain; `file` is new. Copies the document's bytes to it.
    AppendedSection(Document& document, ReplacementFile& file);

    Reference NewObject();
    void WriteObject(Reference place, std::string_view value);
    // `dictionary` has the stream's /Length.
    void WriteStream(Reference place, std::string_view dictionary, const Spool& content);

    // Writes the cross-reference section: in the form of the newest one, and with what it adds only, unless it would be
    // one too many; then it stands for all earlier ones.
    void Finish();

private:
    struct Written {
        Reference place;
        std::uint64_t offset;
    };

    void Begin(Reference place);
    void Write(std::string_view bytes);
    static void ChainFreeNumbers(std::vector<Document::Entry>& entries);
    void WriteTable(const std::vector<Document::Entry>& entries, bool consolidated);
    void WriteStreamSection(Reference own, const std::vector<Document::Entry>& entries, bool consolidated);
    std::string Trailer(bool consolidated) const;

    Document& document_;
    ReplacementFile& file_;
    std::uint32_t limit_;  // one more than the highest object number
    std::vector<Written> written_;
    std::uint64_t digest_[2] = {1, 2};  // of what was appended
};

}  // namespace zavo::pdf
