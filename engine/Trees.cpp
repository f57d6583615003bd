// Name trees and number trees.
#include "engine/Trees.h"

#include <algorithm>
#include <unordered_set>

namespace zavo::pdf {

namespace {

constexpr std::size_t fanOut = 64;

template <typename Visit>
void VisitTree(Document& document, std::string_view root, std::string_view pairs, const Visit& visit) {
    std::unordered_set<std::uint32_t> seen;
    std::vector<std::string_view> waiting{root};
    while (!waiting.empty()) {
        const std::string_view value = waiting.back();
        waiting.pop_back();
        if (const std::optional<Reference> reference = ParseReference(value)) {
            if (!seen.insert(reference->number).second) continue;
        }
        const Dict node = document.ResolveDict(value);
        const std::vector<std::string_view> items = ArrayItems(document.Resolve(node.Find(pairs)));
        for (std::size_t i = 0; i + 1 < items.size(); i += 2) visit(document.Resolve(items[i]), items[i + 1]);
        const std::vector<std::string_view> kids = ArrayItems(document.Resolve(node.Find("Kids")));
        waiting.insert(waiting.end(), kids.rbegin(), kids.rend());
    }
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
    if (taken_.emplace(name, 1).second) return name;
    // The count goes on where it stopped: many inputs with equal names cost no more than others.
    for (unsigned number = taken_[name] + 1;; ++number) {
        std::string candidate = form(name, number);
        if (!taken_.emplace(candidate, 1).second) continue;
        taken_[name] = number;
        return candidate;
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
    struct Node {
        std::uint32_t number;
        std::string_view first;
        std::string_view last;
    };
    const auto limits = [](std::string_view first, std::string_view last) {
        return "/Limits[" + EncodeString(first) + EncodeString(last) + "]";
    };
    std::vector<Node> nodes;
    for (std::size_t begin = 0; begin < entries_.size(); begin += fanOut) {
        const std::size_t end = std::min(begin + fanOut, entries_.size());
        Node node{0, NameOf(entries_[begin]), NameOf(entries_[end - 1])};
        std::string text = "<<" + limits(node.first, node.last) + "/Names[";
        for (std::size_t i = begin; i < end; ++i) {
            const Entry& entry = entries_[i];
            text += EncodeString(NameOf(entry)) + " ";
            text.append(text_, entry.begin + entry.nameSize, entry.valueSize) += '\n';
        }
        node.number = writer.Add(text + "]>>");
        nodes.push_back(node);
    }
    while (nodes.size() > fanOut) {
        std::vector<Node> upper;
        for (std::size_t begin = 0; begin < nodes.size(); begin += fanOut) {
            const std::size_t end = std::min(begin + fanOut, nodes.size());
            Node node{0, nodes[begin].first, nodes[end - 1].last};
            std::string text = "<<" + limits(node.first, node.last) + "/Kids[";
            for (std::size_t i = begin; i < end; ++i) text += ReferenceTo(nodes[i].number) + " ";
            node.number = writer.Add(text + "]>>");
            upper.push_back(node);
        }
        nodes = std::move(upper);
    }
    std::string root = "<</Kids[";
    for (const Node& node : nodes) root += ReferenceTo(node.number) + " ";
    return writer.Add(root + "]>>");
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
    const std::uint32_t number =
        writer.Add("<</Limits[" + std::to_string(leafFirst_) + " " + std::to_string(last_) + "]/Nums[" + leaf_ + "]>>");
    kids_.push_back({number, leafFirst_, last_});
    leaf_.clear();
    leafCount_ = 0;
}

std::uint32_t NumberTreeBuilder::Write(ObjectWriter& writer) {
    WriteLeaf(writer);
    while (kids_.size() > fanOut) {
        std::vector<Kid> upper;
        for (std::size_t begin = 0; begin < kids_.size(); begin += fanOut) {
            const std::size_t end = std::min(begin + fanOut, kids_.size());
            Kid kid{0, kids_[begin].first, kids_[end - 1].last};
            std::string text = "<</Limits[" + std::to_string(kid.first) + " " + std::to_string(kid.last) + "]/Kids[";
            for (std::size_t i = begin; i < end; ++i) text += ReferenceTo(kids_[i].number) + " ";
            kid.number = writer.Add(text + "]>>");
            upper.push_back(kid);
        }
        kids_ = std::move(upper);
    }
    std::string root = "<</Kids[";
    for (const Kid& kid : kids_) root += ReferenceTo(kid.number) + " ";
    return writer.Add(root + "]>>");
}

}  // namespace zavo::pdf
