#pragma once

#include <memory>

#include "children/coreodalis/image.h"

namespace rastrel::odalis {

/// Writes PNG, gray or RGB, with the resolution in pixels per metre. CMYK is turned into RGB
/// without a color profile: each light is (255 - ink) * (255 - black) / 255, rounded to the
/// nearest. Other inks can't be held, which is the failure then.
[[nodiscard]] Expected<std::unique_ptr<ImageWriter>> MakePngWriter(const ImageOrder& order,
                                                                   const ImageShape& shape,
                                                                   WorkerPool& pool);

}  // namespace rastrel::odalis
