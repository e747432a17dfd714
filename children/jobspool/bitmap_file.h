#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::jobspool {

/// Writes an RGB picture, binary PPM with 8 bits a sample as the RIP's pages have it, as a Windows
/// bitmap: 24 bits, rows from the bottom, no compression. Native paths; the bitmap must not exist.
/// Fails with EINVAL if the picture is none, with EFBIG if the bitmap would take 4 GiB or more,
/// which its head can't say. Memory is that of a few rows.
[[nodiscard]] Expected<void> WriteBitmapFile(const std::string& picture, const std::string& bitmap,
                                             int resolution);

}  // namespace rastrel::jobspool
