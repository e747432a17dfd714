#include "host/render/tiff_fields.h"

#include <algorithm>
#include <cmath>

namespace rastrel::render {

void AppendTiffNumber(std::string& bytes, std::uint64_t value, int size) {
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> 8 * i & 0xFF);
}

void AppendTiffRational(std::string& bytes, double value) {
  constexpr double parts = 10'000;
  constexpr double maximum = 4'294'967'295 / parts;
  AppendTiffNumber(bytes,
                   static_cast<std::uint64_t>(std::llround(std::min(value, maximum) * parts)), 4);
  AppendTiffNumber(bytes, static_cast<std::uint64_t>(parts), 4);
}

void TiffFields::Add(std::uint16_t tag, TiffType type, std::uint32_t number, std::uint32_t value) {
  AppendTiffNumber(m_Fields, tag, 2);
  AppendTiffNumber(m_Fields, static_cast<std::uint16_t>(type), 2);
  AppendTiffNumber(m_Fields, number, 4);
  AppendTiffNumber(m_Fields, value, 4);
  ++m_Count;
}

std::string TiffFields::Bytes(std::uint32_t next) const {
  std::string bytes;
  AppendTiffNumber(bytes, m_Count, 2);
  bytes += m_Fields;
  AppendTiffNumber(bytes, next, 4);
  return bytes;
}

}  // namespace rastrel::render
