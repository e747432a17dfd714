#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "pages/page_info.h"

namespace rastrel::interpreter {

/// How a spot color looks at full strength.
struct SpotInk {
  std::string name;  ///< UTF-8; any character but a line end
  pages::InkColor color{};
};

/// The place in a line where the separation device speaks of a spot color, or npos. Text before it
/// is a line that the job has left open.
[[nodiscard]] std::size_t FindSpotInk(std::string_view line);

/// Reads the line that the separation device prints of each spot color as it writes a page:
///
///     %%SeparationColor: "Gold Ink" 100% ink = 6552 9828 29484 0 CMYK
///
/// The numbers are cyan, magenta, yellow and black, from 0 to 32760, which the color's own function
/// gives at full strength; those of another color space are converted. Bytes of a name that are no
/// UTF-8 count as Windows-1252. Nothing if the line has another form, and if there is no ink in the
/// color: so it is printed for a plane that is reserved and not painted in.
///
/// A job can print such a line itself, and is believed: it could as well paint in that color.
[[nodiscard]] std::optional<SpotInk> ReadSpotInk(std::string_view line);

}  // namespace rastrel::interpreter
