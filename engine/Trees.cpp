// Name trees and number trees.
#include "engine/Trees.h"

#include <algorithm>
#include <unordered_set>

namespace zavo::pdf {

namespace {

constexpr std::size_t fanOut = 64;
constexpr std::uint64_t costOfEntry = 1024;  // of keeping one: nodes may have the same entries again and again
// Each node inside another's text is read once more with it, and should be an object of its own anyway.
constexpr int directDepthLimit = 16;

template <typename Visit>
void VisitTree(Document& document, std::string_view root, std::string_view pairs, const Visit& visit) {
    struct Waiting {
        std::string_view value;
        int directDepth;  // nodes around it that are no objects of their own
    };
    std::unordered_set<std::uint32_t> seen;
    const auto isNew = [&seen](std::string_view value) {
        const std::optional<Reference> reference = ParseReference(value);
        return !reference || seen.insert(reference->number).second;
    };
    const auto arrayOf = [&](std::string_view value) {
        return isNew(value) ? ArrayItems(document.Resolve(value)) : std::vector<std::string_view>();
    };
    std::vector<Waiting> waiting{{root, 0}};
    while (!waiting.empty()) {
        const Waiting next = waiting.back();
        waiting.pop_back();
        if (!isNew(next.value)) continue;
        const Dict node = document.ResolveDict(next.value);
        const std::vector<std::string_view> items = arrayOf(node.Find(pairs));
        for (std::size_t i = 0; i + 1 < items.size(); i += 2) {
            document.Spend(costOfEntry);
            visit(document.Resolve(items[i]), items[i + 1]);
        }
        const int directDepth = ParseReference(next.value) ? 0 : next.directDepth + 1;
        if (directDepth > directDepthLimit) continue;
        const std::vector<std::string_view> kids = arrayOf(node.Find("Kids"));
        for (std::size_t i = kids.size(); i-- > 0;) waiting.push_back({kids[i], directDepth});
    }
}

std::string KeyText(std::string_view key) { return EncodeString(key); }
std::string KeyText(std::int64_t key) { return std::to_string(key); }

template <typename Key>
std::string Limits(const TreeNode<Key>& node) {
    return "/Limits[" + KeyText(node.first) + " " + KeyText(node.last) + "]";
}

// Writes all nodes above the given ones; gives the root's number.
template <typename Key>
std::uint32_t WriteUpperNodes(ObjectWriter& writer, std::vector<TreeNode<Key>> nodes) {
    const auto kids = [&nodes](std::size_t begin, std::size_t end) {
        std::string text = "/Kids[";
        for (std::size_t i = begin; i < end; ++i) text += ReferenceTo(nodes[i].number) + " ";
        return text + "]>>";
    };
    while (nodes.size() > fanOut) {
        std::vector<TreeNode<Key>> upper;
        for (std::size_t begin = 0; begin < nodes.size(); begin += fanOut) {
            const std::size_t end = std::min(begin + fanOut, nodes.size());
            TreeNode<Key> node{0, nodes[begin].first, nodes[end - 1].last};
            node.number = writer.Add("<<" + Limits(node) + kids(begin, end));
            upper.push_back(node);
        }
        nodes = std::move(upper);
    }
    return writer.Add("<<" + kids(0, nodes.size()));
}

}  // namespace

void VisitNameTree(Document& document, std::string_view root, const NameVisitor& visit) {
    VisitTree(document, root, "Names", [&visit](std::string_view name, std::string_view value) {
        if (IsString(name)) visit(name, value);
    });
}

void VisitNumberTree(Document& document, std::string_view root, const NumberVisitor& visit) {
    VisitTree(document, root, "Nums", [&visit](std::string_view number, std::string_view value) {
        if (const std::optional<std::int64_t> parsed = ParseInteger(number)) visit(*parsed, value);
    });
}

std::string NameTreeBuilder::TakeFreeName(const std::string& name, const Form& form) {
    if (taken_.insert(name).second) return name;
    // The count goes on where it stopped, for all names of one form: many equal names cost no more than others.
    unsigned& number = counts_.emplace(form(name, 1), 1).first->second;
    for (;;) {
        std::string candidate = form(name, ++number);
        if (taken_.insert(candidate).second) return candidate;
    }
}

void NameTreeBuilder::Add(std::string_view name, std::string_view value) {
    entries_.push_back(
        {text_.size(), static_cast<std::uint32_t>(name.size()), static_cast<std::uint32_t>(value.size())});
    text_.append(name).append(value);
}

std::uint32_t NameTreeBuilder::Write(ObjectWriter& writer) {
    std::sort(entries_.begin(), entries_.end(),
              [this](const Entry& a, const Entry& b) { return NameOf(a) < NameOf(b); });
    std::vector<TreeNode<std::string_view>> nodes;
    for (std::size_t begin = 0; begin < entries_.size(); begin += fanOut) {
        const std::size_t end = std::min(begin + fanOut, entries_.size());
        TreeNode<std::string_view> node{0, NameOf(entries_[begin]), NameOf(entries_[end - 1])};
        std::string text = "<<" + Limits(node) + "/Names[";
        for (std::size_t i = begin; i < end; ++i) {
            const Entry& entry = entries_[i];
            text += EncodeString(NameOf(entry)) + " ";
            text.append(text_, entry.begin + entry.nameSize, entry.valueSize) += '\n';
        }
        node.number = writer.Add(text + "]>>");
        nodes.push_back(node);
    }
    return WriteUpperNodes(writer, std::move(nodes));
}

void NumberTreeBuilder::Add(ObjectWriter& writer, std::int64_t number, std::string_view value) {
    if (leafCount_ == 0) leafFirst_ = number;
    leaf_ += std::to_string(number) + " ";
    leaf_.append(value) += '\n';
    last_ = number;
    any_ = true;
    if (++leafCount_ == fanOut) WriteLeaf(writer);
}

void NumberTreeBuilder::WriteLeaf(ObjectWriter& writer) {
    if (leafCount_ == 0) return;
    TreeNode<std::int64_t> node{0, leafFirst_, last_};
    node.number = writer.Add("<<" + Limits(node) + "/Nums[" + leaf_ + "]>>");
    leaves_.push_back(node);
    leaf_.clear();
    leafCount_ = 0;
}

std::uint32_t NumberTreeBuilder::Write(ObjectWriter& writer) {
    WriteLeaf(writer);
    return WriteUpperNodes(writer, std::move(leaves_));
}

}  // namespace zavo::pdf
