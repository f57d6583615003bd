// PDF syntax over bytes in memory: tokens, whole values, dictionaries and texts. Nothing here copies a value or builds
// a tree of objects, and nothing recurses: nesting of any depth costs no stack.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zavo::pdf {

enum class CharKind : std::uint8_t { Regular, White, Delimiter };

namespace detail {
constexpr std::array<CharKind, 256> MakeCharKinds() {
    std::array<CharKind, 256> kinds = {};
    for (const char c : {'\0', '\t', '\n', '\f', '\r', ' '}) kinds[static_cast<unsigned char>(c)] = CharKind::White;
    for (const char c : {'(', ')', '<', '>', '[', ']', '{', '}', '/', '%'}) {
        kinds[static_cast<unsigned char>(c)] = CharKind::Delimiter;
    }
    return kinds;
}
inline constexpr std::array<CharKind, 256> charKinds = MakeCharKinds();
}  // namespace detail

constexpr CharKind KindOf(char c) { return detail::charKinds[static_cast<unsigned char>(c)]; }
constexpr bool IsWhite(char c) { return KindOf(c) == CharKind::White; }
constexpr bool IsRegular(char c) { return KindOf(c) == CharKind::Regular; }
constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

enum class TokenKind : std::uint8_t {
    End,
    Integer,  // digits with or without a sign
    Real,
    Name,    // with its "/"
    String,  // with its parentheses
    HexString,
    DictOpen,
    DictClose,
    ArrayOpen,
    ArrayClose,
    Keyword,  // true, false, null, obj, R, ...
    Bad       // a string without an end, a stray delimiter
};

struct Token {
    TokenKind kind;
    std::string_view text;
};

class Lexer {
public:
    explicit Lexer(std::string_view bytes, std::size_t position = 0) : bytes_(bytes), position_(position) {}

    Token Next();
    std::size_t Position() const { return position_; }
    void MoveTo(std::size_t position) { position_ = position; }
    std::string_view Bytes() const { return bytes_; }

    // Skips white space and comments.
    void SkipBlanks();

private:
    Token Take(TokenKind kind, std::size_t end) {
        const Token token{kind, bytes_.substr(position_, end - position_)};
        position_ = end;
        return token;
    }
    std::size_t RegularEnd(std::size_t position) const {
        while (position < bytes_.size() && IsRegular(bytes_[position])) ++position;
        return position;
    }
    Token TakeString();

    std::string_view bytes_;
    std::size_t position_;
};

// Decimal digits with or without a sign; nothing where there is something else or more than fits.
std::optional<std::int64_t> ParseInteger(std::string_view text);

struct Reference {
    std::uint32_t number = 0;
    std::uint32_t generation = 0;
};

// The reference that `text` is, "12 0 R"; nothing for any other value.
std::optional<Reference> ParseReference(std::string_view text);
std::string ReferenceText(Reference reference);

// Takes one whole value from the lexer: a scalar, a reference, an array or a dictionary with all that is inside. The
// text has no blanks around it. Throws PdfError where there is none or it does not end.
std::string_view TakeValue(Lexer& lexer);

// The top level of a dictionary's text, in the order of the file.
class Dict {
public:
    struct Entry {
        std::string_view key;    // as it stands, with its "/"
        std::string_view value;  // see TakeValue
    };

    Dict() = default;
    // Any other value than a dictionary makes an empty one. Throws PdfError where the dictionary does not end.
    explicit Dict(std::string_view text);
    explicit Dict(std::string&& text) = delete;  // the entries are views of it

    // The value of the first entry of that name (without "/"); empty when there is none.
    std::string_view Find(std::string_view name) const;
    bool Has(std::string_view name) const { return !Find(name).empty(); }
    const std::vector<Entry>& Entries() const& { return entries_; }
    const std::vector<Entry>& Entries() && = delete;  // they end with the dictionary

private:
    std::vector<Entry> entries_;
};

// The values of an array's top level; empty for any other value.
std::vector<std::string_view> ArrayItems(std::string_view text);

// Whether a name token, which may have "#xx" escapes, is `name` (without "/").
bool IsName(std::string_view token, std::string_view name);
std::string DecodeName(std::string_view token);  // without "/"
std::string EncodeName(std::string_view name);   // with "/"

// The bytes of a string token, literal or hexadecimal; empty for any other value.
std::string DecodeString(std::string_view token);
bool IsString(std::string_view token);
// A literal string token with these bytes.
std::string EncodeString(std::string_view bytes);

// A text string: UTF-16 with a byte order mark, UTF-8 with one, or PDFDocEncoding; and back (PDFDocEncoding's ASCII
// part where it does, else UTF-16).
std::string TextToUtf8(std::string_view bytes);
std::string Utf8ToText(std::string_view utf8);

}  // namespace zavo::pdf
