#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "children/coreodalis/worker_pool.h"
#include "children/devices/devices.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::odalis {

/// The meaning of a pixel's samples.
enum class ColorModel {
  Gray,  ///< one sample, 0 is black
  Rgb,   ///< red, green, blue; 0 is none of the light
  Cmyk,  ///< cyan, magenta, yellow, black; 255 is no ink
  Inks,  ///< any number of named inks; 255 is no ink
};

/// The form of a picture that is read or written in rows, 8 bits a sample.
struct ImageShape {
  unsigned width = 0;
  unsigned height = 0;
  double xResolution = 0;  ///< pixels per inch
  double yResolution = 0;  ///< pixels per inch
  ColorModel model = ColorModel::Gray;
  std::vector<std::string> planes;  ///< a name each, UTF-8; their number is the samples of a pixel

  [[nodiscard]] std::size_t RowBytes() const { return std::size_t{width} * planes.size(); }
};

/// True if the samples count the bare paper: 255 is no ink.
[[nodiscard]] inline bool HasInks(const ImageShape& shape) {
  return shape.model == ColorModel::Cmyk || shape.model == ColorModel::Inks;
}

/// Writes one picture into an open file, in the thread that calls it. Not usable any more after a
/// failure.
class ImageWriter {
 public:
  virtual ~ImageWriter() = default;
  /// The place of the next rows, from the top: one row or several. REQUIRES: rows are left.
  [[nodiscard]] virtual Expected<std::span<std::uint8_t>> Room() = 0;
  /// The first `bytes` of the place are filled. REQUIRES: whole rows.
  [[nodiscard]] virtual Expected<void> Take(std::size_t bytes) = 0;
  /// Writes the rest of the file. REQUIRES: as many rows as the shape's height were written.
  [[nodiscard]] virtual Expected<void> Finish() = 0;

  /// Copies the next row. REQUIRES: the row has the shape's RowBytes().
  [[nodiscard]] Expected<void> WriteRow(std::span<const std::uint8_t> row);
};

/// How a picture's file is written.
struct ImageOrder {
  devices::FileFormat format = devices::FileFormat::Tiff;
  devices::Compression compression = devices::Compression::Lzw;
  int descriptor = -1;  ///< open for reading and writing, empty; stays the caller's
  std::string name;     ///< for messages
  unsigned share = 1;   ///< the number of pictures that are written at the same time
};

/// Makes the writer of a format. The pool encodes; the bytes written do not depend on it, and it
/// lives longer than the writer. The failure says that the format can't hold such a picture.
[[nodiscard]] Expected<std::unique_ptr<ImageWriter>> MakeImageWriter(const ImageOrder& order,
                                                                     const ImageShape& shape,
                                                                     WorkerPool& pool);

}  // namespace rastrel::odalis
