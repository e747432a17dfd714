#include "cli/console/values.h"

#include <gtest/gtest.h>

#include "cli/console/exit_status.h"

namespace rastrel::cli {
namespace {

// The message about a refused value; empty if it is accepted.
std::string RefusalOf(const char* copies) {
  try {
    static_cast<void>(ParseCopies(copies));
    return {};
  } catch (const CommandError& error) {
    EXPECT_EQ(error.Status(), ExitStatus::WrongUse);
    return error.what();
  }
}

TEST(ParseCopies, takes_numbers_from_one_to_a_hundred_thousand) {
  EXPECT_EQ(ParseCopies("1"), 1);
  EXPECT_EQ(ParseCopies("100000"), 100000);
  for (const char* text : {"", "0", "-1", "100001", "1x", "two", "4294967297"})
    EXPECT_EQ(RefusalOf(text), "--copies " + std::string(text) + ": not a number from 1 to 100000");
}

TEST(ParseDpi, takes_numbers_from_one_to_4800) {
  EXPECT_EQ(ParseDpi("1"), 1);
  EXPECT_EQ(ParseDpi("4800"), 4800);
  for (const char* text : {"0", "4801", "72.5", ""})
    EXPECT_THROW(static_cast<void>(ParseDpi(text)), CommandError) << text;
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
