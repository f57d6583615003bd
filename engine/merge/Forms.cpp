// The form of a merged file.
#include "engine/merge/Forms.h"

#include <set>

namespace zavo::pdf {

void MergedForms::Prepare(ObjectCopier& copier, const Dict& catalog) {
    Document& document = copier.Source();
    oldFields_.clear();
    oldOrder_.clear();
    const Dict form = document.ResolveDict(catalog.Find("AcroForm"));
    oldFields_ = ArrayItems(document.Resolve(form.Find("Fields")));
    if (oldFields_.empty()) return;
    oldOrder_ = ArrayItems(document.Resolve(form.Find("CO")));
    needsAppearances_ = needsAppearances_ || document.Resolve(form.Find("NeedAppearances")) == "true";
    TakeResources(copier, form.Find("DR"));

    // The first input's defaults become the file's; fields of others take theirs along.
    const auto inherit = [&](const char* name, std::string& ours) {
        const std::string_view value = document.Resolve(form.Find(name));
        if (value.empty()) return std::string();
        // As an entry, because the copier renames the fonts in it by its key.
        std::string entry = copier.Rewrite("<</" + std::string(name) + " " + std::string(value) + ">>");
        entry = entry.substr(2, entry.size() - 4);
        if (fields_.empty()) ours = entry;
        return entry == ours ? std::string() : entry;
    };
    inheritedAppearance_ = inherit("DA", defaultAppearance_);
    inheritedAlignment_ = inherit("Q", alignment_);
    if (!form.Has("Q") && !alignment_.empty()) inheritedAlignment_ = "/Q 0";
    WalkFields(copier);
    RenameFields(copier);
}

void MergedForms::TakeResources(ObjectCopier& copier, std::string_view resources) {
    Document& document = copier.Source();
    const Dict categories = document.ResolveDict(resources);
    for (const Dict::Entry& category : categories.Entries()) {
        const std::string categoryName = DecodeName(category.key);
        const std::string_view members = document.Resolve(category.value);
        if (!members.starts_with("<<")) {
            otherResources_.emplace(categoryName, copier.Rewrite(category.value));
            continue;
        }
        std::map<std::string, std::string>& ours = resources_[categoryName];
        const Dict membersDict(members);
        std::unordered_set<std::string> seen;
        for (const Dict::Entry& member : membersDict.Entries()) {
            const std::string name = DecodeName(member.key);
            if (!seen.insert(name).second) continue;  // of equal keys readers take the first
            // The key tells the copier that this is a resource, so that equal ones get one number.
            std::string value =
                copier.Rewrite("<<" + std::string(category.key) + "<</X " + std::string(member.value) + ">>>>");
            value = value.substr(value.find("/X ") + 3);
            value.resize(value.size() - 4);
            const auto [known, isNew] = ours.emplace(name, value);
            if (isNew || known->second == value || categoryName != "Font") continue;
            std::string other = name;
            for (unsigned number = 2;; ++number) {
                other = name + "_" + std::to_string(number);
                const auto [taken, isFree] = ours.emplace(other, value);
                if (isFree || taken->second == value) break;
            }
            copier.fonts[name] = other;
        }
    }
}

void MergedForms::WalkFields(ObjectCopier& copier) {
    struct Waiting {
        std::string_view value;
        bool isTop;
        bool isSignature;
    };
    Document& document = copier.Source();
    std::unordered_set<std::uint32_t> seen;
    std::vector<Waiting> waiting;
    for (const std::string_view field : oldFields_) waiting.push_back({field, true, false});
    while (!waiting.empty()) {
        const Waiting next = waiting.back();
        waiting.pop_back();
        const std::optional<Reference> reference = ParseReference(next.value);
        if (!reference || !seen.insert(reference->number).second) continue;
        const Dict field = document.ResolveDict(next.value);
        const bool isSignature = field.Has("FT") ? IsName(document.Resolve(field.Find("FT")), "Sig") : next.isSignature;
        if (isSignature && field.Has("V")) copier.EditOf(reference->number).removed.emplace_back("V");
        if (next.isTop) {
            DictEdit& edit = copier.EditOf(reference->number);
            if (!field.Has("DA")) edit.added += inheritedAppearance_;
            if (!field.Has("Q")) edit.added += inheritedAlignment_;
        }
        const std::string_view kids = field.Find("Kids");
        const std::optional<Reference> list = ParseReference(kids);
        if (list && !seen.insert(list->number).second) continue;  // lists that fields share would multiply
        for (const std::string_view kid : ArrayItems(document.Resolve(kids))) {
            waiting.push_back({kid, false, isSignature});
        }
    }
}

// Fields of one name share one value: within an input they are meant to, but not with those of other inputs.
void MergedForms::RenameFields(ObjectCopier& copier) {
    Document& document = copier.Source();
    std::map<std::string, std::set<std::uint32_t>> own;  // by name in UTF-8: the fields that have it
    for (const std::string_view value : oldFields_) {
        const std::optional<Reference> reference = ParseReference(value);
        if (!reference) continue;
        const Dict field = document.ResolveDict(value);
        const std::string_view token = document.Resolve(field.Find("T"));
        if (IsString(token)) own[TextToUtf8(DecodeString(token))].insert(reference->number);
    }
    for (const auto& [name, fields] : own) {
        const auto known = names_.find(name);
        if (known == names_.end()) continue;
        std::string other;
        do {
            other = name + "+" + std::to_string(++known->second);
        } while (names_.contains(other) || own.contains(other));
        for (const std::uint32_t field : fields) {
            DictEdit& edit = copier.EditOf(field);
            edit.removed.emplace_back("T");
            edit.added += "/T" + EncodeString(Utf8ToText(other));
        }
        copier.fields.emplace(name, other);
    }
    for (const auto& [name, fields] : own) {
        const auto renamed = copier.fields.find(name);
        names_.try_emplace(renamed == copier.fields.end() ? name : renamed->second, 0);
    }
}

void MergedForms::Copy(ObjectCopier& copier) {
    const auto append = [&copier](std::string& list, const std::vector<std::string_view>& items) {
        for (const std::string_view item : items) {
            const std::string value = copier.Rewrite(item);
            if (value != "null") list += value + " ";
        }
    };
    append(fields_, oldFields_);
    append(order_, oldOrder_);
}

std::string MergedForms::Finish(ObjectWriter& writer) {
    if (fields_.empty()) return {};
    std::string form = "<</Fields[" + fields_ + "]" + defaultAppearance_ + alignment_;
    if (!order_.empty()) form += "/CO[" + order_ + "]";
    if (needsAppearances_) form += "/NeedAppearances true";
    std::string resources;
    for (const auto& [category, members] : resources_) {
        resources += EncodeName(category) + "<<";
        for (const auto& [name, value] : members) resources += EncodeName(name) + " " + value;
        resources += ">>";
    }
    for (const auto& [category, value] : otherResources_) resources += EncodeName(category) + " " + value;
    if (!resources.empty()) form += "/DR<<" + resources + ">>";
    return "/AcroForm " + ReferenceTo(writer.Add(form + ">>"));
}

}  // namespace zavo::pdf
