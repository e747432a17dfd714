#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "children/coreodalis/image.h"
#include "children/coreodalis/pixel_file.h"
#include "pages/plain_tiff.h"
#include "rastrel/platform/os/file_descriptor.h"

/// The TIFF files without compression of gray and RGB pages: the form in which the RIP keeps pages,
/// read and written without the TIFF library.
namespace rastrel::odalis {

/// The description of a picture of that shape; nothing if it has another form as TIFF: inks, or
/// more bytes than 32-bit offsets serve.
[[nodiscard]] std::optional<pages::PlainTiff> PlainTiffOf(const ImageShape& shape);

/// Reads a file that has the head of such a picture, and the size, in every byte; null for any
/// other, also where it can't be read. `bytes` is its size. The descriptor is taken only if the
/// result is not null.
[[nodiscard]] std::unique_ptr<PixelFile> OpenPlainTiff(os::FileDescriptor& descriptor,
                                                       const std::string& path,
                                                       std::uint64_t bytes);

/// Writes such a file. REQUIRES: PlainTiffOf(shape).
[[nodiscard]] Expected<std::unique_ptr<ImageWriter>> MakePlainTiffWriter(const ImageOrder& order,
                                                                         const ImageShape& shape);

}  // namespace rastrel::odalis
