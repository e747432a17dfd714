#pragma once

#include <memory>

#include "children/coreodalis/image.h"

namespace rastrel::odalis {

/// Writes TIFF: strips of about 64 KiB, LZW or deflate with horizontal differences or neither,
/// pixels' samples side by side, the resolution in pixels per inch. CMYK and inks become the
/// photometric "separated" with 0 for no ink, as that one wants it; inks other than the four carry
/// their names. Files that could grow over 4 GiB become BigTIFF. Every shape can be held.
[[nodiscard]] Expected<std::unique_ptr<ImageWriter>> MakeTiffWriter(const ImageOrder& order,
                                                                    const ImageShape& shape,
                                                                    WorkerPool& pool);

}  // namespace rastrel::odalis
