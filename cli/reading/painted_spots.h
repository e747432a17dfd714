#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/values/rect.h"

namespace rastrel::cli {

/// Fails with a message for the user if this machine has no Ghostscript.
[[nodiscard]] Expected<void> CheckGhostscript();

/// Has Ghostscript paint all pages of a file at a low resolution, one plane for each color, and
/// returns the names of the planes besides the four process colors that hold ink; UTF-8, sorted.
/// `bounds` are the page of a file that sets none, and choose the resolution. Fails if Ghostscript
/// fails or takes more than 60 seconds. REQUIRES: CheckGhostscript succeeded.
[[nodiscard]] Expected<std::vector<std::string>> PaintedSpots(const std::string& path,
                                                              const std::optional<CRect>& bounds);

}  // namespace rastrel::cli
