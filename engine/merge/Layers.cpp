// The layers (optional content) of a merged file.
#include "engine/merge/Layers.h"

#include <unordered_set>
#include <vector>

namespace zavo::pdf {

void MergedLayers::Copy(ObjectCopier& copier, const Dict& catalog) {
    Document& document = copier.Source();
    const Dict properties = document.ResolveDict(catalog.Find("OCProperties"));
    const std::vector<std::string_view> groups = ArrayItems(document.Resolve(properties.Find("OCGs")));
    if (groups.empty()) return;
    const Dict configuration = document.ResolveDict(properties.Find("D"));
    const auto items = [&](std::string_view key) { return ArrayItems(document.Resolve(configuration.Find(key))); };
    const auto append = [&](std::string& list, const std::vector<std::string_view>& values) {
        for (const std::string_view value : values) list += copier.Rewrite(value) + " ";
    };
    if (groups_.empty() && configuration.Has("Name")) name_ = "/Name " + copier.Rewrite(configuration.Find("Name"));
    append(groups_, groups);
    // The merged file shows what it does not name: inputs that hide by default name each layer that they hide.
    if (IsName(document.Resolve(configuration.Find("BaseState")), "OFF")) {
        std::unordered_set<std::uint32_t> shown;
        for (const std::string_view item : items("ON")) {
            if (const std::optional<Reference> group = ParseReference(item)) shown.insert(group->number);
        }
        for (const std::string_view item : groups) {
            const std::optional<Reference> group = ParseReference(item);
            if (group && !shown.contains(group->number)) off_ += copier.Rewrite(item) + " ";
        }
    } else {
        append(off_, items("OFF"));
    }
    append(order_, items("Order"));
    append(usage_, items("AS"));
    append(radioGroups_, items("RBGroups"));
    append(locked_, items("Locked"));
    append(configurations_, ArrayItems(document.Resolve(properties.Find("Configs"))));
}

std::string MergedLayers::Finish() const {
    if (groups_.empty()) return {};
    std::string entries = "/OCProperties<</OCGs[" + groups_ + "]/D<<" + name_;
    const auto add = [&entries](const char* key, const std::string& list) {
        if (!list.empty()) entries += std::string(key) + "[" + list + "]";
    };
    add("/OFF", off_);
    add("/Order", order_);
    add("/AS", usage_);
    add("/RBGroups", radioGroups_);
    add("/Locked", locked_);
    entries += ">>";
    add("/Configs", configurations_);
    return entries + ">>";
}

}  // namespace zavo::pdf
