#include "interpreter/spot_ink.h"

#include <gmock/gmock.h>

#include <string>

namespace rastrel::interpreter {
namespace {

using ::testing::ElementsAre;

// A line as the separation device prints it, with that name and those numbers.
std::string Line(const std::string& name, const std::string& numbers) {
  return "%%SeparationColor: \"" + name + "\" 100% ink = " + numbers + " CMYK";
}

TEST(SpotInk, is_read_in_parts_of_full_ink) {
  const auto ink = ReadSpotInk(Line("Gold Ink", "6552 9828 29484 32760"));
  ASSERT_TRUE(ink);
  EXPECT_EQ(ink->name, "Gold Ink");
  EXPECT_THAT(ink->color, ElementsAre(0.2, 0.3, 0.9, 1));
}

TEST(SpotInk, has_four_decimals) {
  // 1638 of 32760 are 0.05; one more is 0.05003, rounded.
  EXPECT_THAT(ReadSpotInk(Line("a", "1638 1639 1 0"))->color, ElementsAre(0.05, 0.05, 0, 0));
  EXPECT_THAT(ReadSpotInk(Line("a", "1641 2 32759 0"))->color, ElementsAre(0.0501, 0.0001, 1, 0));
}

TEST(SpotInk, without_any_ink_is_none) {
  EXPECT_FALSE(ReadSpotInk(Line("White", "0 0 0 0")));
  EXPECT_FALSE(ReadSpotInk(Line("White", "1 1 1 1"))) << "none of four decimals";
  EXPECT_TRUE(ReadSpotInk(Line("Pale", "2 0 0 0")));
}

TEST(SpotInk, ends_its_name_at_the_last_place_that_may_be_its_end) {
  EXPECT_EQ(ReadSpotInk(Line(Line("a", "1 2 3 4"), "32760 0 0 0"))->name, Line("a", "1 2 3 4"));
  EXPECT_EQ(ReadSpotInk(Line("\"", "32760 0 0 0"))->name, "\"");
}

TEST(SpotInk, has_a_name_in_utf8_whatever_its_bytes) {
  EXPECT_EQ(ReadSpotInk(Line("Gr\xFCn", "32760 0 0 0"))->name, "Gr\xC3\xBCn");
  EXPECT_EQ(ReadSpotInk(Line("Gr\xC3\xBCn", "32760 0 0 0"))->name, "Gr\xC3\xBCn");
}

TEST(SpotInk, of_another_form_is_none) {
  for (const std::string numbers :
       {"32761 0 0 0", "-1 0 0 0", "4294967297 0 0 0", "1 2 3", "1 2 3 4 5", "1  2 3 4",
        "nan 0 0 0", "0x1 0 0 0", "1.5 0 0 0", ""})
    EXPECT_FALSE(ReadSpotInk(Line("a", numbers))) << numbers;
  EXPECT_FALSE(ReadSpotInk(Line("", "1 2 3 400")));
  EXPECT_FALSE(ReadSpotInk(" " + Line("a", "1 2 3 400")));
  EXPECT_FALSE(ReadSpotInk(Line("a", "1 2 3 400") + " "));
  const std::string whole = Line("a", "1 2 3 400");
  for (std::size_t length = 0; length < whole.size(); ++length)
    EXPECT_FALSE(ReadSpotInk(whole.substr(0, length))) << length;
}

TEST(SpotInk, is_found_in_a_line_that_was_begun_before) {
  EXPECT_EQ(FindSpotInk(Line("a", "1 2 3 4")), 0U);
  EXPECT_EQ(FindSpotInk("Loading..." + Line("a", "1 2 3 4")), 10U);
  EXPECT_EQ(FindSpotInk("%%SeparationName: a"), std::string::npos);
}

}  // namespace
}  // namespace rastrel::interpreter
