#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::planes {

/// The description of the first picture of a little-endian TIFF file, as far as an uncompressed
/// gray plane needs it.
///
///     0   "II*\0"  offset of the directory: 4
///     directory:  number of entries: 2
///                 entries: tag 2, type 2, number of values 4, the values or their offset: 4
struct TiffDirectory {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t rowsPerStrip = 0;      ///< of the last strip there may be fewer
  std::vector<std::uint32_t> offsets;  ///< of the strips in the file
  std::vector<std::uint32_t> counts;   ///< bytes of the strips
};

/// Reads bytes of the file from an offset on; fails if it has not as many.
using ReadBytesAt = std::function<Expected<void>(std::uint64_t offset, std::span<std::byte> bytes)>;

/// Reads the directory. Fails for a file of another form: several samples, samples of other than 8
/// bits, 0 not black, compressed, in tiles, or no such file. The failure has `why` alone; those of
/// `readAt` come through. It takes 1 MiB of memory and `fileBytes` at most.
[[nodiscard]] Expected<TiffDirectory> ReadTiffDirectory(std::uint64_t fileBytes,
                                                        const ReadBytesAt& readAt);

}  // namespace rastrel::planes
