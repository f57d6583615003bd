// The pages of a merged file: one balanced tree of all inputs' pages, and their labels.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/ObjectCopier.h"

namespace zavo::pdf {

class MergedPages {
public:
    explicit MergedPages(ObjectWriter& writer);

    // Gives the input's pages their numbers, so that what refers to them can be copied. Throws PdfError where its page
    // tree is damaged or has no pages.
    void Prepare(ObjectCopier& copier, const Dict& catalog);
    void Copy(ObjectCopier& copier);

    // A destination at the top of the first page of the input that was prepared last.
    std::string FirstPageDestination() const;

    // Writes the tree; gives the catalog's entries.
    std::string Finish(ObjectWriter& writer);

private:
    struct Inherited {
        std::string_view resources, mediaBox, cropBox, rotate;
    };
    struct Page {
        std::uint32_t old;
        std::uint32_t number;
        std::uint32_t parent;
        Inherited missing;  // what the page itself does not have
    };
    struct Leaf {
        std::uint32_t number = 0;
        std::string kids;
        std::size_t count = 0;
    };

    void AddPage(ObjectCopier& copier, std::uint32_t old, const Dict& page, const Inherited& inherited);
    void PrepareLabels(ObjectCopier& copier, const Dict& catalog, std::size_t firstIndex);

    // The copy of a value that several pages inherit; a large one becomes an object, which they share.
    const std::string& CopyInherited(ObjectCopier& copier, std::string_view value);

    std::uint32_t root_;
    std::unordered_map<const char*, std::string> inherited_;  // copies, by their places in the current input
    std::vector<Page> pages_;                                 // of the current input
    std::string firstTop_;                                    // top edge of its first page; empty when unknown
    std::vector<Leaf> leaves_;
    std::size_t count_ = 0;
    std::string labels_;
    bool hasLabels_ = false;
};

}  // namespace zavo::pdf
