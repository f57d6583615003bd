// The structure tree of a merged file.
#include "engine/merge/Tags.h"

#include <algorithm>

namespace zavo::pdf {

namespace {

// The standard structure types (ISO 32000-1, 14.8.4); they mean something without any map.
constexpr std::string_view standardRoles[] = {
    "Annot",   "Art",   "BibEntry", "BlockQuote", "Caption",   "Code",  "Div",  "Document", "Figure",  "Form",
    "Formula", "H",     "H1",       "H2",         "H3",        "H4",    "H5",   "H6",       "Index",   "L",
    "LBody",   "LI",    "Lbl",      "Link",       "NonStruct", "Note",  "P",    "Part",     "Private", "Quote",
    "RB",      "RP",    "RT",       "Reference",  "Ruby",      "Sect",  "Span", "TBody",    "TD",      "TFoot",
    "TH",      "THead", "TOC",      "TOCI",       "TR",        "Table", "WP",   "WT",       "Warichu"};

bool IsStandardRole(std::string_view name) {
    return std::find(std::begin(standardRoles), std::end(standardRoles), name) != std::end(standardRoles);
}

// A name like `name` that is not in `names`.
template <typename Names>
std::string FreeName(const Names& names, const std::string& name) {
    for (unsigned number = 2;; ++number) {
        std::string candidate = name + "_" + std::to_string(number);
        if (!names.contains(candidate)) return candidate;
    }
}

}  // namespace

MergedTags::MergedTags(ObjectWriter& writer, std::set<std::string> plainRoles)
    : root_(writer.Allocate()), plainRoles_(std::move(plainRoles)) {}

void MergedTags::Prepare(ObjectCopier& copier, const Dict& catalog) {
    Document& document = copier.Source();
    oldElements_ = {};
    oldParents_.clear();
    oldIdentifiers_.clear();
    mappedRoles_.clear();
    const std::string_view rootValue = catalog.Find("StructTreeRoot");
    const Dict root = document.ResolveDict(rootValue);
    oldElements_ = root.Find("K");
    oldNamespaces_ = ArrayItems(document.Resolve(root.Find("Namespaces")));
    if (oldElements_.empty()) return;
    if (const std::optional<Reference> reference = ParseReference(rootValue)) copier.Map(reference->number, root_);
    const Dict markInfo = document.ResolveDict(catalog.Find("MarkInfo"));
    isMarked_ = isMarked_ || document.Resolve(markInfo.Find("Marked")) == "true";

    if (root.Has("ParentTree")) {
        VisitNumberTree(document, root.Find("ParentTree"),
                        [this](std::int64_t key, std::string_view value) { oldParents_.emplace(key, value); });
    }
    copier.firstStructureKey = nextKey_;
    for (const auto& [key, value] : oldParents_) copier.structureKeys.push_back(key);
    nextKey_ += static_cast<std::int64_t>(oldParents_.size());

    if (root.Has("IDTree")) {
        VisitNameTree(document, root.Find("IDTree"), [&](std::string_view token, std::string_view value) {
            const std::string name = DecodeString(token);
            std::string free = identifiers_.TakeFreeName(
                name, [](const std::string& taken, unsigned number) { return taken + "#" + std::to_string(number); });
            if (free != name) copier.elementIds.emplace(name, free);
            oldIdentifiers_.emplace_back(std::move(free), value);
        });
    }
    PrepareRoles(copier, document.ResolveDict(root.Find("RoleMap")));
    PrepareClasses(copier, document.ResolveDict(root.Find("ClassMap")));
}

// A structure type that means something else in another input gets another name.
void MergedTags::PrepareRoles(ObjectCopier& copier, const Dict& roles) {
    Document& document = copier.Source();
    std::map<std::string, std::string> own;
    for (const Dict::Entry& entry : roles.Entries()) {
        std::string name = DecodeName(entry.key);
        std::string target = DecodeName(document.Resolve(entry.value));
        if (name != target) own.emplace(std::move(name), std::move(target));
    }
    for (const auto& [name, target] : own) {
        const auto known = roles_.find(name);
        const bool isOther = known != roles_.end() && known->second != target;
        if (!isOther && !IsStandardRole(name) && !plainRoles_.contains(name)) continue;
        std::string free = FreeName(roles_, name);
        while (own.contains(free) || plainRoles_.contains(free)) free = FreeName(roles_, free);
        copier.roles.emplace(name, std::move(free));
    }
    const auto renamed = [&copier](const std::string& name) {
        const auto other = copier.roles.find(name);
        return other == copier.roles.end() ? name : other->second;
    };
    for (const auto& [name, target] : own) {
        roles_.emplace(renamed(name), IsStandardRole(target) ? target : renamed(target));
        mappedRoles_.insert(renamed(name));
    }
}

void MergedTags::NoteUsedRoles(const ObjectCopier& copier) {
    for (const std::string& role : copier.usedRoles) {
        if (mappedRoles_.contains(role)) continue;
        plainRoles_.insert(role);
        missedPlainRoles_ = missedPlainRoles_ || roles_.contains(role);
    }
}

void MergedTags::PrepareClasses(ObjectCopier& copier, const Dict& classes) {
    std::map<std::string, std::string_view> own;  // of equal keys readers take the first
    for (const Dict::Entry& entry : classes.Entries()) own.emplace(DecodeName(entry.key), entry.value);
    for (const auto& [name, oldValue] : own) {
        std::string value = copier.Rewrite(oldValue);
        const auto [known, isNew] = classes_.emplace(name, value);
        if (isNew || known->second == value) continue;
        std::string free = FreeName(classes_, name);
        while (own.contains(free)) free = FreeName(classes_, free);
        classes_.emplace(free, std::move(value));
        copier.classes.emplace(name, std::move(free));
    }
}

void MergedTags::Copy(ObjectCopier& copier) {
    if (oldElements_.empty()) return;
    Document& document = copier.Source();
    const std::string_view resolved = document.Resolve(oldElements_);
    if (resolved.starts_with("[")) {
        for (const std::string_view item : ArrayItems(resolved)) elements_ += copier.Rewrite(item) + " ";
    } else {
        elements_ += copier.Rewrite(oldElements_) + " ";
    }
    std::int64_t key = copier.firstStructureKey;
    for (const auto& [old, value] : oldParents_) parents_.Add(copier.Writer(), key++, copier.Rewrite(value));
    for (const auto& [name, value] : oldIdentifiers_) identifiers_.Add(name, copier.Rewrite(value));
    for (const std::string_view item : oldNamespaces_) namespaces_ += copier.Rewrite(item) + " ";
}

std::string MergedTags::Finish(ObjectWriter& writer) {
    if (elements_.empty()) return {};
    std::string root = "<</Type/StructTreeRoot/K[" + elements_ + "]";
    if (!parents_.Empty()) {
        root += "/ParentTree " + ReferenceTo(parents_.Write(writer)) + "/ParentTreeNextKey " + std::to_string(nextKey_);
    }
    if (!identifiers_.Empty()) root += "/IDTree " + ReferenceTo(identifiers_.Write(writer));
    if (!namespaces_.empty()) root += "/Namespaces[" + namespaces_ + "]";
    if (!roles_.empty()) {
        root += "/RoleMap<<";
        for (const auto& [name, target] : roles_) root += EncodeName(name) + EncodeName(target);
        root += ">>";
    }
    if (!classes_.empty()) {
        root += "/ClassMap<<";
        for (const auto& [name, value] : classes_) root += EncodeName(name) + " " + value;
        root += ">>";
    }
    writer.WriteValue(root_, root + ">>");
    return "/StructTreeRoot " + ReferenceTo(root_) + (isMarked_ ? "/MarkInfo<</Marked true>>" : "");
}

}  // namespace zavo::pdf
