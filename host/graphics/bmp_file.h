#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "host/document/bitmap.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::graphics {

/// The pixels of a Windows bitmap as the queue program writes it: 24 bits a pixel without
/// compression, and nothing before or after the pixels but the head. All else is refused, as is an
/// image of more pixels than a placed one may have (MaximumGraphicPixels).
///
///     +------+-----------+----------+----------------+------------------+--------------+
///     | "BM" | file size | reserved | offset of the  | BITMAPINFOHEADER | pixels       |
///     | 2    | 4 bytes   | 4 bytes  | pixels: 54     | 40 bytes         | (bitmap.h)   |
///     +------+-----------+----------+----------------+------------------+--------------+
///
/// Numbers have the lowest byte first. The failure is a sentence about the file.
[[nodiscard]] Expected<std::shared_ptr<const document::BitmapPixels>> PixelsOfBmp(
    std::string_view file);

/// Reads a file by library path. Fails as PixelsOfBmp, or with the system's error.
[[nodiscard]] Expected<std::shared_ptr<const document::BitmapPixels>> ReadBmpFile(
    const std::wstring& path);

}  // namespace rastrel::graphics
