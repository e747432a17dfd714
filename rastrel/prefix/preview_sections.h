#pragma once

#include <string>

#include "rastrel/job/job_data.h"

/// The sections that only the preview's prefix has.
namespace rastrel::prefix {

/// Asks the RIP to keep cut data apart, names the cut color, and keeps the job from changing it.
/// Unlike the ordinary prefix: CMYK components are 0 to 1000, RGB needs its own model number,
/// a separation is named, and the operator is replaced with no alias of the old one.
[[nodiscard]] std::wstring CutDataSection(const CJobData& settings);

/// Sets the raster output: 8 bits, RGB, the resolution in pixels per inch on both axes.
[[nodiscard]] std::wstring PreviewHeader(int dpi);

}  // namespace rastrel::prefix
