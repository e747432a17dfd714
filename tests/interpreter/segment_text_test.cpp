// Paths in the prolog's reports, whose coordinates are whole 1/256 pixels to the base of 14.

#include "interpreter/segment_text.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/interpreter/reported_path.h"

namespace rastrel::interpreter {
namespace {

using test::Reported;

// 14 = 10 to the base of 14, 256 = 1 * 196 + 4 * 14 + 4.
TEST(Coordinate, is_a_whole_number_of_256ths_to_the_base_of_14) {
  EXPECT_EQ(ReadCoordinate("0"), 0.0);
  EXPECT_EQ(ReadCoordinate("D"), 13.0 / 256);
  EXPECT_EQ(ReadCoordinate("10"), 14.0 / 256);
  EXPECT_EQ(ReadCoordinate("144"), 1.0);
  EXPECT_EQ(ReadCoordinate("148"), 1 + 4.0 / 256);
}

// -5 as 64 bits: 18446744073709551611 to the base of 14, and as 32 bits: 4294967291. Ghostscript
// writes the first (-5 14 20 string cvrs), and one with integers of 32 bits the second.
TEST(Coordinate, below_0_is_the_unsigned_number_of_its_bits) {
  EXPECT_EQ(ReadCoordinate("8681049ADB03DB16B"), -5.0 / 256);
  EXPECT_EQ(ReadCoordinate("2CA5B745D"), -5.0 / 256);
}

// 2147483647 and 2147483648, which is the lowest of 32 bits; then that of 64 bits, and one below
// it.
TEST(Coordinate, has_31_bits_and_a_sign) {
  EXPECT_EQ(ReadCoordinate("1652CA931"), 2147483647.0 / 256);
  EXPECT_EQ(ReadCoordinate("1652CA932"), -2147483648.0 / 256);
  EXPECT_EQ(ReadCoordinate(test::ReportedCoordinate(-8388608)), -8388608.0);
  EXPECT_EQ(ReadCoordinate(test::ReportedCoordinate(-8388608 - 1.0 / 256)), std::nullopt);
  EXPECT_EQ(ReadCoordinate("2CA5B7464"), std::nullopt);          // 4294967296
  EXPECT_EQ(ReadCoordinate("4340724C6C71DC7A7"), std::nullopt);  // 2 to the power of 63, minus 1
}

TEST(Coordinate, is_nothing_else) {
  for (const char* const word : {"", "E", "1.5", "-1", "+1", " 1", "1 ", "1E", "0x1", "nan", "inf",
                                 "8681049ADB03DB172", "100000000000000000000"}) {
    EXPECT_EQ(ReadCoordinate(word), std::nullopt) << word;
  }
}

std::string PointsOf(const SegmentView& view) {
  std::string text(view.letters);
  for (const PixelPoint& point : view.points)
    text += " " + std::to_string(point.x) + "," + std::to_string(point.y);
  return text;
}

TEST(SegmentList, keeps_paths_one_after_another) {
  SegmentList list;
  ASSERT_TRUE(list.Append(Reported("m 1 2 l 3 4.5 h ")));
  const SegmentList::Mark first = list.End();
  ASSERT_TRUE(list.Append(""));
  ASSERT_TRUE(list.Append(Reported("c 1 2 3 4 5 -6.25 ")));
  EXPECT_EQ(PointsOf(list.Between({}, first)), "mlh 1.000000,2.000000 3.000000,4.500000");
  EXPECT_EQ(PointsOf(list.Between(first, list.End())),
            "c 1.000000,2.000000 3.000000,4.000000 5.000000,-6.250000");
  EXPECT_EQ(list.All().letters, "mlhc");
  EXPECT_EQ(list.All().points.size(), 5U);
}

TEST(SegmentList, takes_nothing_of_a_text_that_is_no_path) {
  const std::string whole = Reported("m 1 2 l 3 4 c 1 2 3 4 5 6 h ");
  for (std::size_t length = 0; length < whole.size(); ++length) {
    SegmentList list;
    ASSERT_TRUE(list.Append(Reported("m 8 8 ")));
    const std::string text = whole.substr(0, length);
    const bool taken = list.Append(text);
    // Cut within a number there is another one; cut before it, the path is none.
    const auto points = list.All().points.size() - 1;
    const auto letters = list.All().letters.substr(1);
    EXPECT_EQ(taken, text.empty() || points > 0) << text;
    std::size_t expected = 0;
    for (const char letter : letters) expected += letter == 'c' ? 3 : letter == 'h' ? 0 : 1;
    EXPECT_EQ(points, expected) << text;
  }
}

}  // namespace
}  // namespace rastrel::interpreter
