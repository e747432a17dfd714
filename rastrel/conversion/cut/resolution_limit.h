#pragma once

namespace rastrel::conversion {

/// The resolution, in dots per inch, at which the bitmap of an object of that size, in inches,
/// stays within 0xFFFFFFF bytes at 3 bytes a pixel: `resolution` itself if it does, and otherwise
/// the highest one that does, less `below`.
///
/// The bytes are counted in 32 bits without a sign, and wrap: a bitmap of just over 4 GiB counts as
/// a small one. A size that is negative, infinite or no number has a result too, which may be 0 or
/// less.
[[nodiscard]] int LimitedResolution(double width, double height, int resolution, int below);

}  // namespace rastrel::conversion
