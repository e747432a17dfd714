#pragma once

#include <optional>

#include "cutting/job/cut_job.h"

/// How far two process colors look apart. The same on every machine: no profile of the system is
/// read. Any thread.
namespace rastrel::cutting {

/// A color as CIE L*a*b* under D50.
struct LabColor {
  double lightness = 0;  ///< 0 black to 100 white
  double a = 0;
  double b = 0;
};

/// RGB is sRGB, and gray the RGB of three equal parts. CMYK is the third power of the Neugebauer
/// sum over the cube roots of XYZ of the 16 overprints of four solid offset inks on paper. Against
/// the profile of which those 16 are taken, colors are 1.9 apart on average, and 5.0 at most.
/// Components outside 0 to 1 count as the nearest. A spot, and a color with a wrong number of
/// components, has none.
[[nodiscard]] std::optional<LabColor> LabOf(const PaintColor& color);

/// CIEDE2000 with all weights 1. 0 is equal, 1 hardly visible, and 100 black against white.
[[nodiscard]] double ColorDifference(const LabColor& first, const LabColor& second);

}  // namespace rastrel::cutting
