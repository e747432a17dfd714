#include "cli/console/values.h"

#include <gtest/gtest.h>

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
