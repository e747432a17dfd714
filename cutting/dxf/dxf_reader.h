#pragma once

#include <string>
#include <string_view>

#include "cutting/drawing/drawing.h"
#include "rastrel/platform/os/expected.h"

/// Drawings in DXF (docs/formats/drawings.md).
namespace rastrel::cutting {

/// Reads an ASCII DXF file of R12 or later: the objects of the model space, those of blocks where
/// they are inserted, with their layers and colors. Objects of layers that are off or frozen are
/// left out, and the others that are not read are findings. The page is the box around all paths.
/// Fails with `name`, the line and the reason, as BadInput; memory stays in proportion to the text,
/// and to limits where blocks are inserted often.
[[nodiscard]] Expected<Drawing> ReadDxf(std::string_view text, const std::string& name);

}  // namespace rastrel::cutting
