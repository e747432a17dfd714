#include "cli/console/values.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace rastrel::cli {
namespace {

// A result as text: the number that was read, or the message for the user.
std::string Text(const Expected<std::int32_t>& result) {
  return result ? std::to_string(*result) : Describe(result.Error());
}

TEST(ParseCopies, takes_numbers_from_one_to_a_hundred_thousand) {
  EXPECT_EQ(Text(ParseCopies("1")), "1");
  EXPECT_EQ(Text(ParseCopies("100000")), "100000");
  for (const char* text : {"", "0", "-1", "100001", "1x", "two", "4294967297"})
    EXPECT_EQ(Text(ParseCopies(text)),
              "--copies " + std::string(text) + ": not a number from 1 to 100000");
}

TEST(ParseDpi, takes_numbers_from_one_to_4800) {
  EXPECT_EQ(Text(ParseDpi("1")), "1");
  EXPECT_EQ(Text(ParseDpi("4800")), "4800");
  for (const char* text : {"0", "4801", "72.5", ""})
    EXPECT_EQ(Text(ParseDpi(text)), "--dpi " + std::string(text) + ": not a number from 1 to 4800");
}

std::string SizeText(std::string_view text) {
  const auto size = ParsePartSize("--size", text);
  if (!size) return Describe(size.Error());
  const auto side = [](const std::optional<double>& length) {
    return length ? std::to_string(*length) : std::string("open");
  };
  return side(size->widthCm) + " x " + side(size->heightCm);
}

TEST(ParsePartSize, takes_both_sides_or_one_of_them_with_a_unit) {
  EXPECT_EQ(SizeText("10x5cm"), "10.000000 x 5.000000");
  EXPECT_EQ(SizeText("25.4x12.7mm"), "2.540000 x 1.270000");
  EXPECT_EQ(SizeText("2xin"), "5.080000 x open");
  EXPECT_EQ(SizeText("x72pt"), "open x 2.540000");
  EXPECT_EQ(SizeText("100000xcm"), "100000.000000 x open");
}

TEST(ParsePartSize, refuses_all_else_with_a_reason) {
  const std::string form =
      ": a size is WIDTHxHEIGHT and a unit, as in 10x5in, or one of the two alone, as in 10xin or "
      "x5in";
  for (const char* text : {"xcm", "cm", "10cm", "1x2x3cm", "xxcm"})
    EXPECT_EQ(SizeText(text), "--size " + std::string(text) + form);
  for (const char* text : {"", "10x5", "10x5ft"})
    EXPECT_EQ(SizeText(text),
              "--size " + std::string(text) +
                  ": a size has its unit at its end: cm, mm, in or pt, as in 10x5in");
  for (const char* side : {"0", "-1", "100000.1", "1e3", "nan", "1,5"})
    EXPECT_EQ(SizeText("1x" + std::string(side) + "cm"),
              "--size 1x" + std::string(side) + "cm: '" + side +
                  "' is no length above 0 and up to a kilometre");
}

TEST(SplitColor, parts_at_the_first_colon) {
  EXPECT_EQ(SplitColor("rgb:1,2,3").model, "rgb");
  EXPECT_EQ(SplitColor("rgb:1,2,3").components, "1,2,3");
  EXPECT_EQ(SplitColor("spot:a:b").components, "a:b");
  EXPECT_EQ(SplitColor("cmyk").model, "cmyk");
  EXPECT_EQ(SplitColor("cmyk").components, "");
  EXPECT_EQ(SplitColor("").model, "");
}

}  // namespace
}  // namespace rastrel::cli
