#include "children/devices/pattern.h"

#include <gtest/gtest.h>

#include <string>

namespace rastrel::devices {
namespace {

TEST(Pattern, every_field_is_filled_in) {
  FieldValues values;
  values.output = "/out";
  values.job = "Job";
  values.page = 7;
  values.copy = 2;
  values.printer = "Pr";
  values.plane = "Cyan";
  values.date = "2024-05-06";
  values.file = "/tmp/a b";
  const auto pattern =
      Pattern::Read("{output}|{job}|{page}|{copy}|{printer}|{plane}|{date}|{file}|{{x}}");
  ASSERT_TRUE(pattern);
  EXPECT_EQ(pattern->Expand(values), "/out|Job|7|2|Pr|Cyan|2024-05-06|/tmp/a b|{x}");
  EXPECT_TRUE(pattern->Has(Field::Plane));
  EXPECT_TRUE(pattern->BeginsWith(Field::Output));
  EXPECT_FALSE(Pattern::Read("a{job}")->BeginsWith(Field::Job));
  EXPECT_FALSE(Pattern::Read("a{{plane}}")->Has(Field::Plane));
}

TEST(Pattern, a_value_that_looks_like_a_field_is_no_field) {
  FieldValues values;
  values.job = "{file}";
  values.file = "/etc/passwd";
  EXPECT_EQ(Pattern::Read("{job}")->Expand(values), "{file}");
}

TEST(SafeName, names_that_would_leave_the_directory_are_changed) {
  EXPECT_EQ(SafeName("Shop front"), "Shop front");
  EXPECT_EQ(SafeName("../../etc/passwd"), "___.._etc_passwd");
  EXPECT_EQ(SafeName("C:\\x"), "C:_x");
  EXPECT_EQ(SafeName(".hidden"), "_hidden");
  EXPECT_EQ(SafeName(".."), "__");
  EXPECT_EQ(SafeName("-rf"), "_rf");
  EXPECT_EQ(SafeName(" - x "), "___x");
  EXPECT_EQ(SafeName(std::string("a\n\0\x7F"
                                 "b",
                                 5)),
            "a___b");
  EXPECT_EQ(SafeName(""), "untitled");
  EXPECT_EQ(SafeName("a.b-c"), "a.b-c");
}

TEST(SafeName, text_that_is_no_utf8_becomes_text_that_is) {
  EXPECT_EQ(SafeName("a\xFF"
                     "b"),
            "a\xEF\xBF\xBD"
            "b");
  EXPECT_EQ(SafeName("Gr\xC3\xBC\xC3\x9F"
                     "e"),
            "Gr\xC3\xBC\xC3\x9F"
            "e");
}

TEST(SafeName, long_names_are_cut_between_two_characters) {
  std::string value;
  for (int i = 0; i < 100; ++i) value += "\xE2\x82\xAC";  // three bytes each
  EXPECT_EQ(SafeName(value), value.substr(0, SafeNameLimit / 3 * 3));
  EXPECT_EQ(SafeName(std::string(10'000'000, 'a')).size(), SafeNameLimit);
}

TEST(SplitWords, quotes_and_backslashes_keep_blanks) {
  using Words = std::vector<std::string>;
  EXPECT_EQ(*SplitWords("a  b\tc "), (Words{"a", "b", "c"}));
  EXPECT_EQ(*SplitWords("'a b' \"c d\" e\\ f"), (Words{"a b", "c d", "e f"}));
  EXPECT_EQ(*SplitWords("a'b'\"c\"d"), (Words{"abcd"}));
  EXPECT_EQ(*SplitWords("'\\n' \"\\n\\\"\\\\\""), (Words{"\\n", "\\n\"\\"}));
  EXPECT_EQ(*SplitWords("'' \"\""), (Words{"", ""}));
  EXPECT_EQ(*SplitWords("a\\"), (Words{"a\\"}));
  EXPECT_EQ(*SplitWords("$HOME;`x`|y"), (Words{"$HOME;`x`|y"}));
  EXPECT_TRUE(SplitWords("")->empty());
  EXPECT_FALSE(SplitWords("'a"));
  EXPECT_FALSE(SplitWords("a \"b"));
}

}  // namespace
}  // namespace rastrel::devices
