#include "cli/printing/page_ranges.h"

#include <gtest/gtest.h>

#include "cli/console/exit_status.h"

namespace rastrel::cli {
namespace {

using Pages = std::deque<std::int32_t>;

TEST(ParsePages, counts_from_one_and_gives_positions_from_zero) {
  EXPECT_EQ(ParsePages("1"), Pages({0}));
  EXPECT_EQ(ParsePages("1,3-5"), Pages({0, 2, 3, 4}));
  EXPECT_EQ(ParsePages("7-7"), Pages({6}));
}

TEST(ParsePages, gives_each_page_once_and_in_order) {
  EXPECT_EQ(ParsePages("5,1-3,2,2"), Pages({0, 1, 2, 4}));
}

TEST(ParsePages, takes_the_highest_page_and_none_above) {
  EXPECT_EQ(ParsePages("1000000"), Pages({999999}));
  EXPECT_EQ(ParsePages("1-1000000").size(), 1000000U);
  EXPECT_THROW(static_cast<void>(ParsePages("1000001")), CommandError);
  EXPECT_THROW(static_cast<void>(ParsePages("99999999999999999999")), CommandError);
}

TEST(ParsePages, refuses_a_text_that_is_no_list_of_pages) {
  for (const char* list : {"", ",", "1,", ",1", "0", "-1", "1-", "-", "1--2", "3-1", "1-2-3", "a",
                           "1 ", " 1", "+1", "1;2", "1.5", "0x1"}) {
    try {
      static_cast<void>(ParsePages(list));
      ADD_FAILURE() << "'" << list << "' was taken";
    } catch (const CommandError& error) {
      EXPECT_EQ(error.Status(), ExitStatus::WrongUse) << list;
      EXPECT_NE(std::string(error.what()).find("--pages"), std::string::npos) << list;
    }
  }
}

}  // namespace
}  // namespace rastrel::cli
