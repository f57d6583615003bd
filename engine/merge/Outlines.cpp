// The bookmarks of a merged file.
#include "engine/merge/Outlines.h"

#include <unordered_set>

namespace zavo::pdf {

MergedOutlines::MergedOutlines(ObjectWriter& writer) : root_(writer.Allocate()) {}

void MergedOutlines::Prepare(ObjectCopier& copier, const Dict& catalog, bool isLast) {
    Document& document = copier.Source();
    own_ = next_ ? next_ : copier.Writer().Allocate();
    if (!first_) first_ = own_;
    next_ = isLast ? 0 : copier.Writer().Allocate();
    oldFirst_ = 0;
    oldLast_ = 0;

    const std::string_view rootValue = catalog.Find("Outlines");
    if (const std::optional<Reference> reference = ParseReference(rootValue)) copier.Map(reference->number, root_);
    // The top level ends where it goes in circles.
    std::unordered_set<std::uint32_t> seen;
    std::string_view value = document.ResolveDict(rootValue).Find("First");
    for (std::optional<Reference> item = ParseReference(value); item; item = ParseReference(value)) {
        const Dict bookmark = document.ResolveDict(value);
        if (bookmark.Entries().empty() || !seen.insert(item->number).second) break;
        if (!oldFirst_) oldFirst_ = item->number;
        oldLast_ = item->number;
        const std::int64_t open = document.ResolveInteger(bookmark.Find("Count")).value_or(0);
        visible_ += 1 + (open > 0 && open < document.ObjectLimit() ? open : 0);
        value = bookmark.Find("Next");
    }

    std::string before;
    if (last_) before = "/Prev " + ReferenceTo(last_);
    std::string after;
    if (next_) after = "/Next " + ReferenceTo(next_);
    if (!oldFirst_) return;
    copier.Assign(oldFirst_, own_);
    DictEdit& firstEdit = copier.EditOf(oldFirst_);
    firstEdit.removed.emplace_back("Prev");
    firstEdit.added += before;
    ownLast_ = own_;
    if (oldLast_ != oldFirst_) {
        ownLast_ = copier.Writer().Allocate();
        copier.Assign(oldLast_, ownLast_);
    }
    DictEdit& lastEdit = copier.EditOf(oldLast_);
    lastEdit.removed.emplace_back("Next");
    lastEdit.added += after;
}

void MergedOutlines::Copy(ObjectCopier& copier, const std::string& title, const std::string& destination) {
    if (!oldFirst_) {
        std::string text =
            "<</Title" + EncodeString(Utf8ToText(title)) + "/Parent " + ReferenceTo(root_) + "/Dest" + destination;
        if (last_) text += "/Prev " + ReferenceTo(last_);
        if (next_) text += "/Next " + ReferenceTo(next_);
        copier.Writer().WriteValue(own_, text + ">>");
        ownLast_ = own_;
        ++visible_;
    }
    last_ = ownLast_;
}

std::string MergedOutlines::Finish(ObjectWriter& writer) {
    if (!first_) return {};
    writer.WriteValue(root_, "<</Type/Outlines/First " + ReferenceTo(first_) + "/Last " + ReferenceTo(last_) +
                                 "/Count " + std::to_string(visible_) + ">>");
    return "/Outlines " + ReferenceTo(root_);
}

}  // namespace zavo::pdf
