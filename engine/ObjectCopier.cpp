// Copies a document's objects into another file.
#include "engine/ObjectCopier.h"

#include <algorithm>
#include <random>

#include "engine/Hash.h"

namespace zavo::pdf {

namespace {

// So many resources of one hash are compared. Honest ones have hashes of their own; forged ones are stored as they
// come.
constexpr int comparisonLimit = 16;
// Resources inside resources beyond this depth are copied without looking for equal ones.
constexpr std::size_t sharingDepth = 1000;

}  // namespace

// Dictionary keys whose values are treated apart.
enum class ObjectCopier::Key : std::uint8_t {
    Other,
    Destination,   // /Dest
    ActionTarget,  // /D, a destination where the dictionary is a GoTo action
    Subtype,       // /S
    Parent,        // /P
    StructureKey,  // /StructParent, /StructParents
    DefaultAppearance,
    Identifier,      // /ID
    Headers,         // identifiers of header cells
    AttributeClass,  // /C
    FieldNames,      // /Fields of an action
    Title,           // /T, field names where the dictionary is a Hide action
    ByteRange,       // the dictionary is a signature
    Length,
    Shared,        // its value is a resource
    SharedMembers  // so are the members of its value
};

// A dictionary or an array that is open at the place reached.
struct ObjectCopier::Level {
    bool isDictionary;
    bool expectsKey;
    Key key;                   // whose value comes; an array has that of the dictionary around it
    Key container;             // the key under which the dictionary stands
    std::size_t keyBegin = 0;  // of that key in the output
    // Places in the output of values that can be judged only when the dictionary is complete.
    std::size_t targetBegin = 0;
    std::size_t targetEnd = 0;
    std::size_t subtypeBegin = 0;
    std::size_t subtypeEnd = 0;
    std::size_t titleBegin = 0;
    std::size_t titleEnd = 0;
    bool hasParent = false;
};

// An object that is being copied, or a value without a number.
struct ObjectCopier::Frame {
    std::uint32_t old = 0;  // 0 for a value
    std::uint32_t number = 0;
    bool isShared = false;
    const DictEdit* edit = nullptr;
    Key key = Key::Other;  // under which it was met
    Key container = Key::Other;
    bool mayBeStream = false;
    bool isSignature = false;

    Lexer lexer{{}};
    std::size_t pending = 0;  // the source is copied up to here
    std::string output;
    std::vector<Level> levels;
    std::string_view length;  // /Length's value in the source and its place in the output
    std::size_t lengthBegin = 0;
    std::size_t lengthEnd = 0;

