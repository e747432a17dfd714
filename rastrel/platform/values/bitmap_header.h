#pragma once

/// The header of a device independent bitmap.

#include <cstdint>

/// The header, with its fields in the order of the file format:
///
///     offset  0       4        8         12        14          16
///            +-------+--------+---------+---------+-----------+--------------+
///            | size  | width  | height  | planes  | bit count | compression  |
///            +-------+--------+---------+---------+-----------+--------------+
///     offset  20          24       28       32           36
///            +-----------+--------+--------+------------+----------------+
///            | imagesize | x ppm  | y ppm  | colors used| colors that    |
///            |           |        |        |            | matter         |
///            +-----------+--------+--------+------------+----------------+
struct BITMAPINFOHEADER {
  std::uint32_t biSize = 40;  ///< bytes of this header
  std::int32_t biWidth = 0;   ///< pixels
  std::int32_t biHeight = 0;  ///< rows; negative when the first row is the top one
  std::uint16_t biPlanes = 1;
  std::uint16_t biBitCount = 0;      ///< bits per pixel
  std::uint32_t biCompression = 0;   ///< 0: none
  std::uint32_t biSizeImage = 0;     ///< bytes of the pixels, or 0
  std::int32_t biXPelsPerMeter = 0;  ///< pixels per metre across, or 0
  std::int32_t biYPelsPerMeter = 0;  ///< pixels per metre down, or 0
  std::uint32_t biClrUsed = 0;       ///< colors of the table that are used; 0 for all
  std::uint32_t biClrImportant = 0;  ///< colors that matter; 0 for all
};
