#pragma once

#include <string>

#include "host/document/bitmap.h"

namespace rastrel::document {

/// How a bitmap is written as PNG.
struct PngForm {
  double dpiX = 0;  ///< pixels to the inch across that the file names; 0: it names none
  double dpiY = 0;  ///< and down
  /// Of the compression: 1, the fastest, to 9, the smallest.
  int level = 3;
};

/// A bitmap as a PNG file (ISO 15948) without loss: 8 bits a sample, gray or red, green and blue.
/// The same bitmap makes the same bytes. Empty if there is no memory for the compression.
[[nodiscard]] std::string PngOfBitmap(const BitmapPixels& pixels, const PngForm& form = {});

}  // namespace rastrel::document
