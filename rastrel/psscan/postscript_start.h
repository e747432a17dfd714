#pragma once

#include <cstdint>
#include <optional>

#include "rastrel/psscan/line_reader.h"

namespace rastrel::psscan {

/// Where the PostScript of a file begins, in bytes.
struct Start {
  std::uint32_t dosOffset = 0;  ///< first two fields of a DOS EPS header; 0 without one
  std::uint32_t dosLength = 0;
  std::uint64_t offset = 0;  ///< where the PostScript starts
};

/// Looks for the start and has the reader go on there: "%!" at the file's first byte; the value of
/// a DOS EPS header; or the first "%!PS" of a search that skips five bytes at every "%" that does
/// not begin one. False, with the start at 0, if there is none or the file can't be read.
[[nodiscard]] bool FindStart(LineReader& in, Start& start);

/// Offset of the last ASCII letter of the file, 0 if there is none. Reads backward, and no more
/// than it has to. Nothing if the file can't be read.
[[nodiscard]] std::optional<std::uint64_t> LastLetter(LineReader& in);

}  // namespace rastrel::psscan
