#pragma once

#include <bit>
#include <cstdint>
#include <string>
#include <vector>

/// Cut archives put together byte by byte, by the table of docs/formats/cut-archive.md and without
/// the library's own archive. Each piece may be given counts that lie.
namespace rastrel::test::cut {

/// A number of `size` bytes, little-endian.
inline std::string NumberBytes(std::uint64_t value, unsigned size) {
  std::string bytes;
  for (unsigned index = 0; index < size; ++index)
    bytes += static_cast<char>(value >> (8 * index) & 255U);
  return bytes;
}
inline std::string U32(std::uint32_t value) { return NumberBytes(value, 4); }
inline std::string U64(std::uint64_t value) { return NumberBytes(value, 8); }
inline std::string F64(double value) { return U64(std::bit_cast<std::uint64_t>(value)); }

/// Wide text of ASCII characters, at most 254 of them.
inline std::string TextBytes(const std::string& ascii) {
  std::string bytes = "\xFF\xFE\xFF" + NumberBytes(ascii.size(), 1);
  for (const char character : ascii) bytes += std::string{character, '\0'};
  return bytes;
}

inline std::string VertexBytes(double x, double y, double third = 0, double fourth = 0,
                               double fifth = 0) {
  return F64(x) + F64(y) + F64(third) + F64(fourth) + F64(fifth);
}

inline std::string Join(const std::vector<std::string>& parts) {
  std::string bytes;
  for (const std::string& part : parts) bytes += part;
  return bytes;
}

/// A sub-polygon with the value of its entry.
inline std::string SubPolyBytes(const std::vector<std::string>& vertices, bool closed,
                                std::uint64_t value = 0) {
  return U64(vertices.size()) + Join(vertices) + NumberBytes(closed ? 1 : 0, 1) + U64(value);
}

inline std::string PolygonBytes(const std::vector<std::string>& subPolys) {
  return U64(subPolys.size()) + Join(subPolys) + std::string(16, '\0') + '\0';
}

/// A polygon of one open line from 0, 0 to x, y.
inline std::string LineBytes(double x, double y) {
  return PolygonBytes({SubPolyBytes({VertexBytes(0, 0), VertexBytes(x, y)}, false)});
}

inline std::string ObjectBytes(const std::string& color, const std::vector<std::string>& polygons,
                               double number = 1, std::uint32_t kind = 1) {
  return U32(1) + TextBytes(color) + F64(number) + U64(polygons.size()) + Join(polygons) +
         U32(kind);
}

inline std::string ArchiveBytes(const std::vector<std::string>& objects) {
  return U32(0) + U32(static_cast<std::uint32_t>(objects.size())) + Join(objects);
}

}  // namespace rastrel::test::cut
