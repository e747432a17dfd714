#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "pages/page_info.h"
#include "rastrel/platform/os/expected.h"

/// Pictures of kept pages (docs/formats/page-directory.md), at any size up to the page's own. A
/// page is read row by row where it lies; memory is that of the picture and of a row.
namespace rastrel::server::web {

/// A picture has no longer side than this, in pixels.
inline constexpr unsigned MaximumPictureSide = 2048;

/// A part of a page, and its inks that are to be seen.
struct PictureRequest {
  unsigned left = 0;  ///< pixels of the page, from its top left corner
  unsigned top = 0;
  unsigned width = 0;  ///< at least 1
  unsigned height = 0;
  /// Page pixels that a pixel of the picture is wide and high, at least 1. The last ones may have
  /// fewer.
  double xStep = 1;
  double yStep = 1;
  /// A plane by its place in the description; nothing: all inks together.
  std::optional<std::size_t> plane{};
  bool isTinted = false;  ///< the plane in its own color; otherwise gray, dark where ink is
};

/// Rows from the top, samples side by side, 8 bits.
struct Picture {
  unsigned width = 0;
  unsigned height = 0;
  unsigned samples = 1;  ///< of a pixel: 1 is gray, 3 red, green and blue
  std::string bytes;
};

/// Draws a part of a page. A pixel is the mean of the page's pixels that it covers, or of 4 by 4
/// spread among them if they are more. Inks are laid over each other as clear ones: each takes away
/// its share of the light that those before it left. A spot color whose look nobody knows is gray.
///
/// Fails, as BadInput, for a part that is not on the page, a picture that is too large, a page of
/// more than 8 bits, and files that are not as the description says.
[[nodiscard]] Expected<Picture> DrawPart(const std::string& directory, const pages::PageInfo& page,
                                         const PictureRequest& request);

/// The whole page in a picture that is `width` pixels wide, and as high as its resolution makes it.
/// It has no more pixels than the page, and no longer side than MaximumPictureSide.
/// REQUIRES: `width` is at least 1.
[[nodiscard]] PictureRequest WholePage(const pages::PageInfo& page, unsigned width);

/// Tiles are pictures of 256 by 256 pixels, less at the right and the bottom edge. At level 0 a
/// pixel is the page's own, and at each further level it is twice as wide and high.
inline constexpr unsigned TileSide = 256;
/// How many levels there are until one tile holds the whole page: 1 and more.
[[nodiscard]] unsigned TileLevels(const pages::PageInfo& page);
/// The tile in a column and a row, from 0. Nothing if there is none.
[[nodiscard]] std::optional<PictureRequest> Tile(const pages::PageInfo& page, unsigned level,
                                                 unsigned column, unsigned row);

}  // namespace rastrel::server::web
