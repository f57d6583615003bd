// Name trees and number trees: reading those of a document, and building those of a new one.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/Document.h"
#include "engine/ObjectWriter.h"

namespace zavo::pdf {

// Visits the entries of a tree in its own order; `root` is the tree or a reference to it. A node or a list that
// comes a second time is passed over, so that trees that go in circles end and shared lists do not multiply. The name
// is the token as it stands.
using NameVisitor = std::function<void(std::string_view name, std::string_view value)>;
void VisitNameTree(Document& document, std::string_view root, const NameVisitor& visit);
using NumberVisitor = std::function<void(std::int64_t number, std::string_view value)>;
void VisitNumberTree(Document& document, std::string_view root, const NumberVisitor& visit);

// A node of a tree that is being written, with its first and last key.
template <typename Key>
struct TreeNode {
    std::uint32_t number;
    Key first;
    Key last;
};

// A name tree for a new file. Names and values are kept one behind the other in one piece of memory.
class NameTreeBuilder {
public:
    bool Empty() const { return entries_.empty(); }

    // A name like `name` that is still free, and takes it: `name` itself or the first of `form(name, 2)`,
    // `form(name, 3)`, ...
    using Form = std::function<std::string(const std::string& name, unsigned number)>;
    std::string TakeFreeName(const std::string& name, const Form& form);
    void Add(std::string_view name, std::string_view value);

    // Writes the tree in the order of the names' bytes; gives the root's number.
    std::uint32_t Write(ObjectWriter& writer);

private:
    struct Entry {
        std::size_t begin;  // in text_: the name, then the value
        std::uint32_t nameSize;
        std::uint32_t valueSize;
    };
    std::string_view NameOf(const Entry& entry) const {
        return std::string_view(text_).substr(entry.begin, entry.nameSize);
    }

    std::string text_;
    std::vector<Entry> entries_;
    std::unordered_set<std::string> taken_;
    std::unordered_map<std::string, unsigned> counts_;  // the last number given out; by what the form makes of number 1
};

// A number tree for a new file, whose entries come in rising order.
class NumberTreeBuilder {
public:
    bool Empty() const { return !any_; }
    void Add(ObjectWriter& writer, std::int64_t number, std::string_view value);
    std::uint32_t Write(ObjectWriter& writer);

private:
    void WriteLeaf(ObjectWriter& writer);

    bool any_ = false;
    std::string leaf_;
    std::size_t leafCount_ = 0;
    std::int64_t leafFirst_ = 0;
    std::int64_t last_ = 0;
    std::vector<TreeNode<std::int64_t>> leaves_;
};

}  // namespace zavo::pdf
