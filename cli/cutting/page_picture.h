#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "cutting/job/cut_job.h"
#include "cutting/print/print_page.h"
#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/random_access_file.h"

namespace rastrel::cli {

/// Pixels that are added at the sides.
struct PictureMargins {
  std::uint32_t left = 0;
  std::uint32_t bottom = 0;
  std::uint32_t right = 0;
  std::uint32_t top = 0;
};

/// The pixels of an interpreted page, in rows from the top. The page's lower left corner is that of
/// the lowest row's first pixel. Used on one thread.
struct PagePicture {
  /// A file of samples; readable also after its directory is gone.
  struct Part {
    os::RandomAccessFile file;
    std::uint64_t offset = 0;  ///< of the first sample in the file
  };

  std::vector<Part> parts;  ///< one with all samples of each pixel, or one for each sample
  cutting::PixelInks inks;
  std::uint32_t width = 0;   ///< pixels
  std::uint32_t height = 0;  ///< pixels
  double xResolution = 0;    ///< pixels an inch
  double yResolution = 0;    ///< pixels an inch

  [[nodiscard]] double PixelWidth() const { return 25.4 / xResolution; }   ///< millimetres
  [[nodiscard]] double PixelHeight() const { return 25.4 / yResolution; }  ///< millimetres

  /// Reads as many pixels of a row as fit `bytes`, from `column` on. Fails if the files are cut
  /// short.
  [[nodiscard]] Expected<void> Read(std::uint64_t row, std::uint64_t column, std::span<char> bytes);
};

/// Opens the picture of a page directory, given by its native path. Fails if it has none of 8 bits,
/// or not the files that it lists.
[[nodiscard]] Expected<PagePicture> OpenPagePicture(const std::string& directory);

/// A rectangle of a picture's pixels, counted from its upper left corner.
struct PixelArea {
  std::uint32_t left = 0;
  std::uint32_t top = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

/// A part of a picture, with its lower left corner at the page's origin. Reads of several parts may
/// alternate.
[[nodiscard]] cutting::PlacedPixels PixelsOf(const std::shared_ptr<PagePicture>& picture,
                                             const PixelArea& area);

/// The page that is as large as the picture with its margins, with marks on it, which are in
/// millimetres from its lower left corner.
[[nodiscard]] cutting::PrintPage MarkedPage(const std::shared_ptr<PagePicture>& picture,
                                            const PictureMargins& margins,
                                            const std::vector<cutting::RegistrationMark>& marks,
                                            bool inAllInks);

/// Writes a page as a PDF file, which takes the place of that name when it is whole. Throws
/// CommandError if the file can't be written.
[[nodiscard]] Expected<void> WritePrintFile(const cutting::PrintPage& page,
                                            const std::string& path);

}  // namespace rastrel::cli
