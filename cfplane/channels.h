#pragma once

#include <cstddef>

/// Samples of pixels, moved about. The areas must not overlap.
namespace rastrel::planes {

/// Copies pixels of red, green and blue as blue, green and red. Both areas have 3 bytes a pixel.
void SwapRedAndBlue(const std::byte* from, std::byte* to, std::size_t pixels);

/// Copies one sample of each pixel, the one that `from` points to first. The pixels are `step`
/// bytes apart.
void TakeChannel(const std::byte* from, std::size_t step, std::byte* to, std::size_t pixels);

}  // namespace rastrel::planes
