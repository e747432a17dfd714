#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "children/coreodalis/pixel_file.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::odalis {

/// Reads the first image of a TIFF file in strips, with 8 bits a sample, where 0 is black (or RGB).
/// `bytes` is the file's size, against which the claimed number of pixels is held. `path` is for
/// messages.
[[nodiscard]] Expected<std::unique_ptr<PixelFile>> OpenTiff(os::FileDescriptor descriptor,
                                                            std::string path, std::uint64_t bytes);

}  // namespace rastrel::odalis
