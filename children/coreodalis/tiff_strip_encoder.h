#pragma once

#include <memory>

#include "children/coreodalis/band_queue.h"
#include "children/coreodalis/image.h"

namespace rastrel::odalis {

/// Encodes bands into strips as a TIFF file of that shape holds them, by a TIFF file in memory that
/// is never written; a band's pieces are the strips. Inks become 0 for none.
[[nodiscard]] std::unique_ptr<BandEncoder> MakeTiffStripEncoder(const ImageShape& shape,
                                                                devices::Compression compression);

}  // namespace rastrel::odalis
