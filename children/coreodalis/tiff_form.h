#pragma once

#include <tiffio.h>

#include <cstdint>

#include "children/coreodalis/image.h"

namespace rastrel::odalis {

/// Rows of a strip: about 64 KiB, and one row at least.
[[nodiscard]] std::uint32_t RowsPerStrip(const ImageShape& shape);

/// Sets the fields that decide how a strip is encoded. `height`: rows of the picture.
void SetStripForm(TIFF* tiff, const ImageShape& shape, devices::Compression compression,
                  std::uint32_t height);

}  // namespace rastrel::odalis
