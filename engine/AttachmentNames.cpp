// The names of embedded files.
#include "engine/AttachmentNames.h"

#include <algorithm>
#include <iterator>

namespace zavo::pdf {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};
constexpr Range controls[] = {
    {0x0000, 0x001F}, {0x007F, 0x009F}, {0x061C, 0x061C}, {0x200B, 0x200B},
    {0x200E, 0x200F}, {0x2028, 0x202E}, {0x2066, 0x2069}, {0xFEFF, 0xFEFF},
};

struct Character {
    char32_t code;
    std::size_t length;
};

// The first character of a text that is not empty. What is no UTF-8 counts byte by byte, and so does what is in four
// bytes: no control is among that.
Character FirstCharacter(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<char32_t>(static_cast<unsigned char>(text[i])); };
    const auto continues = [&](std::size_t i) { return i < text.size() && (byte(i) & 0xC0) == 0x80; };
    const char32_t lead = byte(0);
    if ((lead & 0xE0) == 0xC0 && continues(1)) return {((lead & 0x1F) << 6) | (byte(1) & 0x3F), 2};
    if ((lead & 0xF0) == 0xE0 && continues(1) && continues(2)) {
        return {((lead & 0x0F) << 12) | ((byte(1) & 0x3F) << 6) | (byte(2) & 0x3F), 3};
    }
    return {lead < 0x80 ? lead : 0xFFFD, 1};
}

}  // namespace

std::size_t ExtensionPlace(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? name.size() : dot;
}

std::string NumberedFileName(std::string_view name, std::uint64_t number) {
    if (number < 2) return std::string(name);
    const std::size_t dot = ExtensionPlace(name);
    return std::string(name.substr(0, dot)) + " (" + std::to_string(number) + ")" + std::string(name.substr(dot));
}

std::string AsciiName(std::string_view name) {
    constexpr unsigned char firstContinuation = 0x80;
    constexpr unsigned char firstLead = 0xC0;
    std::string ascii;
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < firstContinuation) {
            ascii += c;
        } else if (byte >= firstLead) {
            ascii += '_';
        }
    }
    return ascii;
}

std::string WithoutControls(std::string_view text, char substitute) {
    std::string kept;
    while (!text.empty()) {
        const Character character = FirstCharacter(text);
        const bool isControl = std::any_of(std::begin(controls), std::end(controls), [&](const Range& range) {
            return character.code >= range.first && character.code <= range.last;
        });
        if (isControl) {
            kept += substitute;
        } else {
            kept += text.substr(0, character.length);
        }
        text.remove_prefix(character.length);
    }
    return kept;
}

}  // namespace zavo::pdf
