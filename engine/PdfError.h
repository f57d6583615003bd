// What the engine's code throws when a PDF is not one, or not one that can be worked on.
#pragma once

#include <stdexcept>

namespace zavo::pdf {

class PdfError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// What would unpack to far more than its size lets expect. Such a file is not worth a repair.
class PdfTooLarge : public PdfError {
    using PdfError::PdfError;
};

}  // namespace zavo::pdf
