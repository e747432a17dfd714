#pragma once

#include <cstdint>
#include <vector>

#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/output_file.h"
#include "rastrel/platform/os/random_access_file.h"

namespace rastrel::cli {

/// The pixels of an interpreted page: three bytes each, red, green and blue, in rows from the top.
/// The page's lower left corner is that of the lowest row's first pixel.
struct PagePicture {
  os::RandomAccessFile file;  ///< readable also after its directory is gone
  std::uint64_t offset = 0;   ///< of the first pixel in the file
  std::uint32_t width = 0;    ///< pixels
  std::uint32_t height = 0;   ///< pixels
  double xResolution = 0;     ///< pixels an inch
  double yResolution = 0;     ///< pixels an inch
};

/// White pixels that are added at the sides.
struct PictureMargins {
  std::uint32_t left = 0;
  std::uint32_t bottom = 0;
  std::uint32_t right = 0;
  std::uint32_t top = 0;
};

/// Appends the picture with its margins and marks as a TIFF: RGB of 8 bits, not compressed. The
/// marks, in millimetres from the lower left corner of the whole, are black. Memory is in
/// proportion to a row. Fails if the picture can't be read or the file not be written, or if the
/// whole is longer than 4 GiB, which the format can't count.
[[nodiscard]] Expected<void> WriteMarkedPicture(PagePicture& picture, const PictureMargins& margins,
                                                const std::vector<cutting::RegistrationMark>& marks,
                                                os::OutputFile& file);

}  // namespace rastrel::cli
