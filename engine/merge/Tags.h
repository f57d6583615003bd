// The structure tree of a merged file, which tells programs what is a heading, a paragraph, a table.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "engine/ObjectCopier.h"
#include "engine/Trees.h"

namespace zavo::pdf {

class MergedTags {
public:
    explicit MergedTags(ObjectWriter& writer);

    void Prepare(ObjectCopier& copier, const Dict& catalog);
    void Copy(ObjectCopier& copier);

    // Gives the catalog's entries.
    std::string Finish(ObjectWriter& writer);

private:
    void PrepareRoles(ObjectCopier& copier, const Dict& roles);
    void PrepareClasses(ObjectCopier& copier, const Dict& classes);

    std::uint32_t root_;
    std::string elements_;
    NumberTreeBuilder parents_;
    std::int64_t nextKey_ = 0;
    NameTreeBuilder identifiers_;
    std::map<std::string, std::string> roles_;    // name, name token
    std::map<std::string, std::string> classes_;  // name, value
    std::string namespaces_;
    bool isMarked_ = false;

    // Of the current input.
    std::string_view oldElements_;
    std::vector<std::string_view> oldNamespaces_;
    std::map<std::int64_t, std::string_view> oldParents_;
    std::vector<std::pair<std::string, std::string_view>> oldIdentifiers_;  // new name, value
};

}  // namespace zavo::pdf
