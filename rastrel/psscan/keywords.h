#pragma once

#include <string_view>

/// The comments that the scans know, compared byte by byte at a line's start.
namespace rastrel::psscan::keyword {

inline constexpr std::string_view BoundingBox = "%%BoundingBox:";
inline constexpr std::string_view DocumentColors = "%%DocumentCustomColors:";
inline constexpr std::string_view CmykColor = "%%CMYKCustomColor:";
inline constexpr std::string_view RgbColor = "%%RGBCustomColor:";
inline constexpr std::string_view Continuation = "%%+";
inline constexpr std::string_view EndComments = "%%EndComments";
inline constexpr std::string_view EndOfFile = "%%EOF";
/// The start of "%BeginPhotoshop", as far as it is compared.
inline constexpr std::string_view ImageData = "%BeginPhotosho";

}  // namespace rastrel::psscan::keyword
