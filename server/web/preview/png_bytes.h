#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"
#include "server/web/preview/page_picture.h"

namespace rastrel::server::web {

/// The picture as a PNG file. Fails without memory to compress it.
[[nodiscard]] Expected<std::string> PngBytes(const Picture& picture);

}  // namespace rastrel::server::web
