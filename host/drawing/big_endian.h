#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace rastrel::drawing {

/// The number in `count` bytes of a file, at most 4, from `offset` on: the most significant byte
/// first. Bytes beyond the file's end count as 0.
[[nodiscard]] inline std::uint32_t BigEndian(std::string_view bytes, std::size_t offset,
                                             std::size_t count) {
  std::uint32_t value = 0;
  for (std::size_t i = offset; i < offset + count; ++i) {
    value = value << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
  }
  return value;
}

}  // namespace rastrel::drawing
