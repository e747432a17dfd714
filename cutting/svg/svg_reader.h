#pragma once

#include <string>
#include <string_view>

#include "cutting/drawing/drawing.h"
#include "rastrel/platform/os/expected.h"

/// Drawings in SVG (docs/formats/drawings.md).
namespace rastrel::cutting {

/// Reads an SVG document: paths and basic shapes with their fills and strokes, as a path each, and
/// the layers that they are in. Hidden parts are left out, and the others that are not read are
/// findings. Nothing outside the text is looked at. Fails with `name`, the line and the reason, as
/// BadInput; memory stays in proportion to the text, and to limits where parts are used often.
[[nodiscard]] Expected<Drawing> ReadSvg(std::string_view text, const std::string& name);

}  // namespace rastrel::cutting
