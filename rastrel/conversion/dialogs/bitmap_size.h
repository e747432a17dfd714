#pragma once

#include <cstdint>
#include <string>

namespace rastrel::conversion {

/// The bytes of a bitmap of that size in centimetres at a resolution in dots per inch: 3 for each
/// pixel, pixels not rounded, the product truncated and kept in 32 bits, so that 4 GiB are 0 again.
/// 0 if a size is no finite number or negative, or the resolution is below 1.
[[nodiscard]] std::uint32_t EstimatedBitmapBytes(double width, double height,
                                                 std::int32_t resolution);

/// A number of bytes in the user's language: below 1 MiB in KB, from there on in MB, with one
/// decimal.
[[nodiscard]] std::wstring BitmapSizeText(std::uint32_t bytes);

}  // namespace rastrel::conversion
