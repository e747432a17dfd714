#include "rastrel/conversion/cut/resolution_limit.h"

#include <cmath>
#include <cstdint>
#include <limits>

namespace rastrel::conversion {

namespace {

constexpr std::uint32_t MaximumBytes = 0xFFFFFFF;
constexpr std::uint32_t BytesInPixel = 3;

// The whole part, wrapped to 32 bits. A conversion of a double that does not fit is undefined, so
// the wrapping is done before it.
std::uint32_t Wrapped(double value) {
  constexpr double Range = 4294967296.0;
  if (!std::isfinite(value)) return 0;
  const double rest = std::fmod(std::trunc(value), Range);
  return static_cast<std::uint32_t>(rest < 0 ? rest + Range : rest);
}

int WholePart(double value) {
  if (std::isnan(value)) return 0;
  if (value >= std::numeric_limits<int>::max()) return std::numeric_limits<int>::max();
  return static_cast<int>(value);
}

}  // namespace

int LimitedResolution(double width, double height, int resolution, int below) {
  const std::uint32_t bytes =
      Wrapped(resolution * height) * Wrapped(resolution * width) * BytesInPixel;
  if (bytes <= MaximumBytes) return resolution;
  const double pixels = MaximumBytes / (height * width * BytesInPixel);
  return WholePart(std::sqrt(pixels)) - below;
}

}  // namespace rastrel::conversion
