// What `rastrel sheet` refuses: places and numbers that are none, and spreadsheets beyond a limit.

#include <gtest/gtest.h>

#include "tests/cli/sheet/sheet_command_fixture.h"

namespace rastrel::test {
namespace {

TEST_F(SheetCommandTest, rows_and_columns_are_bounded) {
  const auto shown = [this](const std::string& cells) {
    WorkbookFiles files;
    files.sheets = {{"S", cells}};
    return Sheet(files.Bytes(), {"--list"});
  };
  for (const int row : {1'048'575, 1'048'576, 1'048'577}) {
    const CommandResult result = shown(Row(row, Cell("A" + std::to_string(row), "1")));
    EXPECT_EQ(result.status, row <= 1'048'576 ? 0 : 3);
  }
  EXPECT_EQ(shown(Row(1, Cell("XFC1", "1"))).status, 0);
  EXPECT_EQ(shown(Row(1, Cell("XFD1", "1"))).status, 0);
  EXPECT_NE(shown(Row(1, Cell("XFE1", "1"))).error.find("cell 'XFE1' of row 1 lies behind"),
            std::string::npos);
  EXPECT_EQ(shown(Row(1, Cell(std::string(100, 'Z') + "1", "1"))).status, 3);
  EXPECT_NE(shown(Row(2, "") + Row(2, "")).error.find("row numbered '2' comes after row 2"),
            std::string::npos);
  EXPECT_EQ(shown("<row r=\"99999999999999999999\"/>").status, 3);
}

TEST_F(SheetCommandTest, a_row_number_that_is_none_is_named_with_its_place) {
  const auto words = [this](const std::string& number) {
    WorkbookFiles files;
    files.sheets = {
        {"S", "\n" + Row(1, Cell("A1", "1")) + "\n <row r=\"" + number + "\"><c>\n</c></row>\n"}};
    return Shown(files.Bytes());
  };
  for (const std::string number : {"x", "0", "-1", "1.5", "2 ", "99999999999999999999"})
    EXPECT_EQ(words(number), "xl/tables/t1.xml:4:" + std::to_string(number.size() + 11) +
                                 ": the attribute 'r' of a row is '" + number +
                                 "', and not a whole number from 1 on\n");
  EXPECT_EQ(words("1"), "xl/tables/t1.xml:4:12: the row numbered '1' comes after row 1\n");
  const std::string cut = words(std::string(1 << 20, 'x'));
  EXPECT_TRUE(cut.ends_with("xxx...', and not a whole number from 1 on\n"));
  EXPECT_LT(cut.size(), 400U);
}

TEST_F(SheetCommandTest, repeats_are_bounded) {
  const auto status = [this](int columns, int rows, int more) {
    const auto times = [](const char* what, int count) {
      return std::string("table:number-") + what + "-repeated=\"" + std::to_string(count) + "\"";
    };
    std::string tables = TableRow(TableCell("x", times("columns", columns)), times("rows", rows));
    if (more > 0) tables += TableRow(TableCell("x", times("columns", more)));
    return Sheet(OpenDocument(Table("T", tables), "document"), {"--list"}).status;
  };
  EXPECT_EQ(status(16'383, 1, 0), 0);
  EXPECT_EQ(status(16'384, 1, 0), 0);
  EXPECT_EQ(status(16'385, 1, 0), 3);
  EXPECT_EQ(status(1, 1'048'575, 0), 0);
  EXPECT_EQ(status(1, 1'048'576, 0), 0);
  EXPECT_EQ(status(1, 1'048'577, 0), 3);
  EXPECT_EQ(status(1, 1'048'576, 1), 3);
  EXPECT_EQ(status(999'999'999, 999'999'999, 0), 3);
  // All but the first of a row's cells, and all of the rows after the first, come by repeats.
  EXPECT_EQ(status(16'384, 1'024, 1), 0);
  EXPECT_EQ(status(16'384, 1'024, 2), 0);
  EXPECT_EQ(status(16'384, 1'024, 3), 3);
}

TEST_F(SheetCommandTest, texts_of_cells_are_bounded) {
  for (const int size : {(1 << 20) - 1, 1 << 20, (1 << 20) + 1}) {
    const std::string blanks = "<text:s text:c=\"" + std::to_string(size - 2) + "\"/>";
    const std::string shown = ShownTables(Table("T", TableRow(TableCell("a" + blanks + "b"))));
    if (size <= 1 << 20)
      EXPECT_EQ(shown.size(),
                static_cast<std::size_t>(size) + std::string("\\sheet\tT\n\n").size());
    else
      EXPECT_NE(shown.find("row 1: a cell has a text longer than the limit"), std::string::npos);
    WorkbookFiles files;
    files.sheets = {
        {"S", Row(1, Cell("A1", std::string(static_cast<std::size_t>(size), 'x'), "str"))}};
    EXPECT_EQ(Sheet(files.Bytes(), {"--list"}).status, size <= 1 << 20 ? 0 : 3);
  }
  EXPECT_NE(ShownTables(Table("T", TableRow(TableCell("<text:s text:c=\"999999999\"/>x"))))
                .find("longer than the limit"),
            std::string::npos);
}

TEST_F(SheetCommandTest, sheets_are_bounded_and_share_no_part) {
  for (const std::size_t count : {4095U, 4096U, 4097U}) {
    std::string tables;
    for (std::size_t index = 0; index < count; ++index) tables += Table("T", "");
    EXPECT_EQ(Sheet(OpenDocument(tables, "document"), {"--list"}).status, count <= 4096 ? 0 : 3);
    WorkbookFiles files;
    files.sheets = {{"S", ""}};
    files.workbookExtra = "<sheets>";
    for (std::size_t index = 1; index < count; ++index)
      files.workbookExtra += "<sheet name=\"x\" r:id=\"none\"/>";
    files.workbookExtra += "</sheets>";
    const std::string words = Shown(files.Bytes());
    EXPECT_EQ(words.find("more sheets than the limit of 4096") != words.npos, count > 4096);
  }
  WorkbookFiles files = TwoSheets();
  files.sheets[1].target = "tables/t1.xml";
  EXPECT_EQ(Shown(files.Bytes()), "xl/tables/t1.xml: several sheets share it\n");
}

TEST_F(SheetCommandTest, a_shared_string_that_is_not_there_is_a_fault) {
  WorkbookFiles files = TwoSheets();
  files.sheets[0].rows = Row(4, Cell("A4", "2", "s"));
  EXPECT_NE(
      Shown(files.Bytes()).find("a cell of row 4 asks for the shared string '2', and there are 2"),
      std::string::npos);
}

}  // namespace
}  // namespace rastrel::test
