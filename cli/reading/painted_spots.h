#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rastrel/platform/values/rect.h"

namespace rastrel::cli {

/// Has Ghostscript paint all pages of a file at a low resolution, one plane for each color, and
/// returns the names of the planes besides the four process colors that hold ink; UTF-8, sorted.
/// `bounds` are the page of a file that sets none, and choose the resolution. Throws CommandError:
/// NotInstalled without Ghostscript, JobFailed if it fails or takes more than 60 seconds.
[[nodiscard]] std::vector<std::string> PaintedSpots(const std::string& path,
                                                    const std::optional<CRect>& bounds);

}  // namespace rastrel::cli
