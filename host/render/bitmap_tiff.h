#pragma once

#include <string>

#include "host/document/bitmap.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::render {

/// A bitmap as a TIFF file of one page, without loss: 8 bits a sample, gray or red, green and blue,
/// compressed (Deflate) in strips, with pixels to the inch across and down. The same bitmap makes
/// the same bytes. Fails for one that takes more than a classic TIFF can hold, 4 GiB, or for want
/// of memory.
[[nodiscard]] Expected<std::string> TiffOfBitmap(const document::BitmapPixels& pixels, double dpiX,
                                                 double dpiY);

}  // namespace rastrel::render
