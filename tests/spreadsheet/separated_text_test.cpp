#include "spreadsheet/separated_text.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace rastrel::spreadsheet {
namespace {

using Cells = std::vector<std::string>;

// Keeps all rows with their numbers.
struct Rows : RowSink {
  Expected<void> BeginSheet(const SheetInfo& /*sheet*/, std::size_t /*number*/) override {
    return {};
  }
  Expected<void> Row(std::uint64_t row, std::vector<std::string>& cells) override {
    found.emplace_back(row, cells);
    return {};
  }
  std::vector<std::pair<std::uint64_t, Cells>> found;
};

std::vector<std::pair<std::uint64_t, Cells>> Read(std::string_view text, char separator = ',') {
  Rows rows;
  const auto read = ReadSeparatedText(text, separator, rows);
  EXPECT_TRUE(read) << Describe(read.Error());
  return rows.found;
}

std::string Refusal(std::string_view text) {
  Rows rows;
  const auto read = ReadSeparatedText(text, ',', rows);
  return read ? "" : Describe(read.Error());
}

using Found = std::vector<std::pair<std::uint64_t, Cells>>;

TEST(SeparatedText, lines_are_rows_whatever_they_end_in) {
  EXPECT_EQ(Read("a,b\r\nc,d\ne,f\rg,h"),
            (Found{{1, {"a", "b"}}, {2, {"c", "d"}}, {3, {"e", "f"}}, {4, {"g", "h"}}}));
}

TEST(SeparatedText, a_last_line_without_an_end_is_a_row_and_one_with_an_end_makes_no_more) {
  EXPECT_EQ(Read("a\nb").size(), 2U);
  EXPECT_EQ(Read("a\nb\n").size(), 2U);
}

TEST(SeparatedText, quoted_values_hold_separators_line_ends_and_doubled_quotes) {
  EXPECT_EQ(Read("\"a,b\",\"c\r\nd\",\"e\"\"f\"\nnext"),
            (Found{{1, {"a,b", "c\r\nd", "e\"f"}}, {2, {"next"}}}));
}

TEST(SeparatedText, whitespace_belongs_to_its_value) {
  EXPECT_EQ(Read(" a , b\n"), (Found{{1, {" a ", " b"}}}));
}

TEST(SeparatedText, a_quote_inside_a_value_is_a_character) {
  EXPECT_EQ(Read("5\" pipe,x\n"), (Found{{1, {"5\" pipe", "x"}}}));
}

TEST(SeparatedText, empty_lines_count_and_are_no_rows) {
  EXPECT_EQ(Read("a\n\n,,\nb\n"), (Found{{1, {"a"}}, {4, {"b"}}}));
}

TEST(SeparatedText, empty_values_at_a_rows_end_are_left_out) {
  EXPECT_EQ(Read("a,,b,,\n"), (Found{{1, {"a", "", "b"}}}));
}

TEST(SeparatedText, a_quote_without_an_end_is_refused_with_the_line_that_it_begins_on) {
  EXPECT_EQ(Refusal("a\nb,\"c\nd"), "line 2: a value in double quotes has no end");
}

TEST(SeparatedText, text_after_a_closing_quote_is_refused_with_its_line) {
  EXPECT_EQ(Refusal("\"a\nb\"c"), "line 2: a value goes on after its closing double quote");
}

TEST(SeparatedText, values_have_at_most_a_cells_bytes) {
  const std::string most(limits::CellBytes, 'x');
  EXPECT_EQ(Refusal(most.substr(1)), "");
  EXPECT_EQ(Refusal(most), "");
  EXPECT_EQ(Refusal("\"" + most + "\""), "");
  const std::string refusal = "line 2: a value has more than 1048576 bytes";
  EXPECT_EQ(Refusal("a\n" + most + "x"), refusal);
  EXPECT_EQ(Refusal("a\n\"" + most + "x\""), refusal);
}

TEST(SeparatedText, rows_have_at_most_a_sheets_columns) {
  const std::string most(limits::Columns - 1, ',');
  EXPECT_EQ(Refusal(most.substr(1)), "");
  EXPECT_EQ(Refusal(most), "");
  EXPECT_EQ(Refusal(most + ","), "line 1: a row has more than 16384 values");
}

TEST(SeparatedText, tables_have_at_most_a_sheets_rows) {
  const std::string most(limits::Rows, '\n');
  EXPECT_EQ(Refusal(most.substr(1)), "");
  EXPECT_EQ(Refusal(most), "");
  EXPECT_EQ(Refusal(most + "a"), "line 1048577: there are more than 1048576 rows");
}

TEST(SeparatedText, the_separator_is_the_one_that_the_first_line_has_most_of) {
  EXPECT_EQ(SeparatorOf("a,b,c;d\n;;;;"), ',');
  EXPECT_EQ(SeparatorOf("a;b;c,d\n,,,,,"), ';');
  EXPECT_EQ(SeparatorOf("a\tb"), '\t');
  EXPECT_EQ(SeparatorOf("\"a;b;c\",d"), ',');
  EXPECT_EQ(SeparatorOf("Name"), ',');
  EXPECT_EQ(SeparatorOf(""), ',');
}

TEST(SeparatedText, marks_and_ill_formed_utf_8_tell_the_encoding) {
  EXPECT_EQ(TextOfTable("\xEF\xBB\xBFZo\xC3\xAB"), "Zo\xC3\xAB");
  EXPECT_EQ(TextOfTable("Zo\xC3\xAB"), "Zo\xC3\xAB");
  EXPECT_EQ(TextOfTable("Zo\xEB"), "Zo\xC3\xAB");
  EXPECT_EQ(TextOfTable(std::string_view("\xFF\xFEZ\0o\0\xEB\0", 8)), "Zo\xC3\xAB");
  EXPECT_EQ(TextOfTable(std::string_view("\xFE\xFF\0Z\0o\0\xEB", 8)), "Zo\xC3\xAB");
}

TEST(SeparatedText, a_failing_sink_ends_the_reading) {
  struct Full : Rows {
    Expected<void> Row(std::uint64_t /*row*/, std::vector<std::string>& /*cells*/) override {
      return FailureOf("full");
    }
  } full;
  const auto read = ReadSeparatedText("a\nb", ',', full);
  ASSERT_FALSE(read);
  EXPECT_EQ(Describe(read.Error()), "full");
}

}  // namespace
}  // namespace rastrel::spreadsheet
