#include "cli/printing/page_ranges.h"

#include <gtest/gtest.h>

#include <string>

namespace rastrel::cli {
namespace {

// The positions of a list's pages as text, "0 2 3", or the message for the user.
std::string Positions(const char* list) {
  const auto pages = ParsePages(list);
  if (!pages) return Describe(pages.Error());
  std::string text;
  for (const std::int32_t page : *pages) text += (text.empty() ? "" : " ") + std::to_string(page);
  return text;
}

TEST(ParsePages, counts_from_one_and_gives_positions_from_zero) {
  EXPECT_EQ(Positions("1"), "0");
  EXPECT_EQ(Positions("1,3-5"), "0 2 3 4");
  EXPECT_EQ(Positions("7-7"), "6");
}

TEST(ParsePages, gives_each_page_once_and_in_order) {
  EXPECT_EQ(Positions("5,1-3,2,2"), "0 1 2 4");
}

TEST(ParsePages, takes_the_highest_page_and_none_above) {
  EXPECT_EQ(Positions("1000000"), "999999");
  const auto all = ParsePages("1-1000000");
  ASSERT_TRUE(all);
  EXPECT_EQ(all->size(), 1000000U);
  EXPECT_EQ(Positions("1000001"),
            "--pages 1000001: '1000001' is no page from 1 to 1000000; pages are given like 1,3-5");
  EXPECT_FALSE(ParsePages("99999999999999999999"));
}

TEST(ParsePages, refuses_a_text_that_is_no_list_of_pages) {
  for (const char* list : {"", ",", "1,", ",1", "0", "-1", "1-", "-", "1--2", "3-1", "1-2-3", "a",
                           "1 ", " 1", "+1", "1;2", "1.5", "0x1"}) {
    const auto pages = ParsePages(list);
    ASSERT_FALSE(pages) << "'" << list << "' was taken";
    EXPECT_TRUE(Describe(pages.Error()).starts_with("--pages " + std::string(list) + ": ")) << list;
  }
  EXPECT_EQ(Positions("3-1"), "--pages 3-1: '3-1' runs backwards; pages are given like 1,3-5");
}

}  // namespace
}  // namespace rastrel::cli
