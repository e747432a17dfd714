#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

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

/// The form of a picture that is read or written row by row, 8 bits a sample.
struct ImageShape {
  unsigned width = 0;
  unsigned height = 0;
  double xResolution = 0;  ///< pixels per inch
  double yResolution = 0;  ///< pixels per inch
  ColorModel model = ColorModel::Gray;
  std::vector<std::string> planes;  ///< a name each, UTF-8; their number is the samples of a pixel

  [[nodiscard]] std::size_t RowBytes() const { return std::size_t{width} * planes.size(); }
};

/// Writes one picture into an open file. Not usable any more after a failure.
class ImageWriter {
 public:
  virtual ~ImageWriter() = default;
  /// Writes the next row, from the top. REQUIRES: the row has the shape's RowBytes().
  [[nodiscard]] virtual Expected<void> WriteRow(std::span<const std::uint8_t> row) = 0;
  /// Writes the rest of the file. REQUIRES: as many rows as the shape's height were written.
  [[nodiscard]] virtual Expected<void> Finish() = 0;
};

/// Makes the writer of a format. `descriptor` is open for reading and writing, empty, and stays the
/// caller's; `name` is for messages. The failure says that the format can't hold such a picture.
[[nodiscard]] Expected<std::unique_ptr<ImageWriter>> MakeImageWriter(devices::FileFormat format,
                                                                     int descriptor,
                                                                     const std::string& name,
                                                                     const ImageShape& shape);

}  // namespace rastrel::odalis
