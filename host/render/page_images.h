#pragma once

#include <functional>
#include <string>

#include "host/render/document_images.h"
#include "host/render/picture_cache.h"

namespace rastrel::render {

/// Takes a finished file; `number` is its page, or 0 where it is the only one. A failure ends the
/// drawing.
using TakeImage = std::function<Expected<void>(std::string image, int number)>;

/// Draws the pictures one by one in this process, placed files by what `opener` opens, and passes
/// each on. Ends with the first failure of either. Only the drawing program has an opener that
/// opens foreign files.
[[nodiscard]] Expected<void> DrawImages(const ImageSource& source, ImageFormat format,
                                        const ImageOptions& options, const PictureOpener& opener,
                                        const TakeImage& take);

}  // namespace rastrel::render
