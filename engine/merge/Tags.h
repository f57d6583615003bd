// The structure tree of a merged file, which tells programs what is a heading, a paragraph, a table.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "engine/ObjectCopier.h"
#include "engine/Trees.h"

namespace zavo::pdf {

class MergedTags {
public:
    // `plainRoles` are structure types that some input uses as they are: no other input's may be mapped to another type
    // under that name.
    MergedTags(ObjectWriter& writer, std::set<std::string> plainRoles);

    void Prepare(ObjectCopier& copier, const Dict& catalog);
    void Copy(ObjectCopier& copier);
    // After all of the input is copied.
    void NoteUsedRoles(const ObjectCopier& copier);
    // Only when all is copied it shows which types an input uses. Whether some of them should have been in plainRoles;
    // if so the next pass needs all of PlainRoles, so that no third one meets further ones.
    bool MissedPlainRoles() const { return missedPlainRoles_; }
    const std::set<std::string>& PlainRoles() const { return plainRoles_; }

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
    std::map<std::string, std::string> roles_;  // name, name
    std::set<std::string> plainRoles_;          // names that are used without being in an input's map
    bool missedPlainRoles_ = false;
    std::map<std::string, std::string> classes_;  // name, value
    std::string namespaces_;
    bool isMarked_ = false;

    // Of the current input.
    std::string_view oldElements_;
    std::vector<std::string_view> oldNamespaces_;
    std::map<std::int64_t, std::string_view> oldParents_;
    std::vector<std::pair<std::string, std::string_view>> oldIdentifiers_;  // new name, value
    std::set<std::string> mappedRoles_;                                     // new names
};

}  // namespace zavo::pdf
