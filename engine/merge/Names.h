// What a merged file finds by name: destinations, attachments, scripts and the like.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "engine/ObjectCopier.h"
#include "engine/Trees.h"

namespace zavo::pdf {

class MergedNames {
public:
    // Gives the input's names those that they will have, and tells the copier what destinations became.
    void Prepare(ObjectCopier& copier, const Dict& catalog);
    void Copy(ObjectCopier& copier);

    // Writes the trees; gives the catalog's entries.
    std::string Finish(ObjectWriter& writer);

private:
    struct Named {
        NameTreeBuilder* tree;
        std::string name;
        std::string_view value;
    };
    void Take(const std::string& category, const std::string& name, std::string_view value, Renames* renames);

    std::map<std::string, NameTreeBuilder> trees_;  // by category, as in the catalog's /Names
    std::vector<Named> named_;                      // of the current input
};

}  // namespace zavo::pdf
