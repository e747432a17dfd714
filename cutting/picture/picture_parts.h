#pragma once

#include <string>
#include <variant>
#include <vector>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cutting {

/// A line along contours, or an area within them.
struct PictureLine {
  std::vector<Contour> contours;
  std::string color;  ///< "#rrggbb"
  double width = 0;   ///< millimetres; 0: the area is filled
  double dash = 0;    ///< length of dashes and gaps, millimetres; 0: none
};

/// A text that begins at a point, with a white rim.
struct PictureText {
  Point at;
  std::string text;  ///< printable ASCII
  std::string color;
  double size = 0;  ///< of the font, millimetres
};

/// A picture before it has a form. y is upward.
struct PictureParts {
  Box box;  ///< all that is to be seen
  double unit = 0;
  std::vector<std::variant<PictureLine, PictureText>> parts;
};

[[nodiscard]] Expected<PictureParts> PartsOfPicture(const CutJob& job);

/// In millimetres.
[[nodiscard]] std::string SvgOfParts(const PictureParts& picture);
/// `pixels` along the longer edge. Fails for numbers beyond the limits of cut_picture.h.
[[nodiscard]] Expected<std::string> PngOfParts(const PictureParts& picture, int pixels);

}  // namespace rastrel::cutting
