// What the engine's code throws when a PDF is not one, or not one that can be worked on.
#pragma once

#include <stdexcept>

namespace zavo::pdf {

class PdfError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

}  // namespace zavo::pdf
