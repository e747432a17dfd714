#pragma once

#include <memory>
#include <string>

#include "host/graphics/picture.h"

namespace rastrel::drawing {

/// A file of that kind as a picture. Images are decoded and documents read here, so that a picture
/// can be drawn once it is open. A failure's `why` is a sentence about the file ("it has no
/// pixels") for the user. Of a PDF file the first page counts, with its crop box. EPS is not
/// opened: it comes as PDF (graphics::DrawableOf).
///
/// True size: an SVG by its own units, with 96 px to the inch; an image by the resolution that it
/// names, and 96 dpi where that is missing or not plausible; PDF by its points.
[[nodiscard]] Expected<std::unique_ptr<graphics::Picture>> OpenPicture(
    document::GraphicKind kind, std::shared_ptr<const std::string> bytes);

/// The sizes that a picture may have, in points.
[[nodiscard]] Expected<void> CheckPictureSize(double width, double height);

}  // namespace rastrel::drawing
