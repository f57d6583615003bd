// Copies a document's objects into another file: their bytes as they stand, references renumbered. There is no tree of
// objects and no recursion; what is still to be done waits in lists, so that chains of any length cost no stack.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/Document.h"
#include "engine/ObjectWriter.h"

namespace zavo::pdf {

// What a dictionary loses and gains while it is copied. Names are without "/".
struct DictEdit {
    std::vector<std::string> removed;
    std::string added;
};

// Fonts, images and other resources that were written already, so that equal ones of other documents are not written
// again.
class SharedResources {
public:
    SharedResources();

    // The number of an equal object; 0 when there is none yet. `stream` is a part of document's Bytes() or empty.
    struct Content {
        std::string_view value;
        std::string_view stream;
        bool isStream;
    };
    std::uint32_t Find(const Content& content, std::uint64_t hash) const;
    void Add(Document& document, const Content& content, std::uint64_t hash, std::uint32_t number);
    std::uint64_t Hash(const Content& content) const;

private:
    struct Item {
        std::uint32_t number;
        std::string value;
        Document* document;
        std::uint64_t offset;
        std::uint64_t size;
        bool isStream;
    };
    std::uint64_t seed_;  // differs from process to process, which makes it harder to prepare equal hashes
    std::unordered_multimap<std::uint64_t, Item> items_;
};

// Names that mean something else in the merged file, from old to new.
using Renames = std::unordered_map<std::string, std::string>;

class ObjectCopier {
public:
    ObjectCopier(Document& document, ObjectWriter& writer, SharedResources& shared);
    ~ObjectCopier();

    Document& Source() { return document_; }
    ObjectWriter& Writer() { return writer_; }

    // References to `old` become references to `number`; the object itself is not copied.
    void Map(std::uint32_t old, std::uint32_t number);
    // As Map, and the object is copied under that number.
    void Assign(std::uint32_t old, std::uint32_t number);
    DictEdit& EditOf(std::uint32_t old) { return edits_[old]; }
    bool IsMapped(std::uint32_t old) const { return old < map_.size() && map_[old] != 0; }

    // A value for the new file; what it refers to will be copied.
    std::string Rewrite(std::string_view value);
    // Copies one object under a number, whatever it is mapped to.
    void Copy(std::uint32_t old, std::uint32_t number, const DictEdit& edit);
    // Copies all that is still to be copied.
    void Run();

    // Set these before anything is copied.
    Renames destinations;      // bytes of all named destinations of the document's name tree
    Renames destinationNames;  // the same for those of its /Dests dictionary, which become strings
    Renames fonts;             // names in /DA
    Renames roles;             // names of structure types
    Renames classes;           // names of attribute classes
    Renames elementIds;        // bytes of structure elements' identifiers
    Renames fields;            // UTF-8 names of fields that have no parent, for actions that name them
    // The structure types of the elements that were copied.
    std::unordered_set<std::string> usedRoles;
    std::vector<std::int64_t> structureKeys;  // sorted: keys of the parent tree; other /StructParent(s) are dropped
    std::int64_t firstStructureKey = 0;       // the first of them becomes this, and so on

private:
    struct Frame;
    enum class Key : std::uint8_t;
    struct Level;

    Frame& Push(std::string_view text, bool mayBeStream);
    void RunFrames(std::size_t depth);
    bool Step(Frame& frame);
    void TakeKey(Frame& frame, const Token& token);
    bool TakeReferenceOrInteger(Frame& frame, const Token& token);
    void TakeScalar(Frame& frame, const Token& place, std::string_view text);
    std::string Destination(std::string_view token) const;
    std::string DefaultAppearance(std::string_view token) const;
    std::string FieldName(std::string_view token) const;
    std::string FieldNames(std::string_view value) const;
    void CloseLevel(Frame& frame, const Token& token);
    void Finish(Frame& frame);
    void DropEntry(Frame& frame);
    static Key KeyOf(std::string_view name);
    static bool MayBeRenamed(Key key);

    Document& document_;
    ObjectWriter& writer_;
    SharedResources& shared_;
    std::vector<std::uint32_t> map_;
    std::vector<bool> inProgress_;
    std::vector<std::uint32_t> queue_;
    std::size_t queueHead_ = 0;
    std::unordered_map<std::uint32_t, DictEdit> edits_;
    std::vector<std::unique_ptr<Frame>> frames_;  // kept for their memory; the first `depth_` are in use
    std::size_t depth_ = 0;
};

}  // namespace zavo::pdf
