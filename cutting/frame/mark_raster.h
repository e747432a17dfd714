#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "cutting/job/cut_job.h"

/// The ink of registration marks as pixels of a page.
namespace rastrel::cutting {

/// A page's pixels. The lower left corner of the lowest row's first pixel is the page's.
struct PixelGrid {
  std::size_t width = 0;   ///< pixels
  std::size_t height = 0;  ///< pixels
  double xResolution = 0;  ///< pixels an inch, above 0
  double yResolution = 0;  ///< pixels an inch, above 0
};

/// Rows of marks. Memory is in proportion to the marks, and not to the page. Used on one thread.
class MarkRaster {
 public:
  MarkRaster(const std::vector<RegistrationMark>& marks, const PixelGrid& grid);

  /// How much of each pixel of a row, counted from the top, is under ink: 0 none, 255 all. Exact
  /// across, and to a sixteenth of a pixel up and down. `row` has the grid's width. Returns whether
  /// there is any ink.
  [[nodiscard]] bool CoverageOf(std::size_t fromTop, std::span<std::uint8_t> row);

 private:
  // A side of an outline, in pixels from the upper left corner; `top` is less than `bottom`.
  struct Side {
    double top;
    double bottom;
    double x;      // at its top
    double slope;  // of x over y
  };

  void AddSides(const std::vector<Point>& outline, const PixelGrid& grid);

  std::size_t m_Width;
  std::vector<Side> m_Sides;  // sorted by their tops
  std::vector<double> m_Sums;
};

}  // namespace rastrel::cutting
