// Adding to the name tree of a document, with few changed nodes. Trees of other writers may be flat, unsorted or
// without limits; the first addition to such a one makes a proper tree of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/Document.h"

namespace zavo::pdf {

class NameTree {
public:
    // `root` is the value that leads to the tree, a reference or a dictionary; anything else is an empty tree. The
    // document has to stay as it is.
    NameTree(Document& document, std::string_view root);
    NameTree(const NameTree&) = delete;
    NameTree& operator=(const NameTree&) = delete;
    ~NameTree();

    bool Has(const std::string& key);
    // Adds a key that the tree does not have; `value` is the text of its value.
    void Insert(const std::string& key, std::string value);

    struct Changes {
        Reference root;
        struct Node {
            Reference place;
            std::string text;
        };
        std::vector<Node> nodes;
    };
    // The nodes to be written. Those that have no object of their own yet get a number from `newNumber`; a root that is
    // an object of its own keeps its number.
    Changes Finish(const std::function<std::uint32_t()>& newNumber);

private:
    struct Node;
    struct KidLink {
        Reference place;             // number 0: no object yet
        std::unique_ptr<Node> node;  // null: not read yet
    };
    // A node on the way to a key, with the place of the next one in it; in a leaf that of the key.
    struct Step {
        Node* node;
        std::size_t index;
    };
    using Path = std::vector<Step>;

    std::unique_ptr<Node> Load(std::string_view value);
    Node& Kid(Node& parent, std::size_t index);
    bool Find(const std::string& key, Path& path);
    bool FindOrRebuild(const std::string& key, Path& path);
    void InsertAt(const Path& path, const std::string& key, const std::string& value);
    std::vector<KidLink> Split(Node& node);
    void SplitRoot();
    void Rebuild();

    Document& document_;
    std::string rootValue_;
    std::unique_ptr<Node> root_;
    bool rootIsShared_ = false;  // the root's object may be something else as well and has to stay as it is
    std::vector<std::pair<std::string, std::string>> added_;
};

}  // namespace zavo::pdf
