#pragma once

#include <cstdint>
#include <string>

#include "rastrel/conversion/cut_data.h"

/// Conversion modes (PS2BmpParams::mode).
enum PS2BmpMode : int { PS2BMP_NO_CONVERSION = 1, PS2BMP_CONVERSION = 2 };

/// The data of a conversion to a bitmap: the dialog edits it, and the conversion reads it. A value;
/// one thread at a time.
struct PS2BmpParams {
  double height = 0;  ///< of the output, in centimetres
  double width = 0;   ///< of the output, in centimetres
  std::wstring text;  ///< not used by the conversion
  /// PS2BMP_NO_CONVERSION: there is none. The dialog always leaves PS2BMP_CONVERSION.
  std::int32_t mode = PS2BMP_NO_CONVERSION;
  /// Non-zero if the file's bounds are known. Without them the bitmap takes its size from its
  /// pixels.
  std::int32_t hasBounds = 1;
  CPS2CutData cut;  ///< resolution and cut line
};
