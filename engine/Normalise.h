// Rewriting PDFs whole, for those that cannot be read or extended as they are: damaged and encrypted ones.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/File.h"
#include "engine/PdfError.h"

namespace zavo::pdf {

// Repairs and decrypts: the result has a classic cross-reference table, no object streams and no encryption; streams
// are as they were. The same bytes give the same result. Throws PdfError for what is no PDF, has no pages or needs
// another password.
std::string Normalise(std::string_view bytes, std::string_view password);

// A file to embed. Texts are UTF-8.
struct QpdfAttachment {
    std::string name;
    std::string description;
    std::string treeKeyPrefix;  // goes before the name in the tree of embedded files, where readers do not see it
    std::string mimeType;
    std::int64_t created = -1;  // seconds since 1970, -1 for unknown
    std::int64_t modified = -1;
    std::uint64_t size = 0;                         // of the file, without compression
    bool deflated = false;                          // whether `content` gives it in zlib's format
    std::string md5;                                // 16 bytes, or empty
    std::function<void(const Sink& sink)> content;  // has to give the same each time
};

// Writes the repaired document with further embedded files to `sink`. Encryption is kept, and so are streams as they
// were. Names that exist get a number. Throws PdfError as Normalise does, and whatever `content` or `sink` throws; what
// was written until then is of no use.
void RewriteWithAttachments(std::string_view bytes, std::string_view password,
                            const std::vector<QpdfAttachment>& attachments, const Sink& sink);

}  // namespace zavo::pdf
