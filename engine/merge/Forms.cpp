// The form of a merged file.
#include "engine/merge/Forms.h"

#include <unordered_set>

namespace zavo::pdf {

void MergedForms::Prepare(ObjectCopier& copier, const Dict& catalog) {
    Document& document = copier.Source();
    oldFields_.clear();
    oldOrder_.clear();
    ownNames_.clear();
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
        std::unordered_set<std::string> met;
        for (const Dict::Entry& member : membersDict.Entries()) {
            const std::string name = DecodeName(member.key);
            if (!met.insert(name).second) continue;
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
        if (isSignature && field.Has("V")) copier.EditOf(reference->number).removed.push_back("V");
        if (next.isTop) {
            RenameField(copier, reference->number, field);
            DictEdit& edit = copier.EditOf(reference->number);
            if (!field.Has("DA")) edit.added += inheritedAppearance_;
            if (!field.Has("Q")) edit.added += inheritedAlignment_;
        }
        const std::string_view kids = field.Find("Kids");
        const std::optional<Reference> list = ParseReference(kids);
        if (list && !seen.insert(list->number).second) continue;  // shared lists would multiply
        for (const std::string_view kid : ArrayItems(document.Resolve(kids))) {
            waiting.push_back({kid, false, isSignature});
        }
    }
}

// Fields of one name would share one value.
void MergedForms::RenameField(ObjectCopier& copier, std::uint32_t old, const Dict& field) {
    const std::string_view token = copier.Source().Resolve(field.Find("T"));
    if (!IsString(token)) return;
    const std::string name = TextToUtf8(DecodeString(token));
    if (!ownNames_.contains(name)) {
        const std::string free = TakeFreeName(name);
        ownNames_.emplace(name, free);
        if (free != name) copier.fields.emplace(name, free);
    }
    // Fields of one name in one input are one field in readers' eyes, and stay so.
    const std::string& other = ownNames_.at(name);
    if (other == name) return;
    DictEdit& edit = copier.EditOf(old);
    edit.removed.push_back("T");
    edit.added += "/T" + EncodeString(Utf8ToText(other));
}

std::string MergedForms::TakeFreeName(const std::string& name) {
    if (names_.emplace(name, 0).second) return name;
    for (unsigned number = names_[name] + 1;; ++number) {
        std::string candidate = name + "+" + std::to_string(number);
        if (!names_.emplace(candidate, 0).second) continue;
        names_[name] = number;
        return candidate;
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
