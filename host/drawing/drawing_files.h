#pragma once

#include <vector>

#include "interpreter/wall.h"

namespace rastrel::drawing {

/// All files that the drawing program may open besides its standard streams: libraries and the data
/// that they read by themselves, and the fonts of this machine and this user with their settings
/// and caches, as the font library's settings name them. Reads these settings.
[[nodiscard]] std::vector<interpreter::WallPath> DrawingFiles();

}  // namespace rastrel::drawing
