// PDF syntax over bytes in memory.
#include "engine/Lexer.h"

#include <charconv>
#include <system_error>

#include "engine/PdfError.h"

namespace zavo::pdf {

namespace {

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

TokenKind KindOfWord(std::string_view text) {
    std::size_t i = text[0] == '+' || text[0] == '-' ? 1 : 0;
    bool digits = false;
    bool point = false;
    for (; i < text.size(); ++i) {
        if (IsDigit(text[i])) {
            digits = true;
        } else if (text[i] == '.' && !point) {
            point = true;
        } else {
            return TokenKind::Keyword;
        }
    }
    if (!digits) return TokenKind::Keyword;
    return point ? TokenKind::Real : TokenKind::Integer;
}

// What never stands inside a value: an object that does not end is found out where the next thing begins.
bool EndsObject(std::string_view keyword) {
    return keyword == "endobj" || keyword == "obj" || keyword == "stream" || keyword == "endstream" ||
           keyword == "xref" || keyword == "trailer";
}

std::string DecodeLiteral(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '\r') {  // any line end reads as a line feed
            if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
            bytes += '\n';
            continue;
        }
        if (c != '\\') {
            bytes += c;
            continue;
        }
        if (++i == text.size()) break;
        c = text[i];
        switch (c) {
            case 'n': bytes += '\n'; break;
            case 'r': bytes += '\r'; break;
            case 't': bytes += '\t'; break;
            case 'b': bytes += '\b'; break;
            case 'f': bytes += '\f'; break;
            case '\n': break;
            case '\r':
                if (i + 1 < text.size() && text[i + 1] == '\n') ++i;
                break;
            default:
                if (c >= '0' && c <= '7') {
                    unsigned value = 0;
                    std::size_t end = i + 3 < text.size() ? i + 3 : text.size();
                    for (; i < end && text[i] >= '0' && text[i] <= '7'; ++i) {
                        value = value * 8 + static_cast<unsigned>(text[i] - '0');
                    }
                    --i;
                    bytes += static_cast<char>(value & 0xFF);
                } else {
                    bytes += c;
                }
        }
    }
    return bytes;
}

std::string DecodeHex(std::string_view text) {
    std::string bytes;
    int high = -1;
    for (const char c : text) {
        const int digit = HexDigit(c);
        if (digit < 0) continue;
        if (high < 0) {
            high = digit;
        } else {
            bytes += static_cast<char>(high * 16 + digit);
            high = -1;
        }
    }
    if (high >= 0) bytes += static_cast<char>(high * 16);  // a missing last digit is 0
    return bytes;
}

void AppendUtf8(std::string& text, char32_t c) {
    const auto put = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | (c >> 6));
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | (c >> 18));
        put(0x80 | ((c >> 12) & 0x3F));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

// PDFDocEncoding where it is not Latin-1 (ISO 32000-1, annex D.3); 0 marks undefined codes.
constexpr char32_t docEncoding18[] = {0x02D8, 0x02C7, 0x02C6, 0x02D9, 0x02DD, 0x02DB, 0x02DA, 0x02DC};
constexpr char32_t docEncoding80[] = {0x2022, 0x2020, 0x2021, 0x2026, 0x2014, 0x2013, 0x0192, 0x2044, 0x2039,
                                      0x203A, 0x2212, 0x2030, 0x201E, 0x201C, 0x201D, 0x2018, 0x2019, 0x201A,
                                      0x2122, 0xFB01, 0xFB02, 0x0141, 0x0152, 0x0160, 0x0178, 0x017D, 0x0131,
                                      0x0142, 0x0153, 0x0161, 0x017E, 0,      0x20AC};

std::string Utf16BytesToUtf8(std::string_view bytes, bool bigEndian) {
    std::string text;
    const auto unit = [&](std::size_t i) {
        const auto a = static_cast<unsigned char>(bytes[i]);
        const auto b = static_cast<unsigned char>(bytes[i + 1]);
        return static_cast<char32_t>(bigEndian ? a * 256 + b : b * 256 + a);
    };
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        char32_t c = unit(i);
        if (c >= 0xD800 && c < 0xDC00 && i + 3 < bytes.size()) {
            const char32_t low = unit(i + 2);
            if (low >= 0xDC00 && low < 0xE000) {
                c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                i += 2;
            }
        }
        if (c >= 0xD800 && c < 0xE000) c = 0xFFFD;  // half a pair
        AppendUtf8(text, c);
    }
    return text;
}

// Takes one character off the front of `utf8`; anything that is not UTF-8 reads as U+FFFD, byte by byte.
char32_t TakeUtf8(std::string_view& utf8) {
    const auto first = static_cast<unsigned char>(utf8[0]);
    std::size_t length = first < 0x80 ? 1 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC2 ? 2 : 0;
    if (length == 0 || first > 0xF4 || length > utf8.size()) {
        utf8.remove_prefix(1);
        return 0xFFFD;
    }
    char32_t c = length == 1 ? first : first & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(utf8[i]);
        if ((next & 0xC0) != 0x80) {
            utf8.remove_prefix(1);
            return 0xFFFD;
        }
        c = (c << 6) | (next & 0x3F);
    }
    utf8.remove_prefix(length);
    return c > 0x10FFFF || (c >= 0xD800 && c < 0xE000) ? 0xFFFD : c;
}

}  // namespace

