#include "cli/server/csv_table.h"

#include <gtest/gtest.h>

namespace rastrel::cli {
namespace {

TEST(CsvRow, EndsWithCarriageReturnAndLineFeed) { EXPECT_EQ(CsvRow({"1", "a"}), "1,a\r\n"); }

TEST(CsvRow, QuotesCommasQuotesAndLineEnds) {
  EXPECT_EQ(CsvRow({"a,b", "say \"x\"", "two\nlines", "cr\rhere"}),
            "\"a,b\",\"say \"\"x\"\"\",\"two\nlines\",\"cr\rhere\"\r\n");
}

TEST(CsvRow, KeepsEmptyCells) { EXPECT_EQ(CsvRow({"", "", ""}), ",,\r\n"); }

TEST(CsvRow, PutsAnApostropheBeforeAFormula) {
  EXPECT_EQ(CsvRow({"=1+1"}), "'=1+1\r\n");
  EXPECT_EQ(CsvRow({"+41 44"}), "'+41 44\r\n");
  EXPECT_EQ(CsvRow({"@SUM(A1)"}), "'@SUM(A1)\r\n");
  EXPECT_EQ(CsvRow({"-cmd"}), "'-cmd\r\n");
  EXPECT_EQ(CsvRow({"\tx"}), "'\tx\r\n");
  EXPECT_EQ(CsvRow({"\r=1"}), "\"'\r=1\"\r\n");
  EXPECT_EQ(CsvRow({"=a,\"b\""}), "\"'=a,\"\"b\"\"\"\r\n");
}

TEST(CsvRow, KeepsANegativeNumber) {
  EXPECT_EQ(CsvRow({"-1", "-12.5"}), "-1,-12.5\r\n");
  EXPECT_EQ(CsvRow({"-1+cmd"}), "'-1+cmd\r\n");
}

}  // namespace
}  // namespace rastrel::cli
