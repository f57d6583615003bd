// The names of embedded files.
#include "engine/AttachmentNames.h"

namespace zavo::pdf {

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

}  // namespace zavo::pdf
