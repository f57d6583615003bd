// The name tree of a document.
#include "engine/NameTree.h"

#include <algorithm>
#include <map>
#include <optional>
#include <unordered_map>

#include "engine/Trees.h"

namespace zavo::pdf {

namespace {

constexpr std::size_t nodeLimit = 64;   // entries of a node; one with more is split
constexpr std::size_t partSize = 48;    // entries of its parts, at most
constexpr std::size_t depthLimit = 24;  // of a tree that is taken as it is

// Thrown where the tree is not as a proper one is and has to be built anew.
struct OddTree {};

std::string KeyOf(Document& document, std::string_view value) { return DecodeString(document.Resolve(value)); }

}  // namespace

struct NameTree::Node {
    bool isLeaf = true;
    bool changed = false;
    std::vector<std::pair<std::string, std::string>> names;  // of a leaf: keys and the texts of their values
    std::vector<KidLink> kids;
    std::string low;  // the first and the last key in and below it; of no meaning in the root
    std::string high;

    std::size_t Size() const { return isLeaf ? names.size() : kids.size(); }
};

NameTree::NameTree(Document& document, std::string_view root) : document_(document), rootValue_(root) {
    try {
        root_ = Load(rootValue_);
    } catch (const OddTree&) {
        rootIsShared_ = true;
        Rebuild();
    }
}

NameTree::~NameTree() = default;

// Reads one node without its kids.
std::unique_ptr<NameTree::Node> NameTree::Load(std::string_view value) {
    auto node = std::make_unique<Node>();
    const Dict dictionary = document_.ResolveDict(value);
    for (const Dict::Entry& entry : dictionary.Entries()) {
        // Written as a node it would lose this.
        if (!IsName(entry.key, "Names") && !IsName(entry.key, "Kids") && !IsName(entry.key, "Limits")) throw OddTree();
    }
    const std::vector<std::string_view> names = ArrayItems(document_.Resolve(dictionary.Find("Names")));
    const std::vector<std::string_view> kids = ArrayItems(document_.Resolve(dictionary.Find("Kids")));
    const std::vector<std::string_view> limits = ArrayItems(document_.Resolve(dictionary.Find("Limits")));
    if ((!names.empty() && !kids.empty()) || names.size() % 2 != 0) throw OddTree();
    node->isLeaf = kids.empty();
    for (std::size_t i = 0; i < names.size(); i += 2) {
        std::string key = KeyOf(document_, names[i]);
        if (i > 0 && key <= node->names.back().first) throw OddTree();
        node->names.emplace_back(std::move(key), names[i + 1]);
    }
    for (const std::string_view kid : kids) {
        const std::optional<Reference> place = ParseReference(kid);
        if (!place || !document_.Exists(place->number)) throw OddTree();
        node->kids.push_back({*place, nullptr});
    }
    if (!node->names.empty()) {
        node->low = node->names.front().first;
        node->high = node->names.back().first;
    } else if (limits.size() == 2) {
        node->low = KeyOf(document_, limits[0]);
        node->high = KeyOf(document_, limits[1]);
    }
    return node;
}

NameTree::Node& NameTree::Kid(Node& parent, std::size_t index) {
    KidLink& link = parent.kids[index];
    if (!link.node) {
        std::unique_ptr<Node> kid = Load(ReferenceText(link.place));
        // Below the root nothing is empty, and every node says what it holds.
        if (kid->Size() == 0 || kid->high.empty() || kid->high < kid->low) throw OddTree();
        link.node = std::move(kid);
    }
    return *link.node;
}

// Goes down to where `key` is or belongs; true where it is there. Throws OddTree.
bool NameTree::Find(const std::string& key, Path& path) {
    path.clear();
    Node* node = root_.get();
    while (!node->isLeaf) {
        if (path.size() == depthLimit) throw OddTree();
        // The last kid that begins at or before the key; the first one where all begin after it.
        std::size_t begin = 0;
        for (std::size_t end = node->kids.size(); end - begin > 1;) {
            const std::size_t middle = (begin + end) / 2;
            (Kid(*node, middle).low <= key ? begin : end) = middle;
        }
        Node& kid = Kid(*node, begin);
        // Where neighbours are out of order the key may be anywhere.
        if (begin + 1 < node->kids.size() && Kid(*node, begin + 1).low <= kid.high) throw OddTree();
        if (begin > 0 && Kid(*node, begin - 1).high >= kid.low) throw OddTree();
        path.push_back({node, begin});
        node = &kid;
    }
    const auto place =
        std::lower_bound(node->names.begin(), node->names.end(), key,
                         [](const auto& name, const std::string& wanted) { return name.first < wanted; });
    path.push_back({node, static_cast<std::size_t>(place - node->names.begin())});
    return place != node->names.end() && place->first == key;
}

bool NameTree::FindOrRebuild(const std::string& key, Path& path) {
    try {
        return Find(key, path);
    } catch (const OddTree&) {
        Rebuild();
        return Find(key, path);
    }
}

bool NameTree::Has(const std::string& key) {
    Path path;
    return FindOrRebuild(key, path);
}

void NameTree::Insert(const std::string& key, std::string value) {
    Path path;
    FindOrRebuild(key, path);
    added_.emplace_back(key, std::move(value));
    try {
        InsertAt(path, key, added_.back().second);
    } catch (const OddTree&) {
        Rebuild();
    }
}

void NameTree::InsertAt(const Path& path, const std::string& key, const std::string& value) {
    auto [leaf, place] = path.back();
    leaf->names.insert(leaf->names.begin() + static_cast<std::ptrdiff_t>(place), {key, value});
    leaf->changed = true;

    // Upwards: limits that grew, and nodes that became too large. A node's limits stand in the node, not above it.
    for (std::size_t level = path.size() - 1; level > 0; --level) {
        Node& node = *path[level].node;
        if (key < node.low || key > node.high) {
            (key < node.low ? node.low : node.high) = key;
            node.changed = true;
        }
        if (node.Size() <= nodeLimit) continue;
        const auto [parent, index] = path[level - 1];
        std::vector<KidLink> parts = Split(node);
        parts[0].place = parent->kids[index].place;
        const auto where = parent->kids.erase(parent->kids.begin() + static_cast<std::ptrdiff_t>(index));
        parent->kids.insert(where, std::make_move_iterator(parts.begin()), std::make_move_iterator(parts.end()));
        parent->changed = true;
    }
    SplitRoot();
}

// Deals what is in a node out to new ones.
std::vector<NameTree::KidLink> NameTree::Split(Node& node) {
    const std::size_t size = node.Size();
    const std::size_t count = (size + partSize - 1) / partSize;
    // Only inner nodes need their kids' limits, and only those at the parts' ends.
    const auto firstOf = [&](std::size_t part) { return part * size / count; };
    std::vector<KidLink> parts(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t begin = firstOf(i);
        const std::size_t end = firstOf(i + 1);
        auto part = std::make_unique<Node>();
        part->isLeaf = node.isLeaf;
        part->changed = true;
        part->low = node.isLeaf ? node.names[begin].first : Kid(node, begin).low;
        part->high = node.isLeaf ? node.names[end - 1].first : Kid(node, end - 1).high;
        parts[i].node = std::move(part);
    }
    for (std::size_t i = 0; i < count; ++i) {
        Node& part = *parts[i].node;
        for (std::size_t k = firstOf(i); k < firstOf(i + 1); ++k) {
            if (node.isLeaf) {
                part.names.push_back(std::move(node.names[k]));
            } else {
                part.kids.push_back(std::move(node.kids[k]));
            }
        }
    }
    return parts;
}

// The root stays the object that it is; what is too much for it goes to a level of its own below it.
void NameTree::SplitRoot() {
    while (root_->Size() > nodeLimit) {
        std::vector<KidLink> parts = Split(*root_);
        root_->isLeaf = false;
        root_->names.clear();
        root_->kids = std::move(parts);
        root_->changed = true;
    }
}

// Makes a proper tree of all keys, whatever the document's tree is like.
void NameTree::Rebuild() {
    std::map<std::string, std::string> names;
    std::unordered_map<std::string, int> copies;
    const auto add = [&](const std::string& key, std::string_view value) {
        std::string unique = key;
        while (!names.emplace(unique, value).second) {
            unique =
                Utf8ToText(TextToUtf8(key) + " (" + std::to_string(++copies.try_emplace(key, 1).first->second) + ")");
        }
    };
    VisitNameTree(document_, rootValue_,
                  [&](std::string_view name, std::string_view value) { add(DecodeString(name), value); });
    for (const auto& [key, value] : added_) add(key, value);

    root_ = std::make_unique<Node>();
    root_->changed = true;
    root_->names.assign(std::make_move_iterator(names.begin()), std::make_move_iterator(names.end()));
    SplitRoot();
}

NameTree::Changes NameTree::Finish(const std::function<std::uint32_t()>& newNumber) {
    Changes changes;
    const std::optional<Reference> place = ParseReference(rootValue_);
    if (place && document_.Exists(place->number) && !rootIsShared_) {
        changes.root = {place->number, document_.Generation(place->number)};
    } else {
        changes.root = {newNumber(), 0};
        root_->changed = true;
    }
    struct Waiting {
        Node* node;
        Reference place;
    };
    std::vector<Waiting> waiting = {{root_.get(), changes.root}};
    while (!waiting.empty()) {
        const auto [node, own] = waiting.back();
        waiting.pop_back();
        for (KidLink& link : node->kids) {
            if (link.place.number == 0) link.place = {newNumber(), 0};
            if (link.node) waiting.push_back({link.node.get(), link.place});
        }
        if (!node->changed) continue;
        std::string text = "<<";
        if (node != root_.get()) text += "/Limits[" + EncodeString(node->low) + EncodeString(node->high) + "]";
        text += node->isLeaf ? "/Names[" : "/Kids[";
        for (const auto& [key, value] : node->names) text.append(EncodeString(key)).append(value).append("\n");
        for (const KidLink& link : node->kids) text.append(ReferenceText(link.place)).append("\n");
        changes.nodes.push_back({own, text + "]>>"});
    }
    return changes;
}

}  // namespace zavo::pdf
