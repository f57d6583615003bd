// The names of embedded files: forms for old readers, and what tells files of one name apart. Texts are UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zavo::pdf {

// Where the name's extension begins, with its dot; the name's end where it has none. A dot at the very front is part of
// the name.
std::size_t ExtensionPlace(std::string_view name);

// "report.pdf", "report (2).pdf", "report (3).pdf": the key of the first, second, third file of one name.
std::string NumberedFileName(std::string_view name, std::uint64_t number);

// For readers that know ASCII only: each other character becomes "_".
std::string AsciiName(std::string_view name);

// The UTF-8 text with `substitute` for each control character: of terminals, of the direction of writing, and those
// that end lines or do not show. Joiners stay, because scripts need them.
std::string WithoutControls(std::string_view text, char substitute);

}  // namespace zavo::pdf
