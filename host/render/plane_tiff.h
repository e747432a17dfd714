#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::render {

/// One page of a TIFF file: a plane of 8 bits, 255 for no ink, which viewers show as white.
struct TiffPage {
  std::string name;  ///< of the ink, UTF-8
  std::uint32_t width = 1;
  std::uint32_t height = 1;
  double xResolution = 72;  ///< pixels per inch
  double yResolution = 72;
};

/// A TIFF file of planes, uncompressed, a page each, in pieces: for each page its head and then its
/// pixels, without padding.
///
///     +--------+--------+---------+--------+---------+----
///     | header | head 1 | pixels  | head 2 | pixels  | ...
///     | 8 bytes|        | of 1    |        | of 2    |
///     +--------+--------+---------+--------+---------+----
///      Head(0): both              Head(1)
class PlaneTiff {
 public:
  /// Fails with a sentence for the user if there is no page, or if they are more than the 4 GiB
  /// that a TIFF file can hold.
  [[nodiscard]] static Expected<PlaneTiff> Of(std::vector<TiffPage> pages);

  /// The bytes in front of a page's pixels; pages count from 0.
  [[nodiscard]] std::string Head(std::size_t page) const;

 private:
  PlaneTiff() = default;

  std::vector<TiffPage> m_Pages;
  std::vector<std::uint32_t> m_Offsets;  // of the heads, the file's header not included
};

}  // namespace rastrel::render
