#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace rastrel::odalis {

/// Appends a row of a PNG picture, filtered: a byte for the filter, and as many bytes as the row
/// has. The filter is the one whose bytes, read as signed, have the least sum of amounts, which
/// compresses best as a rule; of equal ones, "up" comes first, then "none", "sub" and "Paeth".
/// `above` has the row's size, or is empty for the picture's first row. `step`: bytes of a pixel.
void AppendFilteredRow(std::span<const std::uint8_t> row, std::span<const std::uint8_t> above,
                       std::size_t step, std::vector<std::uint8_t>& to);

/// Appends the row without a filter.
void AppendPlainRow(std::span<const std::uint8_t> row, std::vector<std::uint8_t>& to);

}  // namespace rastrel::odalis
