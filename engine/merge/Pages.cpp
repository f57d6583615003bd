// The pages of a merged file.
#include "engine/merge/Pages.h"

#include <map>

#include "engine/Trees.h"

namespace zavo::pdf {

namespace {

constexpr std::size_t fanOut = 50;
constexpr std::string_view letterPaper = "[0 0 612 792]";  // for a page that has no size at all

}  // namespace

MergedPages::MergedPages(ObjectWriter& writer) : root_(writer.Allocate()) {}

void MergedPages::Prepare(ObjectCopier& copier, const Dict& catalog) {
    struct Waiting {
        std::string_view value;
        Inherited inherited;
    };
    Document& document = copier.Source();
    pages_.clear();
    const std::size_t firstIndex = count_;
    std::unordered_set<std::uint32_t> seen;
    std::vector<Waiting> waiting;
    waiting.push_back({catalog.Find("Pages"), {}});
    while (!waiting.empty()) {
        const Waiting next = waiting.back();
        waiting.pop_back();
        const std::string_view text = document.Resolve(next.value);
        if (!text.starts_with("<<")) continue;
        const Dict node(text);
        const std::optional<Reference> reference = ParseReference(next.value);
        if (!reference) throw PdfError("a page is no object of its own");
        if (!node.Has("Kids")) {
            AddPage(copier, reference->number, node, next.inherited);
            continue;
        }
        if (!seen.insert(reference->number).second) throw PdfError("the page tree goes in circles");
        copier.Map(reference->number, root_);
        Inherited inherited = next.inherited;
        const auto inherit = [&node](std::string_view& value, std::string_view name) {
            if (const std::string_view own = node.Find(name); !own.empty()) value = own;
        };
        inherit(inherited.resources, "Resources");
        inherit(inherited.mediaBox, "MediaBox");
        inherit(inherited.cropBox, "CropBox");
        inherit(inherited.rotate, "Rotate");
        const std::vector<std::string_view> kids = ArrayItems(document.Resolve(node.Find("Kids")));
        document.Spend(kids.size() * sizeof(Waiting));  // nodes may share their kids
        for (std::size_t i = kids.size(); i-- > 0;) waiting.push_back({kids[i], inherited});
    }
    if (pages_.empty()) throw PdfError("the file has no pages");
    PrepareLabels(copier, catalog, firstIndex);
}

void MergedPages::AddPage(ObjectCopier& copier, std::uint32_t old, const Dict& page, const Inherited& inherited) {
    ObjectWriter& writer = copier.Writer();
    if (pages_.empty()) {
        const std::string_view box = page.Has("MediaBox") ? page.Find("MediaBox") : inherited.mediaBox;
        const std::vector<std::string_view> edges = ArrayItems(copier.Source().Resolve(box));
        firstTop_ = edges.size() == 4 && !ParseReference(edges[3]) ? edges[3] : std::string_view();
    }
    if (leaves_.empty() || leaves_.back().count == fanOut) {
        leaves_.emplace_back();
        leaves_.back().number = writer.Allocate();
    }
    Leaf& leaf = leaves_.back();
    Page copy{old, writer.Allocate(), leaf.number, inherited};
    if (page.Has("Resources")) copy.missing.resources = {};
    if (page.Has("MediaBox")) copy.missing.mediaBox = {};
    if (page.Has("CropBox")) copy.missing.cropBox = {};
    if (page.Has("Rotate")) copy.missing.rotate = {};
    if (copy.missing.mediaBox.empty() && !page.Has("MediaBox")) copy.missing.mediaBox = letterPaper;
    // What refers to a page that stands in the tree twice means its first place.
    if (!copier.IsMapped(old)) copier.Map(old, copy.number);
    leaf.kids += ReferenceTo(copy.number) + " ";
    ++leaf.count;
    ++count_;
    pages_.push_back(copy);
}

const std::string& MergedPages::CopyInherited(ObjectCopier& copier, std::string_view value) {
    constexpr std::size_t smallValue = 64;
    const auto [copy, isNew] = inherited_.try_emplace(value.data());
    if (isNew) {
        copy->second = copier.Rewrite(value);
        if (copy->second.starts_with("<<") || copy->second.size() > smallValue)
            copy->second = ReferenceTo(copier.Writer().Add(copy->second));
    }
    return copy->second;
}

void MergedPages::Copy(ObjectCopier& copier) {
    inherited_.clear();
    for (const Page& page : pages_) {
        DictEdit edit{{"Parent"}, "/Parent " + ReferenceTo(page.parent)};
        const auto add = [&](std::string_view name, std::string_view value) {
            if (!value.empty()) edit.added.append(name).append(" ").append(CopyInherited(copier, value));
        };
        add("/Resources", page.missing.resources);
        add("/MediaBox", page.missing.mediaBox);
        add("/CropBox", page.missing.cropBox);
        add("/Rotate", page.missing.rotate);
        copier.Copy(page.old, page.number, edit);
    }
}

std::string MergedPages::FirstPageDestination() const {
    const std::string page = "[" + ReferenceTo(pages_.front().number);
    return firstTop_.empty() ? page + "/Fit]" : page + "/XYZ null " + firstTop_ + " null]";
}

// Labels of an input without any are its page numbers, as a reader would show them.
void MergedPages::PrepareLabels(ObjectCopier& copier, const Dict& catalog, std::size_t firstIndex) {
    std::map<std::int64_t, std::string_view> labels;
    if (const std::string_view tree = catalog.Find("PageLabels"); !tree.empty()) {
        VisitNumberTree(copier.Source(), tree, [&](std::int64_t index, std::string_view value) {
            if (index >= 0 && index < static_cast<std::int64_t>(pages_.size())) labels.emplace(index, value);
        });
        hasLabels_ = hasLabels_ || !labels.empty();
    }
    labels.emplace(0, "<</S/D>>");
    for (const auto& [index, value] : labels) {
        labels_ += std::to_string(static_cast<std::int64_t>(firstIndex) + index) + " ";
        labels_.append(copier.Rewrite(value)) += '\n';
    }
}

std::string MergedPages::Finish(ObjectWriter& writer) {
    struct Node {
        std::uint32_t number;
        std::string kids;
        std::size_t count;
    };
    std::vector<Node> nodes;
    for (Leaf& leaf : leaves_) nodes.push_back({leaf.number, std::move(leaf.kids), leaf.count});
    const auto write = [&writer](const Node& node, const std::string& parent) {
        writer.WriteValue(node.number, "<</Type/Pages" + parent + "/Count " + std::to_string(node.count) + "/Kids[" +
                                           node.kids + "]>>");
    };
    for (bool isTop = false; !isTop;) {
        isTop = nodes.size() <= fanOut;
        std::vector<Node> upper;
        for (std::size_t begin = 0; begin < nodes.size(); begin += fanOut) {
            const std::size_t end = std::min(begin + fanOut, nodes.size());
            Node node{isTop ? root_ : writer.Allocate(), {}, 0};
            for (std::size_t i = begin; i < end; ++i) {
                write(nodes[i], "/Parent " + ReferenceTo(node.number));
                node.kids += ReferenceTo(nodes[i].number) + " ";
                node.count += nodes[i].count;
            }
            upper.push_back(std::move(node));
        }
        nodes = std::move(upper);
    }
    write(nodes.front(), "");
    std::string entries = "/Pages " + ReferenceTo(root_);
    if (hasLabels_) entries += "/PageLabels " + ReferenceTo(writer.Add("<</Nums[" + labels_ + "]>>"));
    return entries;
}

}  // namespace zavo::pdf
