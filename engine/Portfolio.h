// Empty portfolios: PDFs that are there to have files attached.
#pragma once

#include <filesystem>

namespace zavo::pdf {

// Makes one at `path`, where nothing may be; throws FileError.
void WriteEmptyPortfolio(const std::filesystem::path& path);

}  // namespace zavo::pdf
