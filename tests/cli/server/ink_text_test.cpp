#include "cli/server/ink_text.h"

#include <gtest/gtest.h>

namespace rastrel::cli {
namespace {

TEST(InkText, a_page_is_an_object_of_its_inks_in_their_order) {
  EXPECT_EQ(TextOfInk({{{"Yellow", 0.25}, {"Cyan", 1.0}}, {{"Gold \"1\"", 1.0 / 3}}}),
            R"([{"Yellow":0.25,"Cyan":1.0},{"Gold \"1\"":0.3333}])");
}

TEST(InkText, no_page_is_no_text) {
  EXPECT_EQ(TextOfInk({}), "");
  ASSERT_TRUE(InksOfText(""));
  EXPECT_TRUE(InksOfText("")->empty());
}

TEST(InkText, a_text_is_read_as_it_was_written) {
  const std::vector<PageInk> pages{{{"Cyan", 0.5}, {"Black", 0.0}}, {{"Cyan", 0.125}}};
  EXPECT_EQ(InksOfText(TextOfInk(pages)), pages);
}

TEST(InkText, another_form_is_no_ink) {
  for (const char* text : {"{", "{}", "[1]", R"([{"Cyan":"much"}])", R"([{"Cyan":0.1}] more)"}) {
    EXPECT_FALSE(InksOfText(text)) << text;
    EXPECT_EQ(SummedInk(text), "") << text;
  }
}

TEST(InkText, the_pages_of_a_job_are_added_ink_by_ink) {
  EXPECT_EQ(SummedInk(R"([{"Cyan":0.75,"Black":0.5},{"Black":1.0,"Gold":0.0001}])"),
            "Cyan 0.7500; Black 1.5000; Gold 0.0001");
}

TEST(InkText, a_person_reads_percent) {
  EXPECT_EQ(ShownInk({{"Cyan", 0.25}, {"Black", 0.0314}}), "Cyan 25.0 %, Black 3.1 %");
}

}  // namespace
}  // namespace rastrel::cli
