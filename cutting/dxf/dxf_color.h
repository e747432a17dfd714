#pragma once

#include "cutting/job/cut_job.h"

namespace rastrel::cutting {

/// The RGB of a color number from 1 to 255. 7, which shows in black or in white as the ground
/// needs, is black. Other numbers count as 7.
[[nodiscard]] PaintColor DxfColor(int number);

/// The RGB of a true color, 0xRRGGBB.
[[nodiscard]] PaintColor DxfTrueColor(int rgb);

}  // namespace rastrel::cutting
