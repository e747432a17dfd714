#include "interpreter/plane_file.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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

// Header, a directory of six entries, and strips of one row of three pixels each, at its end.
std::string Plane(const std::vector<std::string>& rows) {
  const auto count = static_cast<unsigned>(rows.size());
  const unsigned listAt = 8 + 2 + 6 * 12 + 4;
  const unsigned pixelsAt = listAt + 8 * count;
  std::string plane = std::string("II*\0", 4) + Word(8) + std::string("\6\0", 2);
  const auto entry = [](unsigned tag, unsigned number, unsigned value) {
    return Word(tag | 4U << 16) + Word(number) + Word(value);
  };
  plane += entry(256, 1, 3) + entry(257, 1, count) + entry(259, 1, 1) +
           entry(273, count, count == 1 ? pixelsAt : listAt) + entry(278, 1, 1) +
           entry(279, count, count == 1 ? 3 : listAt + 4 * count) + Word(0);
  for (unsigned row = 0; row < count; ++row) plane += Word(pixelsAt + 3 * row);
  for (unsigned row = 0; row < count; ++row) plane += Word(3);
  for (const std::string& row : rows) plane += row;
  return plane;
}

TEST(PlaneHasInk, a_plane_cut_at_any_byte_is_no_plane_or_has_no_ink) {
  const std::string white = "\xFF\xFF\xFF";
  const std::string plane = Plane({white, "\xFF\xFE\xFF", white});
  EXPECT_EQ(PlaneHasInk(Plane({white, white, white})), false);
  EXPECT_EQ(PlaneHasInk(plane), true);
  for (std::size_t size = 0; size < plane.size(); ++size)
    EXPECT_NE(PlaneHasInk(plane.substr(0, size)), true) << size;
  EXPECT_EQ(PlaneHasInk(plane.substr(0, plane.size() - 1)), std::nullopt);
}

TEST(PlaneHasInk, ink_outside_the_lower_left_part_does_not_count) {
  const std::string white = "\xFF\xFF\xFF";
  const std::string upper = Plane({"\xFE\xFF\xFF", white, white});
  EXPECT_EQ(PlaneHasInk(upper, {.columns = 3, .rows = 2}), false);
  EXPECT_EQ(PlaneHasInk(upper, {.columns = 1, .rows = 3}), true);
  EXPECT_EQ(PlaneHasInk(upper, {.columns = 9, .rows = 9}), true);
  const std::string right = Plane({white, white, "\xFF\xFF\xFE"});
  EXPECT_EQ(PlaneHasInk(right, {.columns = 2, .rows = 3}), false);
  EXPECT_EQ(PlaneHasInk(right, {.columns = 3, .rows = 1}), true);
  EXPECT_EQ(PlaneHasInk(right, {.columns = 3, .rows = 0}), false);
}

}  // namespace
}  // namespace rastrel::interpreter
