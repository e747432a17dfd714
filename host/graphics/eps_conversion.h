#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "rastrel/platform/os/expected_or.h"

namespace rastrel::graphics {

/// What the interpreter may use for one file.
struct ConversionLimits {
  std::chrono::milliseconds time{60'000};
  std::size_t bytes = std::size_t{256} << 20;          ///< of the PDF
  std::size_t memoryKibibytes = std::size_t{1} << 20;  ///< that PostScript may ask for
};

/// An Encapsulated PostScript file as PDF with one page, as large as its bounding box; or why it
/// can't be had, in words, with what the interpreter said last. Ghostscript does it, as a process
/// in its safer mode, which reads and writes no file besides.
[[nodiscard]] os::ExpectedOr<std::string, std::wstring> PdfFromEps(
    const std::string& bytes, const ConversionLimits& limits = {});

}  // namespace rastrel::graphics
