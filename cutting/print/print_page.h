#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

/// A page of pictures as a PDF file, which prints as any other: interpreted pages, of which the
/// tool's paths have been taken out, with what is added to them for a cutter.
namespace rastrel::cutting {

/// The process colors of pixels.
enum class ProcessColors { Gray, Rgb, Cmyk };

/// A further plane of pixels in CMYK.
struct SpotInk {
  std::string name;              ///< UTF-8
  std::array<double, 4> look{};  ///< at full strength: cyan, magenta, yellow, black, from 0 to 1
};

/// The meaning of a pixel's samples, a byte each: those of the process colors, then the spots'.
/// 255 is white, or no ink.
struct PixelInks {
  ProcessColors process = ProcessColors::Rgb;
  std::vector<SpotInk> spots{};  ///< only with Cmyk

  /// 1, 3, or 4 and the spots.
  [[nodiscard]] std::size_t Samples() const;
};

/// Pixels and their place on a page.
struct PlacedPixels {
  std::size_t width = 0;   ///< pixels, above 0
  std::size_t height = 0;  ///< pixels, above 0
  PixelInks inks{};
  /// Fills a row, counted from the top, of width times Samples bytes. Called for each row once and
  /// in their order. A failure ends the writing.
  std::function<Expected<void>(std::size_t fromTop, std::span<char> row)> read{};
  /// From millimetres on the pixels, from their lower left corner, to those on the page.
  Transform place{};
  double pixelWidth = 0;        ///< millimetres
  double pixelHeight = 0;       ///< millimetres
  std::vector<Contour> clip{};  ///< on the page, closed, even-odd; empty: the pixels are all shown
};

/// Printable ASCII in black, its line's left end at a place.
struct PageLabel {
  Point place{};
  double height = 3;  ///< of its letters, millimetres
  std::string text{};
};

struct PrintPage {
  double width = 0;                      ///< millimetres
  double height = 0;                     ///< millimetres
  std::vector<PlacedPixels> pictures{};  ///< a later one covers earlier ones
  std::vector<PageLabel> labels{};
};

/// Takes the bytes of a file, in their order.
using ByteSink = std::function<Expected<void>(std::string_view bytes)>;

/// Writes the page. Pixels are compressed without loss: printed at their own resolution, where
/// their corner is on a whole pixel of the page, each becomes one pixel with the same samples. The
/// memory is in proportion to a row. Fails with the failures of the pixels and of the sink, for
/// pixels without extent, and for a page without extent.
[[nodiscard]] Expected<void> WritePrintPage(const PrintPage& page, const ByteSink& sink);

/// Pictures of marks on a page, with their ink exact to a part of a pixel. Each begins on a whole
/// pixel of the page. With `all` they are of all inks, else of black alone: of gray, of RGB's black
/// or of K.
[[nodiscard]] std::vector<PlacedPixels> PicturesOf(const std::vector<RegistrationMark>& marks,
                                                   const PixelInks& inks, double pixelWidth,
                                                   double pixelHeight, bool all);

}  // namespace rastrel::cutting
