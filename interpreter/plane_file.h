#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

/// Files of the interpreter's separations, one for each plane.
namespace rastrel::interpreter {

/// The plane's name in the name of its file, "p1(Name).tif", as bytes: the text between the first
/// '(' and the closing ").tif", with its %XX escapes resolved. Nothing for another file name.
[[nodiscard]] std::optional<std::string> PlaneNameBytes(std::string_view fileName);

/// The part of a plane from its lower left corner on, in pixels; all of it where it has no more.
struct PlanePart {
  std::uint32_t columns = std::numeric_limits<std::uint32_t>::max();
  std::uint32_t rows = std::numeric_limits<std::uint32_t>::max();
};

/// Whether that part of a plane has ink. `bytes` is an uncompressed little-endian TIFF of 8 bits,
/// in which 255 is no ink. Nothing if it is none, or is cut short.
[[nodiscard]] std::optional<bool> PlaneHasInk(std::string_view bytes, const PlanePart& part = {});

}  // namespace rastrel::interpreter