void Lexer::SkipBlanks() {
    while (position_ < bytes_.size()) {
        const char c = bytes_[position_];
        if (IsWhite(c)) {
            ++position_;
        } else if (c == '%') {
            while (position_ < bytes_.size() && bytes_[position_] != '\n' && bytes_[position_] != '\r') ++position_;
        } else {
            return;
        }
    }
}

Token Lexer::TakeString() {
    std::size_t depth = 0;
    for (std::size_t i = position_; i < bytes_.size(); ++i) {
        switch (bytes_[i]) {
            case '\\': ++i; break;
            case '(': ++depth; break;
            case ')':
                if (--depth == 0) return Take(TokenKind::String, i + 1);
                break;
            default: break;
        }
    }
    return Take(TokenKind::Bad, bytes_.size());
}

Token Lexer::Next() {
    SkipBlanks();
    if (position_ >= bytes_.size()) return {TokenKind::End, {}};
    const char c = bytes_[position_];
    const bool doubled = position_ + 1 < bytes_.size() && bytes_[position_ + 1] == c;
    switch (c) {
        case '/': return Take(TokenKind::Name, RegularEnd(position_ + 1));
        case '(': return TakeString();
        case '[': return Take(TokenKind::ArrayOpen, position_ + 1);
        case ']': return Take(TokenKind::ArrayClose, position_ + 1);
        case '<': {
            if (doubled) return Take(TokenKind::DictOpen, position_ + 2);
            const std::size_t end = bytes_.find('>', position_);
            if (end == std::string_view::npos) return Take(TokenKind::Bad, bytes_.size());
            return Take(TokenKind::HexString, end + 1);
        }
        case '>': return doubled ? Take(TokenKind::DictClose, position_ + 2) : Take(TokenKind::Bad, position_ + 1);
        case ')':
        case '{':
        case '}': return Take(TokenKind::Bad, position_ + 1);
        default: {
            Token token = Take(TokenKind::Keyword, RegularEnd(position_));
            token.kind = KindOfWord(token.text);
            return token;
        }
    }
}

std::optional<std::int64_t> ParseInteger(std::string_view text) {
    if (text.size() > 1 && text[0] == '+' && IsDigit(text[1])) text.remove_prefix(1);
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<Reference> ParseReference(std::string_view text) {
    if (text.size() < 5 || text.back() != 'R' || !IsDigit(text[0])) return std::nullopt;
    Reference reference;
    const char* const end = text.data() + text.size();
    auto [next, error] = std::from_chars(text.data(), end, reference.number);
    if (error != std::errc()) return std::nullopt;
    Lexer lexer(text, static_cast<std::size_t>(next - text.data()));
    const Token generation = lexer.Next();
    if (generation.kind != TokenKind::Integer || lexer.Next().text != "R" || lexer.Position() != text.size()) {
        return std::nullopt;
    }
    const std::optional<std::int64_t> value = ParseInteger(generation.text);
    if (!value || *value < 0 || *value > 65535) return std::nullopt;
    reference.generation = static_cast<std::uint32_t>(*value);
    return reference;
}

std::string ReferenceText(Reference reference) {
    return std::to_string(reference.number) + " " + std::to_string(reference.generation) + " R";
}

std::string_view TakeValue(Lexer& lexer) {
    lexer.SkipBlanks();
    const std::size_t begin = lexer.Position();
    const auto taken = [&] { return lexer.Bytes().substr(begin, lexer.Position() - begin); };
    Token token = lexer.Next();
    switch (token.kind) {
        case TokenKind::Integer: {
            const std::size_t end = lexer.Position();
            if (token.text[0] != '+' && token.text[0] != '-' && lexer.Next().kind == TokenKind::Integer) {
                const Token last = lexer.Next();
                if (last.kind == TokenKind::Keyword && last.text == "R") return taken();
            }
            lexer.MoveTo(end);
            return taken();
        }
        case TokenKind::Keyword:
            if (EndsObject(token.text) || token.text == "R") throw PdfError("a value is missing");
            return taken();
        case TokenKind::Real:
        case TokenKind::Name:
        case TokenKind::String:
        case TokenKind::HexString: return taken();
        case TokenKind::DictOpen:
        case TokenKind::ArrayOpen: break;
        default: throw PdfError("a value is missing");
    }
    for (std::size_t depth = 1; depth != 0;) {
        token = lexer.Next();
        switch (token.kind) {
            case TokenKind::DictOpen:
            case TokenKind::ArrayOpen: ++depth; break;
            case TokenKind::DictClose:
            case TokenKind::ArrayClose: --depth; break;
            case TokenKind::Keyword:
                if (EndsObject(token.text)) throw PdfError("an object does not end");
                break;
            case TokenKind::End:
            case TokenKind::Bad: throw PdfError("an object does not end");
            default: break;
        }
    }
    return taken();
}

Dict::Dict(std::string_view text) {
    Lexer lexer(text);
    if (lexer.Next().kind != TokenKind::DictOpen) return;
    for (;;) {
        const Token key = lexer.Next();
        if (key.kind == TokenKind::DictClose) return;
        if (key.kind != TokenKind::Name) throw PdfError("a dictionary's key is no name");
        entries_.push_back({key.text, TakeValue(lexer)});
    }
}

std::string_view Dict::Find(std::string_view name) const {
    for (const Entry& entry : entries_) {
        if (IsName(entry.key, name)) return entry.value;
    }
    return {};
}

std::vector<std::string_view> ArrayItems(std::string_view text) {
    std::vector<std::string_view> items;
    Lexer lexer(text);
    if (lexer.Next().kind != TokenKind::ArrayOpen) return items;
    for (;;) {
        lexer.SkipBlanks();
        const std::size_t begin = lexer.Position();
        if (lexer.Next().kind == TokenKind::ArrayClose) return items;
        lexer.MoveTo(begin);
        items.push_back(TakeValue(lexer));
    }
}

bool IsName(std::string_view token, std::string_view name) {
    if (token.empty() || token[0] != '/') return false;
    token.remove_prefix(1);
    if (token == name) return true;
    if (token.size() <= name.size() || token.find('#') == std::string_view::npos) return false;
    std::size_t i = 0;
    for (std::size_t k = 0; k < name.size(); ++k, ++i) {
        if (i >= token.size()) return false;
        char c = token[i];
        if (c == '#' && i + 2 < token.size() && HexDigit(token[i + 1]) >= 0 && HexDigit(token[i + 2]) >= 0) {
            c = static_cast<char>(HexDigit(token[i + 1]) * 16 + HexDigit(token[i + 2]));
            i += 2;
        }
        if (c != name[k]) return false;
    }
    return i == token.size();
}

std::string DecodeName(std::string_view token) {
    std::string name;
    for (std::size_t i = 1; i < token.size(); ++i) {
        if (token[i] == '#' && i + 2 < token.size() && HexDigit(token[i + 1]) >= 0 && HexDigit(token[i + 2]) >= 0) {
            name += static_cast<char>(HexDigit(token[i + 1]) * 16 + HexDigit(token[i + 2]));
            i += 2;
        } else {
            name += token[i];
        }
    }
    return name;
}

std::string EncodeName(std::string_view name) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string token = "/";
    for (const char c : name) {
        if (IsRegular(c) && c > ' ' && c < 0x7F && c != '#') {
            token += c;
        } else {
            const auto code = static_cast<unsigned char>(c);
            token += '#';
            token += digits[code >> 4];
            token += digits[code & 15];
        }
    }
    return token;
}

