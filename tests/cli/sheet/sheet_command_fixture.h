#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/cli/command_runner.h"
#include "tests/spreadsheet/workbook_files.h"

/// `rastrel sheet` as it is run on spreadsheets that tests put together.
namespace rastrel::test {

inline WorkbookFiles TwoSheets() {
  WorkbookFiles files;
  files.sheets = {
      {"First", Row(1, Cell("A1", "0", "s") + Cell("B1", "1.5")) +
                    Row(3, Cell("A3", "1", "s") + Cell("C3", "1", "b"))},
      {"Second", Row(1, Cell("A1", "7", "n", 1) + Cell("AA1", "8")), "state=\"hidden\""}};
  files.strings = "<si><t>Name</t></si><si><t>two\nlines\tand \\</t></si>";
  files.styles =
      "<numFmts><numFmt numFmtId=\"164\" formatCode=\"0.00&quot; m&quot;\"/></numFmts>"
      "<cellXfs><xf numFmtId=\"0\"/><xf numFmtId=\"164\"/></cellXfs>";
  return files;
}

class SheetCommandTest : public ::testing::Test {
 protected:
  ~SheetCommandTest() override {
    EXPECT_EQ(m_Command.NamesIn("jobs"), std::vector<std::string>());
    for (const auto& entry : std::filesystem::directory_iterator(m_Command.Place().Path()))
      EXPECT_FALSE(entry.path().filename().string().starts_with(".")) << entry.path();
  }
  CommandResult Sheet(const std::string& bytes, std::vector<std::string> options = {}) {
    m_Command.Place().Write("book", bytes);
    options.insert(options.begin(), {"sheet", "book"});
    return m_Command.Run(options);
  }
  // The text, or the refusal without the file's name.
  std::string Shown(const std::string& bytes,
                    const std::vector<std::string>& options = {"--as-shown"}) {
    const CommandResult result = Sheet(bytes, options);
    if (result.status == 0) {
      EXPECT_EQ(result.error, "");
      return result.output;
    }
    EXPECT_EQ(result.status, 3) << result.error;
    EXPECT_EQ(result.output, "");
    // In a flat file the line comes first.
    std::string words = result.error;
    EXPECT_TRUE(words.starts_with("rastrel: book:")) << words;
    words.erase(0, std::string("rastrel: book:").size());
    return words.substr(words.starts_with(' ') ? 1 : 0);
  }
  std::string ShownTables(const std::string& tables) {
    return Shown(OpenDocument(tables, "document"));
  }
  CommandRunner m_Command{CommandRunner::Children::None};
};

}  // namespace rastrel::test
