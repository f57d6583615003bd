// Puts several PDFs one behind the other into a new one that keeps what each of them has.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "engine/Document.h"

namespace zavo::pdf {

struct MergeOptions {
    bool keepBookmarks = true;
    bool keepFormFields = true;
    std::string title;  // UTF-8: names the bookmark of an input without any; empty: the file's name without extension
};

class Merger {
public:
    void Add(std::shared_ptr<Document> document, const MergeOptions& options);

    // Writes the merged PDF and puts it in place at once. An input that turns out to be damaged is repaired. Throws
    // PdfError where nothing is left to write, FileError where the file cannot be written; what was at `path` is then
    // as before. The same inputs give the same bytes.
    enum class BeyondRepair { IsLeftOut, IsAnError };
    void Save(const std::filesystem::path& path, BeyondRepair beyondRepair = BeyondRepair::IsLeftOut);

private:
    struct Input {
        std::shared_ptr<Document> document;
        MergeOptions options;
    };

    static std::vector<Input> RepairDamaged(const std::vector<Input>& inputs, const std::vector<bool>& isDamaged,
                                            BeyondRepair beyondRepair);

    std::vector<Input> inputs_;
};

}  // namespace zavo::pdf
