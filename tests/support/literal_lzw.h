#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace rastrel::test {

/// Reads codes as the TIFF format has them, with a plain list of strings. Empty if a code is none,
/// or the end code is missing or not in the last byte.
inline std::optional<std::vector<std::uint8_t>> DecodeLzw(const std::vector<std::uint8_t>& coded) {
  using Bytes = std::vector<std::uint8_t>;
  std::vector<Bytes> strings;
  Bytes bytes;
  std::optional<Bytes> last;
  std::size_t bit = 0;
  unsigned width = 9;
  while (bit + width <= coded.size() * 8) {
    unsigned code = 0;
    for (unsigned i = 0; i < width; ++i, ++bit)
      code = code << 1 | ((coded[bit / 8] >> (7 - bit % 8)) & 1u);
    if (code == 257) {
      return (bit + 7) / 8 == coded.size() ? std::optional(bytes) : std::nullopt;
    }
    if (code == 256) {
      strings.clear();
      for (unsigned value = 0; value < 258; ++value)
        strings.push_back({static_cast<std::uint8_t>(value)});
      last.reset();
      width = 9;
      continue;
    }
    Bytes string;
    if (code < strings.size()) {
      string = strings[code];
    } else if (last && code == strings.size()) {
      string = *last;
      string.push_back(last->front());
    } else {
      return std::nullopt;
    }
    if (last) {
      strings.push_back(*last);
      strings.back().push_back(string.front());
    }
    bytes.insert(bytes.end(), string.begin(), string.end());
    last = string;
    // One code early.
    while (strings.size() + 1 >= (1u << width) && width < 12) ++width;
    if (strings.size() > 4095) return std::nullopt;
  }
  return std::nullopt;
}

}  // namespace rastrel::test
