// The form of a merged file: the fields of all inputs, with names of their own.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/ObjectCopier.h"

namespace zavo::pdf {

class MergedForms {
public:
    // Renames fields and fonts that clash with those of inputs before, and takes the values off signature fields: a
    // signature holds for the bytes of the file that it was made in. This copies fonts, so that it comes after
    // everything else that has names to change.
    void Prepare(ObjectCopier& copier, const Dict& catalog);
    void Copy(ObjectCopier& copier);

    // Gives the catalog's entries.
    std::string Finish(ObjectWriter& writer);

private:
    void TakeResources(ObjectCopier& copier, std::string_view resources);
    void WalkFields(ObjectCopier& copier);
    std::string TakeFreeName(const std::string& name);
    void RenameField(ObjectCopier& copier, std::uint32_t old, const Dict& field);

    // UTF-8 names of fields that have no parent, and the number that was given to the last of that name.
    std::unordered_map<std::string, unsigned> names_;
    std::map<std::string, std::map<std::string, std::string>> resources_;  // category, name, value
    std::map<std::string, std::string> otherResources_;                    // what is no dictionary, such as /ProcSet
    std::string defaultAppearance_;
    std::string alignment_;
    std::string fields_;
    std::string order_;
    bool needsAppearances_ = false;

    // Of the current input.
    Renames ownNames_;  // of all its fields that have no parent
    std::vector<std::string_view> oldFields_;
    std::vector<std::string_view> oldOrder_;
    // What its fields had from its form and would not have from the merged one.
    std::string inheritedAppearance_;
    std::string inheritedAlignment_;
};

}  // namespace zavo::pdf
