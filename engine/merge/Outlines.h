// The bookmarks of a merged file: those of all inputs, one behind the other.
#pragma once

#include <string>

#include "engine/ObjectCopier.h"

namespace zavo::pdf {

class MergedOutlines {
public:
    explicit MergedOutlines(ObjectWriter& writer);

    // Finds the input's bookmarks. `isLast` tells that no input with bookmarks follows.
    void Prepare(ObjectCopier& copier, const Dict& catalog, bool isLast);
    // Adds them; an input without any gets one that is called `title` (UTF-8) and leads to `destination`.
    void Copy(ObjectCopier& copier, const std::string& title, const std::string& destination);

    // Writes the root; gives the catalog's entries.
    std::string Finish(ObjectWriter& writer);

private:
    std::uint32_t root_;
    std::uint32_t first_ = 0;  // of the whole file
    std::uint32_t next_ = 0;   // number kept for the first bookmark of the next input
    std::uint32_t last_ = 0;   // the last bookmark of the inputs before the current one
    std::int64_t visible_ = 0;

    // Of the current input.
    std::uint32_t own_ = 0;       // its first bookmark
    std::uint32_t ownLast_ = 0;   // its last, 0 when it has one only
    std::uint32_t oldFirst_ = 0;  // 0 when it has none
    std::uint32_t oldLast_ = 0;
};

}  // namespace zavo::pdf
