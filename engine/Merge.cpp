// Puts several PDFs one behind the other into a new one.
#include "engine/Merge.h"

#include <algorithm>
#include <set>
#include <string>

#include "engine/ObjectCopier.h"
#include "engine/ObjectWriter.h"
#include "engine/merge/Forms.h"
#include "engine/merge/Layers.h"
#include "engine/merge/Names.h"
#include "engine/merge/Outlines.h"
#include "engine/merge/Pages.h"
#include "engine/merge/Tags.h"

namespace zavo::pdf {

namespace {

// What the merged file's catalog takes from its first input.
constexpr std::string_view firstInputsEntries[] = {"AA",       "Lang",       "Metadata",         "OpenAction",
                                                   "PageMode", "PageLayout", "PieceInfo",        "OutputIntents",
                                                   "URI",      "Extensions", "ViewerPreferences"};
// Catalog entries that are lists, of which the merged file has all inputs' items.
constexpr std::string_view lists[] = {"AF", "Threads"};

// One pass over all inputs into one file.
class MergePass {
public:
    MergePass(ReplacementFile& file, std::string_view version, const std::set<std::string>& plainRoles)
        : writer_(file, version),
          catalog_(writer_.Allocate()),
          pages_(writer_),
          outlines_(writer_),
          tags_(writer_, plainRoles) {}

    // Throws PdfError where the document is damaged; then the pass goes on, but its file is of no use.
    void Add(Document& document, const MergeOptions& options, bool isLastWithBookmarks) {
        document.BeginTask();
        ObjectCopier copier(document, writer_, shared_);
        const Dict catalog = document.Catalog();
        copier.Map(document.Root().number, catalog_);
        pages_.Prepare(copier, catalog);
        if (options.keepBookmarks) outlines_.Prepare(copier, catalog, isLastWithBookmarks);
        names_.Prepare(copier, catalog);
        tags_.Prepare(copier, catalog);
        if (options.keepFormFields) forms_.Prepare(copier, catalog);

        if (isFirst_) CopyFirstInputsEntries(copier, catalog);
        isFirst_ = false;
        pages_.Copy(copier);
        if (options.keepBookmarks) {
            const std::string fileName = Utf8FromPath(document.Path().stem());
            outlines_.Copy(copier, options.title.empty() ? fileName : options.title, pages_.FirstPageDestination());
        }
        names_.Copy(copier);
        if (options.keepFormFields) forms_.Copy(copier);
        tags_.Copy(copier);
        layers_.Copy(copier, catalog);
        for (std::size_t i = 0; i < std::size(lists); ++i) {
            for (const std::string_view item : ArrayItems(document.Resolve(catalog.Find(lists[i])))) {
                lists_[i] += copier.Rewrite(item) + " ";
            }
        }
        copier.Run();
        tags_.NoteUsedRoles(copier);
    }

    const MergedTags& Tags() const { return tags_; }

    void Finish() {
        std::string catalog = "<</Type/Catalog" + pages_.Finish(writer_);
        const std::string outlines = outlines_.Finish(writer_);
        catalog += outlines + names_.Finish(writer_) + forms_.Finish(writer_) + tags_.Finish(writer_) +
                   layers_.Finish() + firstInput_;
        for (std::size_t i = 0; i < std::size(lists); ++i) {
            if (!lists_[i].empty()) catalog.append("/").append(lists[i]).append("[").append(lists_[i]) += ']';
        }
        // A merged file is walked by its bookmarks, unless its first input says otherwise.
        if (!hasPageMode_ && !outlines.empty()) catalog += "/PageMode/UseOutlines";
        writer_.WriteValue(catalog_, catalog + ">>");
        writer_.Finish("/Root " + ReferenceTo(catalog_) + information_);
    }

private:
    void CopyFirstInputsEntries(ObjectCopier& copier, const Dict& catalog) {
        for (const std::string_view key : firstInputsEntries) {
            const std::string_view value = catalog.Find(key);
            if (value.empty()) continue;
            firstInput_.append("/").append(key).append(" ").append(copier.Rewrite(value));
        }
        hasPageMode_ = catalog.Has("PageMode");
        const std::string_view information = copier.Source().Trailer().Find("Info");
        if (ParseReference(information)) {
            const std::string reference = copier.Rewrite(information);
            if (reference != "null") information_ = "/Info " + reference;
        }
    }

    ObjectWriter writer_;
    SharedResources shared_;
    std::uint32_t catalog_;
    MergedPages pages_;
    MergedOutlines outlines_;
    MergedNames names_;
    MergedForms forms_;
    MergedTags tags_;
    MergedLayers layers_;
    std::string lists_[std::size(lists)];
    std::string firstInput_;
    bool hasPageMode_ = false;
    std::string information_;
    bool isFirst_ = true;
};

}  // namespace

void Merger::Add(std::shared_ptr<Document> document, const MergeOptions& options) {
    document->ReleaseBytes();  // of many inputs only the one that is being copied is in memory
    inputs_.push_back({std::move(document), options});
}

// The inputs without those that are damaged and cannot be repaired, or were repaired before.
std::vector<Merger::Input> Merger::RepairDamaged(const std::vector<Input>& inputs, const std::vector<bool>& isDamaged,
                                                 BeyondRepair beyondRepair) {
    std::vector<bool> wasPlain;  // asked first: one document may be there twice
    wasPlain.reserve(inputs.size());
    for (const Input& input : inputs) wasPlain.push_back(input.document->IsPlain());
    std::vector<Input> readable;
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        Document& document = *inputs[i].document;
        try {
            if (isDamaged[i] && (document.IsPlain() || !wasPlain[i])) document.Repair();
            readable.push_back(inputs[i]);
        } catch (const PdfError& error) {
            if (beyondRepair == BeyondRepair::IsAnError) {
                throw PdfError(Utf8FromPath(document.Path()) + ": " + error.what());
            }
        }
    }
    return readable;
}

void Merger::Save(const std::filesystem::path& path, BeyondRepair beyondRepair) {
    std::vector<Input> inputs = inputs_;
    std::set<std::string> plainRoles;
    // A pass that meets damage goes on, to find all of it at once; then the damaged inputs are repaired and the next
    // pass starts. The same for structure types that one input maps and a later one uses as they are.
    for (;;) {
        std::string version = "1.5";  // object streams need it
        for (const Input& input : inputs) version = std::max(version, input.document->Version());
        if (inputs.empty()) throw PdfError("there is nothing to merge");
        const auto last = std::find_if(inputs.rbegin(), inputs.rend(),
                                       [](const Input& input) { return input.options.keepBookmarks; });

        ReplacementFile file(path);
        MergePass pass(file, version, plainRoles);
        std::vector<bool> isDamaged(inputs.size());
        for (std::size_t i = 0; i < inputs.size(); ++i) {
            try {
                inputs[i].document->Bytes();  // nearly all of it is copied
                pass.Add(*inputs[i].document, inputs[i].options, last != inputs.rend() && &inputs[i] == &*last);
            } catch (const PdfError&) {
                isDamaged[i] = true;
            }
            inputs[i].document->ReleaseBytes();
        }
        const bool anyDamaged = std::find(isDamaged.begin(), isDamaged.end(), true) != isDamaged.end();
        if (!anyDamaged && !pass.Tags().MissedPlainRoles()) {
            pass.Finish();
            file.Commit();
            return;
        }
        if (pass.Tags().MissedPlainRoles()) plainRoles = pass.Tags().PlainRoles();
        if (anyDamaged) inputs = RepairDamaged(inputs, isDamaged, beyondRepair);
    }
}

}  // namespace zavo::pdf
