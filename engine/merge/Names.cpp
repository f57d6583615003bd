// What a merged file finds by name.
#include "engine/merge/Names.h"

#include "engine/AttachmentNames.h"

namespace zavo::pdf {

namespace {

constexpr const char* destinationCategory = "Dests";
constexpr const char* attachmentCategory = "EmbeddedFiles";
// The other name trees of a catalog (ISO 32000-1, table 31).
constexpr const char* otherCategories[] = {
    "AP", "AlternatePresentations", "IDS", "JavaScript", "Pages", "Renditions", "Templates", "URLS"};

std::string NumberedName(const std::string& name, unsigned number) { return name + "#" + std::to_string(number); }

std::string NumberedAttachment(const std::string& name, unsigned number) {
    return Utf8ToText(NumberedFileName(TextToUtf8(name), number));
}

}  // namespace

void MergedNames::Take(const std::string& category, const std::string& name, std::string_view value, Renames* renames) {
    if (renames && renames->contains(name)) return;  // of two equal names readers take the first
    NameTreeBuilder& tree = trees_[category];
    std::string free = tree.TakeFreeName(name, category == attachmentCategory ? NumberedAttachment : NumberedName);
    if (renames) renames->emplace(name, free);
    named_.push_back({&tree, std::move(free), value});
}

void MergedNames::Prepare(ObjectCopier& copier, const Dict& catalog) {
    Document& document = copier.Source();
    named_.clear();
    const Dict names = document.ResolveDict(catalog.Find("Names"));
    const auto visit = [&](const char* category, Renames* renames) {
        if (!names.Has(category)) return;
        VisitNameTree(document, names.Find(category), [&](std::string_view name, std::string_view value) {
            Take(category, DecodeString(name), value, renames);
        });
    };
    visit(destinationCategory, &copier.destinations);
    // How destinations were named before there were name trees.
    const Dict oldDestinations = document.ResolveDict(catalog.Find("Dests"));
    for (const Dict::Entry& entry : oldDestinations.Entries()) {
        Take(destinationCategory, DecodeName(entry.key), entry.value, &copier.destinationNames);
    }
    visit(attachmentCategory, nullptr);
    for (const char* const category : otherCategories) visit(category, nullptr);
}

void MergedNames::Copy(ObjectCopier& copier) {
    for (const Named& named : named_) named.tree->Add(named.name, copier.Rewrite(named.value));
    named_.clear();
}

std::string MergedNames::Finish(ObjectWriter& writer) {
    std::string entries;
    for (auto& [category, tree] : trees_) {
        if (!tree.Empty()) entries += "/" + category + " " + ReferenceTo(tree.Write(writer));
    }
    return entries.empty() ? entries : "/Names<<" + entries + ">>";
}

}  // namespace zavo::pdf
