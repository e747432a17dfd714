#pragma once

#include <optional>
#include <string>
#include <vector>

#include "rastrel/platform/values/rect.h"

namespace rastrel::cli {

/// Has Ghostscript paint all pages of a file at a low resolution, one plane for each color, and
/// returns the names of the planes besides the four process colors that hold ink; UTF-8, sorted.
/// It runs in the safer mode, in a directory of its own, for at most 60 seconds. `bounds` choose
/// the resolution. Throws CommandError: NotInstalled without Ghostscript, JobFailed if it fails.
[[nodiscard]] std::vector<std::string> PaintedSpots(const std::string& path,
                                                    const std::optional<CRect>& bounds);

/// Whether a plane has ink. `bytes` is an uncompressed little-endian TIFF of 8 bits, in which 255
/// is no ink. Nothing if it is none, or is cut short.
[[nodiscard]] std::optional<bool> PlaneHasInk(std::string_view bytes);

/// The color's name in the name of a plane's file, "p1(Name).tif", as bytes; nothing in another.
[[nodiscard]] std::optional<std::string> PlaneName(std::string_view fileName);

}  // namespace rastrel::cli
