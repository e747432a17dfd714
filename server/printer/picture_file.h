#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"

/// JPEG and PNG files as PDF files of one page, with the same pixels. No picture is drawn here: the
/// compressed bytes of a JPEG file, and those of a PNG file without transparency, go into the PDF
/// as they are.
namespace rastrel::server {

/// The pixels per inch of a picture that says none: a pixel is a point then.
inline constexpr double UsualDensity = 72;

/// Reads a JPEG file (baseline, extended or progressive, 8 bits a sample) and writes `target`. Its
/// density is that of the JFIF header. Fails, with the reason, for a file of another kind and for
/// one that is cut off.
[[nodiscard]] Expected<void> PdfFromJpeg(const std::string& path, const std::string& target);

/// Reads a PNG file and writes `target`. Its density is that of its pHYs chunk. Transparent pixels
/// are laid on white. Each check sum and the number of rows must be right. An interlaced file is
/// refused.
[[nodiscard]] Expected<void> PdfFromPng(const std::string& path, const std::string& target);

}  // namespace rastrel::server