    std::size_t PlaceOf(const Token& token) const {
        return static_cast<std::size_t>(token.text.data() - lexer.Bytes().data());
    }
    void Flush(std::size_t end) {
        output.append(lexer.Bytes().substr(pending, end - pending));
        pending = end;
    }
    // Writes `text` in the place of the token.
    void Replace(const Token& token, std::string_view text) {
        Flush(PlaceOf(token));
        output.append(text);
        pending = lexer.Position();
    }
};

SharedResources::SharedResources() {
    std::random_device device;
    seed_ = (std::uint64_t{device()} << 32) | device();
}

std::uint64_t SharedResources::Hash(const Content& content) const {
    return HashBytes(content.stream, HashBytes(content.value, seed_));
}

std::uint32_t SharedResources::Find(const Content& content, std::uint64_t hash) const {
    const auto [first, last] = items_.equal_range(hash);
    int comparisons = 0;
    for (auto item = first; item != last && comparisons < comparisonLimit; ++item, ++comparisons) {
        const Item& known = item->second;
        if (known.isStream != content.isStream || known.value != content.value || known.size != content.stream.size()) {
            continue;
        }
        if (!content.isStream || known.document->EqualAt(known.offset, content.stream)) return known.number;
    }
    return 0;
}

void SharedResources::Add(Document& document, const Content& content, std::uint64_t hash, std::uint32_t number) {
    Item item{number, std::string(content.value), &document, 0, content.stream.size(), content.isStream};
    if (content.isStream) {
        item.offset = static_cast<std::uint64_t>(content.stream.data() - document.Bytes().data());
    }
    items_.emplace(hash, std::move(item));
}

ObjectCopier::ObjectCopier(Document& document, ObjectWriter& writer, SharedResources& shared)
    : document_(document),
      writer_(writer),
      shared_(shared),
      map_(document.ObjectLimit()),
      inProgress_(document.ObjectLimit()) {}

ObjectCopier::~ObjectCopier() = default;

void ObjectCopier::Map(std::uint32_t old, std::uint32_t number) {
    if (old < map_.size()) map_[old] = number;
}

void ObjectCopier::Assign(std::uint32_t old, std::uint32_t number) {
    Map(old, number);
    queue_.push_back(old);
}

ObjectCopier::Frame& ObjectCopier::Push(std::string_view text, bool mayBeStream) {
    if (depth_ == frames_.size()) frames_.push_back(std::make_unique<Frame>());
    Frame& frame = *frames_[depth_++];
    std::string output = std::move(frame.output);
    std::vector<Level> levels = std::move(frame.levels);
    output.clear();
    levels.clear();
    frame = Frame();
    frame.output = std::move(output);
    frame.levels = std::move(levels);
    frame.lexer = Lexer(text);
    frame.mayBeStream = mayBeStream;
    return frame;
}

std::string ObjectCopier::Rewrite(std::string_view value) {
    const std::size_t depth = depth_;
    Frame& frame = Push(value, false);
    RunFrames(depth);
    return std::move(frame.output);
}

void ObjectCopier::Copy(std::uint32_t old, std::uint32_t number, const DictEdit& edit) {
    const std::size_t depth = depth_;
    const Document::Place place = document_.Locate(old);
    Frame& frame = Push(place.text, place.mayBeStream);
    frame.old = old;
    frame.number = number;
    frame.edit = &edit;
    RunFrames(depth);
}

void ObjectCopier::Run() {
    static const DictEdit none;
    for (; queueHead_ < queue_.size(); ++queueHead_) {
        const std::uint32_t old = queue_[queueHead_];
        const auto edit = edits_.find(old);
        Copy(old, map_[old], edit == edits_.end() ? none : edit->second);
    }
    queue_.clear();
    queueHead_ = 0;
}

void ObjectCopier::RunFrames(std::size_t depth) {
    try {
        while (depth_ > depth) {
            Frame& frame = *frames_[depth_ - 1];
            if (Step(frame)) {
                Finish(frame);
                --depth_;
            }
        }
    } catch (...) {
        depth_ = depth;
        throw;
    }
}

ObjectCopier::Key ObjectCopier::KeyOf(std::string_view name) {
    static const std::unordered_map<std::string_view, Key> keys = {
        {"/Dest", Key::Destination},
        {"/D", Key::ActionTarget},
        {"/S", Key::Subtype},
        {"/P", Key::Parent},
        {"/StructParent", Key::StructureKey},
        {"/StructParents", Key::StructureKey},
        {"/DA", Key::DefaultAppearance},
        {"/ID", Key::Identifier},
        {"/Headers", Key::Headers},
        {"/C", Key::AttributeClass},
        {"/Fields", Key::FieldNames},
        {"/T", Key::Title},
        {"/ByteRange", Key::ByteRange},
        {"/Length", Key::Length},
        {"/CIDSet", Key::Shared},
        {"/CIDSystemInfo", Key::Shared},
        {"/CIDToGIDMap", Key::Shared},
        {"/CS", Key::Shared},
        {"/DescendantFonts", Key::Shared},
        {"/Encoding", Key::Shared},
        {"/FontDescriptor", Key::Shared},
        {"/FontFile", Key::Shared},
        {"/FontFile2", Key::Shared},
        {"/FontFile3", Key::Shared},
        {"/Function", Key::Shared},
        {"/Functions", Key::Shared},
        {"/Mask", Key::Shared},
        {"/Resources", Key::Shared},
        {"/SMask", Key::Shared},
        {"/ToUnicode", Key::Shared},
        {"/W", Key::Shared},
        {"/W2", Key::Shared},
        {"/Widths", Key::Shared},
        {"/AP", Key::SharedMembers},
        {"/CharProcs", Key::SharedMembers},
        {"/ColorSpace", Key::SharedMembers},
        {"/ExtGState", Key::SharedMembers},
        {"/Font", Key::SharedMembers},
        {"/Pattern", Key::SharedMembers},
        {"/Shading", Key::SharedMembers},
        {"/XObject", Key::SharedMembers},
    };
    if (const auto known = keys.find(name); known != keys.end()) return known->second;
    if (name.find('#') == std::string_view::npos) return Key::Other;
    const auto known = keys.find("/" + DecodeName(name));
    return known == keys.end() ? Key::Other : known->second;
}

bool ObjectCopier::MayBeRenamed(Key key) {
    return key == Key::Destination || key == Key::ActionTarget || key == Key::Subtype ||
           key == Key::DefaultAppearance || key == Key::Identifier || key == Key::AttributeClass || key == Key::Title;
}

// Goes on with a frame; true when its value is complete, false when another frame has to be finished first.
bool ObjectCopier::Step(Frame& frame) {
    for (;;) {
        const Token token = frame.lexer.Next();
        if (!frame.levels.empty() && frame.levels.back().expectsKey) {
            if (token.kind == TokenKind::Name) {
                TakeKey(frame, token);
            } else if (token.kind == TokenKind::DictClose) {
                CloseLevel(frame, token);
                if (frame.levels.empty()) return true;
            } else {
                throw PdfError("a dictionary's key is no name");
            }
            continue;
        }
        switch (token.kind) {
            case TokenKind::DictOpen:
            case TokenKind::ArrayOpen: {
                const bool isDictionary = token.kind == TokenKind::DictOpen;
                const Key key = frame.levels.empty() ? frame.key : frame.levels.back().key;
                const Key container = frame.levels.empty() ? frame.container : frame.levels.back().container;
                if (!isDictionary && key == Key::Title && !frame.levels.empty() && frame.levels.back().isDictionary) {
                    frame.Flush(frame.PlaceOf(token));
                    frame.levels.back().titleBegin = frame.output.size();
                }
                frame.levels.push_back(
                    {isDictionary, isDictionary, isDictionary ? Key::Other : key, isDictionary ? key : container});
                continue;
            }
            case TokenKind::ArrayClose:
                if (frame.levels.empty() || frame.levels.back().isDictionary) throw PdfError("an array does not end");
                CloseLevel(frame, token);
                if (frame.levels.empty()) return true;
                continue;
            case TokenKind::Integer:
                if (!TakeReferenceOrInteger(frame, token)) return false;
                break;
            case TokenKind::Name:
            case TokenKind::String:
            case TokenKind::HexString: TakeScalar(frame, token, token.text); break;
            case TokenKind::Real: break;
            case TokenKind::Keyword:
                if (token.text != "true" && token.text != "false" && token.text != "null") {
                    throw PdfError("an object does not end");
                }
                break;
            default: throw PdfError("an object does not end");
        }
        if (frame.levels.empty()) {
            frame.Flush(frame.lexer.Position());
            return true;
        }
        frame.levels.back().expectsKey = frame.levels.back().isDictionary;
    }
}

void ObjectCopier::TakeKey(Frame& frame, const Token& token) {
    Level& level = frame.levels.back();
    const std::size_t begin = frame.PlaceOf(token);
    if (frame.edit && frame.levels.size() == 1) {
        for (const std::string& removed : frame.edit->removed) {
            if (!IsName(token.text, removed)) continue;
            frame.Flush(begin);
            TakeValue(frame.lexer);
            frame.pending = frame.lexer.Position();
            return;
        }
    }
    level.key = KeyOf(token.text);
    level.expectsKey = false;
    if (level.key == Key::ByteRange && frame.levels.size() == 1) frame.isSignature = true;
    if (level.key == Key::StructureKey) {
        frame.Flush(begin);
        level.keyBegin = frame.output.size();
    }
}

// Takes the key of the innermost dictionary and the value just read back out of the copy.
void ObjectCopier::DropEntry(Frame& frame) {
    frame.output.resize(frame.levels.back().keyBegin);
    frame.pending = frame.lexer.Position();
}

// False when the object that is referred to has to be copied first.
bool ObjectCopier::TakeReferenceOrInteger(Frame& frame, const Token& token) {
    const std::string_view bytes = frame.lexer.Bytes();
    const std::size_t begin = frame.PlaceOf(token);
    const std::size_t end = frame.lexer.Position();
    Token whole = token;
    std::optional<std::int64_t> number = ParseInteger(token.text);
    bool isReference = false;
    if (IsDigit(token.text[0]) && end + 1 < bytes.size() && (IsWhite(bytes[end]) || bytes[end] == '%')) {
        // Nearly always the generation follows one blank later; a number's list is told apart by its first step.
        frame.lexer.SkipBlanks();
        const std::size_t generation = frame.lexer.Position();
        if (generation < bytes.size() && IsDigit(bytes[generation]) && frame.lexer.Next().kind == TokenKind::Integer) {
            const Token last = frame.lexer.Next();
            isReference = last.kind == TokenKind::Keyword && last.text == "R";
        }
        if (isReference) {
            whole.text = bytes.substr(begin, frame.lexer.Position() - begin);
        } else {
            frame.lexer.MoveTo(end);
        }
    }

    Level* const level = frame.levels.empty() ? nullptr : &frame.levels.back();
    const Key key = level ? level->key : frame.key;
    if (level && level->isDictionary && key == Key::StructureKey) {
        const std::optional<std::int64_t> old = isReference ? document_.ResolveInteger(whole.text) : number;
        const auto known = std::lower_bound(structureKeys.begin(), structureKeys.end(), old.value_or(-1));
        if (!old || known == structureKeys.end() || *known != *old) {
            DropEntry(frame);
        } else {
            frame.Replace(whole, std::to_string(firstStructureKey + (known - structureKeys.begin())));
        }
        return true;
    }
    if (level && level->isDictionary && key == Key::Length && frame.levels.size() == 1) {
        // A stream gets its length in place; any other dictionary's /Length is a number as well.
        frame.length = whole.text;
        const std::optional<std::int64_t> value = document_.ResolveInteger(whole.text);
        frame.Flush(begin);
        frame.lengthBegin = frame.output.size();
        frame.Replace(whole, value ? std::to_string(*value) : "0");
        frame.lengthEnd = frame.output.size();
        return true;
    }
    if (!isReference) return true;
    if (level && key == Key::Parent) level->hasParent = true;
    if (level && level->isDictionary && MayBeRenamed(key)) {
        // A text that may have to change is copied to where it is referred to.
        const std::string_view text = document_.Resolve(whole.text);
        if (IsString(text) || text.starts_with("/")) {
            TakeScalar(frame, whole, text);
            if (frame.pending != frame.lexer.Position()) frame.Replace(whole, text);
            return true;
        }
    }

    if (!number || *number <= 0 || *number >= static_cast<std::int64_t>(map_.size()) ||
        !(map_[static_cast<std::size_t>(*number)] || document_.Exists(static_cast<std::uint32_t>(*number)))) {
        frame.Replace(whole, "null");
        return true;
    }
    const auto old = static_cast<std::uint32_t>(*number);
    if (map_[old] == 0) {
        const Key container = level ? level->container : frame.container;
        const bool isShared = key == Key::Shared || key == Key::SharedMembers || container == Key::SharedMembers;
        if (isShared && !inProgress_[old] && depth_ < sharingDepth) {
            frame.lexer.MoveTo(begin);  // comes here again when that object has its number
            inProgress_[old] = true;
            const Document::Place place = document_.Locate(old);
            Frame& next = Push(place.text, place.mayBeStream);
            next.old = old;
            next.isShared = true;
            next.key = key;
            next.container = container;
            if (const auto edit = edits_.find(old); edit != edits_.end()) next.edit = &edit->second;
            return false;
        }
        map_[old] = writer_.Allocate();
        // One that is in progress is around this place: it gets written when it is complete.
        if (!inProgress_[old]) queue_.push_back(old);
    }
    frame.Replace(whole, ReferenceTo(map_[old]));
    return true;
}

// A name or string, which stands at `place` or is what the reference there leads to.
void ObjectCopier::TakeScalar(Frame& frame, const Token& place, std::string_view text) {
    if (frame.levels.empty()) return;
    Level& level = frame.levels.back();
    const bool isName = !IsString(text);
    const auto replaceString = [&](const Renames& renames) {
        if (isName || renames.empty()) return;
        const auto known = renames.find(DecodeString(text));
        if (known != renames.end()) frame.Replace(place, EncodeString(known->second));
    };
    const auto note = [&](std::size_t& begin, std::size_t& end) {
        if (!level.isDictionary) return;
        frame.Flush(frame.PlaceOf(place));
        begin = frame.output.size();
        frame.Replace(place, text);
        end = frame.output.size();
    };
    switch (level.key) {
        case Key::Destination:
            if (level.isDictionary) frame.Replace(place, Destination(text));
            break;
        case Key::ActionTarget: note(level.targetBegin, level.targetEnd); break;
        case Key::Subtype: note(level.subtypeBegin, level.subtypeEnd); break;
        case Key::Title: note(level.titleBegin, level.titleEnd); break;
        case Key::FieldNames:
            if (!isName && !fields.empty()) frame.Replace(place, FieldName(text));
            break;
        case Key::DefaultAppearance:
            if (!isName && !fonts.empty()) frame.Replace(place, DefaultAppearance(text));
            break;
        case Key::Identifier:
        case Key::Headers: replaceString(elementIds); break;
        case Key::AttributeClass:
            if (!isName || classes.empty()) break;
            if (const auto known = classes.find(DecodeName(text)); known != classes.end()) {
                frame.Replace(place, EncodeName(known->second));
            }
            break;
        default: break;
    }
}

// A named destination in the merged file. One that its own document does not have must not find another's.
std::string ObjectCopier::Destination(std::string_view token) const {
    const bool isName = token[0] == '/';
    const std::string old = isName ? DecodeName(token) : DecodeString(token);
    // Readers look for either kind in both places.
    for (const Renames* const renames :
         {isName ? &destinationNames : &destinations, isName ? &destinations : &destinationNames}) {
        if (const auto known = renames->find(old); known != renames->end()) return EncodeString(known->second);
    }
    return EncodeString(old + "#0");
}

std::string ObjectCopier::DefaultAppearance(std::string_view token) const {
    const std::string old = DecodeString(token);
    std::string text;
    Lexer lexer(old);
    std::size_t copied = 0;
    for (Token word = lexer.Next(); word.kind != TokenKind::End; word = lexer.Next()) {
        if (word.kind != TokenKind::Name) continue;
        const auto known = fonts.find(DecodeName(word.text));
        if (known == fonts.end()) continue;
        text.append(old, copied, lexer.Position() - word.text.size() - copied).append(EncodeName(known->second));
        copied = lexer.Position();
    }
    return EncodeString(text.append(old, copied, std::string::npos));
}

// A field's full name, whose first part is the name of a field without a parent.
std::string ObjectCopier::FieldName(std::string_view token) const {
    const std::string name = TextToUtf8(DecodeString(token));
    const std::size_t end = std::min(name.find('.'), name.size());
    const auto known = fields.find(name.substr(0, end));
    if (known == fields.end()) return std::string(token);
    return EncodeString(Utf8ToText(known->second + name.substr(end)));
}

// One name, or an array of names and other things.
std::string ObjectCopier::FieldNames(std::string_view value) const {
    std::string text;
    Lexer lexer(value);
    std::size_t copied = 0;
    for (Token token = lexer.Next(); token.kind != TokenKind::End; token = lexer.Next()) {
        if (token.kind != TokenKind::String && token.kind != TokenKind::HexString) continue;
        text.append(value.substr(copied, lexer.Position() - token.text.size() - copied)).append(FieldName(token.text));
        copied = lexer.Position();
    }
    return text.append(value.substr(copied));
}

void ObjectCopier::CloseLevel(Frame& frame, const Token& token) {
    const Level level = frame.levels.back();
    if (level.isDictionary) {
        const std::string_view subtype =
            std::string_view(frame.output).substr(level.subtypeBegin, level.subtypeEnd - level.subtypeBegin);
        const auto replace = [&](std::size_t begin, std::size_t end, const std::string& text) {
            frame.Flush(frame.lexer.Position() - 2);  // all but ">>"
            document_.Spend(frame.output.size() - begin);
            frame.output.replace(begin, end - begin, text);
        };
        if (level.targetEnd && IsName(subtype, "GoTo")) {
            replace(level.targetBegin, level.targetEnd,
                    Destination(frame.output.substr(level.targetBegin, level.targetEnd - level.targetBegin)));
        } else if (level.titleEnd && !fields.empty() && IsName(subtype, "Hide")) {
            replace(level.titleBegin, level.titleEnd,
                    FieldNames(frame.output.substr(level.titleBegin, level.titleEnd - level.titleBegin)));
        } else if (level.subtypeEnd && level.hasParent) {
            std::string role = DecodeName(subtype);
            if (const auto known = roles.find(role); known != roles.end()) {
                replace(level.subtypeBegin, level.subtypeEnd, EncodeName(known->second));
                role = known->second;
            }
            usedRoles.insert(std::move(role));
        }
        if (frame.edit && frame.levels.size() == 1 && !frame.edit->added.empty()) {
            frame.Flush(frame.PlaceOf(token));
            frame.output.append(frame.edit->added);
        }
    }
    frame.levels.pop_back();
    if (frame.levels.empty()) {
        frame.Flush(frame.lexer.Position());
    } else {
        if (!level.isDictionary && level.key == Key::Title && frame.levels.back().isDictionary) {
            frame.Flush(frame.lexer.Position());
            frame.levels.back().titleEnd = frame.output.size();
        }
        frame.levels.back().expectsKey = frame.levels.back().isDictionary;
    }
}

// Writes a complete object, or finds an equal one.
void ObjectCopier::Finish(Frame& frame) {
    document_.Spend(frame.output.size());
    if (frame.old == 0) return;
    std::optional<std::string_view> stream;
    if (frame.mayBeStream && frame.output.ends_with(">>")) stream = document_.TakeStream(frame.lexer, frame.length);
    if (stream) document_.Spend(stream->size());
    if (stream && frame.lengthEnd == 0) throw PdfError("a stream's length is wrong");
    // A signature holds for the bytes of the file that it was made in, whoever refers to it.
    if (frame.isSignature && !stream) frame.output = "null";

    if (!frame.isShared) {
        if (stream) {
            writer_.WriteStream(frame.number, frame.output, *stream);
        } else {
            writer_.WriteValue(frame.number, frame.output);
        }
        return;
    }
    inProgress_[frame.old] = false;
    const SharedResources::Content content{frame.output, stream.value_or(std::string_view()), stream.has_value()};
    const std::uint64_t hash = shared_.Hash(content);
    std::uint32_t& number = map_[frame.old];
    if (number == 0) {
        number = shared_.Find(content, hash);
        if (number != 0) return;
        number = writer_.Allocate();
        shared_.Add(document_, content, hash, number);
    }
    if (stream) {
        writer_.WriteStream(number, frame.output, *stream);
    } else {
        writer_.WriteValue(number, frame.output);
    }
}

}  // namespace zavo::pdf
