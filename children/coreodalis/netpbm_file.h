#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "children/coreodalis/pixel_file.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::odalis {

/// Reads a binary netpbm file (P5 or P6) from the descriptor's position 0. `bytes` is its size,
/// which must be exactly that of header and pixels. `path` is for messages.
[[nodiscard]] Expected<std::unique_ptr<PixelFile>> OpenNetpbm(os::FileDescriptor descriptor,
                                                              std::string path,
                                                              std::uint64_t bytes);

}  // namespace rastrel::odalis
