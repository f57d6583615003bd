// The layers (optional content) of a merged file.
#pragma once

#include <string>
#include <string_view>

#include "engine/ObjectCopier.h"

namespace zavo::pdf {

class MergedLayers {
public:
    void Copy(ObjectCopier& copier, const Dict& catalog);

    // Gives the catalog's entries.
    std::string Finish() const;

private:
    std::string groups_, off_, order_, usage_, radioGroups_, locked_, configurations_;
    std::string name_;  // of the first input's configuration
};

}  // namespace zavo::pdf