bool IsString(std::string_view token) {
    return token.size() >= 2 && (token[0] == '(' || (token[0] == '<' && token[1] != '<'));
}

std::string DecodeString(std::string_view token) {
    if (!IsString(token)) return {};
    const std::string_view inside = token.substr(1, token.size() - 2);
    return token[0] == '(' ? DecodeLiteral(inside) : DecodeHex(inside);
}

std::string EncodeString(std::string_view bytes) {
    std::string token = "(";
    for (const char c : bytes) {
        switch (c) {
            case '(':
            case ')':
            case '\\':
                token += '\\';
                token += c;
                break;
            case '\r': token += "\\r"; break;  // a bare one would read as a line feed
            default: token += c;
        }
    }
    return token += ')';
}

std::string TextToUtf8(std::string_view bytes) {
    if (bytes.starts_with("\xFE\xFF")) return Utf16BytesToUtf8(bytes.substr(2), true);
    if (bytes.starts_with("\xFF\xFE")) return Utf16BytesToUtf8(bytes.substr(2), false);
    std::string text;
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        for (std::string_view rest = bytes.substr(3); !rest.empty();) AppendUtf8(text, TakeUtf8(rest));
        return text;
    }
    for (const char byte : bytes) {
        const auto code = static_cast<unsigned char>(byte);
        char32_t c = code;
        if (code >= 0x18 && code < 0x20) c = docEncoding18[code - 0x18];
        if (code >= 0x80 && code <= 0xA0) c = docEncoding80[code - 0x80];
        AppendUtf8(text, c ? c : 0xFFFD);
    }
    return text;
}

std::string Utf8ToText(std::string_view utf8) {
    bool plain = true;
    for (const char c : utf8) plain = plain && (c == '\n' || c == '\r' || c == '\t' || (c >= ' ' && c < 0x7F));
    if (plain) return std::string(utf8);
    std::string text = "\xFE\xFF";
    const auto put = [&text](char32_t unit) {
        text += static_cast<char>(unit >> 8);
        text += static_cast<char>(unit & 0xFF);
    };
    while (!utf8.empty()) {
        const char32_t c = TakeUtf8(utf8);
        if (c < 0x10000) {
            put(c);
        } else {
            put(0xD800 + ((c - 0x10000) >> 10));
            put(0xDC00 + ((c - 0x10000) & 0x3FF));
        }
    }
    return text;
}

}  // namespace zavo::pdf
