#include "interpreter/plane_file.h"

#include <gtest/gtest.h>

namespace rastrel::interpreter {
namespace {

// 32 bits, little-endian.
std::string Word(unsigned value) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<char>(value >> shift));
  return bytes;
}

TEST(PlaneNameBytes, a_planes_file_names_its_color) {
  EXPECT_EQ(PlaneNameBytes("p1(Cut Contour).tif"), "Cut Contour");
  EXPECT_EQ(PlaneNameBytes("p12(a%28b).c).tif"), "a(b).c");
  EXPECT_EQ(PlaneNameBytes("p1.tif"), std::nullopt);
}

TEST(PlaneHasInk, a_plane_cut_at_any_byte_is_no_plane_or_has_no_ink) {
  // Header, a directory of three entries, and one strip of four pixels at its end.
  std::string plane = std::string("II*\0", 4) + Word(8) + std::string("\3\0", 2);
  const auto entry = [](unsigned tag, unsigned value) {
    return Word(tag | 4U << 16) + Word(1) + Word(value);
  };
  plane += entry(259, 1) + entry(273, 50) + entry(279, 4) + Word(0);
  EXPECT_EQ(PlaneHasInk(plane + "\xFF\xFF\xFF\xFF"), false);
  EXPECT_EQ(PlaneHasInk(plane + "\xFF\xFF\xFE\xFF"), true);
  for (std::size_t size = 0; size < plane.size(); ++size)
    EXPECT_EQ(PlaneHasInk(plane.substr(0, size)), std::nullopt) << size;
  EXPECT_EQ(PlaneHasInk(plane + "\xFF\xFF\xFF"), std::nullopt);
}

}  // namespace
}  // namespace rastrel::interpreter
