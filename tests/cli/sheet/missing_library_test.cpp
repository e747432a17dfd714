// Libraries that the command binds when it needs them: absent, broken, or of another kind.

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/cli/command_runner.h"
#include "tests/spreadsheet/workbook_files.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

const std::string Examples = std::string(RASTREL_SOURCE_DIR) + "/examples/";

class MissingLibrary : public ::testing::Test {
 protected:
  MissingLibrary() {
    WorkbookFiles files;
    files.sheets = {{"S", Row(1, Cell("A1", "7"))}};
    m_Command.Place().Write("book.xlsx", files.Bytes());
    m_Command.Set("LD_LIBRARY_PATH", m_Libraries.Path());
  }
  // Has the loader find something that is no library under that name.
  void Break(const std::string& library) const {
    m_Libraries.Write(library, std::string(4096, 'x'));
  }
  // Has it find a library that has none of the wanted functions.
  void Replace(const std::string& library) const {
    fs::copy_file(RASTREL_LIBRARY, m_Libraries.Path(library));
  }
  void ExpectNotInstalled(const Words& arguments, const std::string& words) {
    const CommandResult result = m_Command.Run(arguments);
    EXPECT_EQ(result.status, 5) << arguments.front();
    EXPECT_EQ(result.output, "");
    EXPECT_TRUE(result.error.starts_with("rastrel: " + words)) << result.error;
    EXPECT_EQ(std::ranges::count(result.error, '\n'), 1) << result.error;
  }

  ScratchDirectory m_Libraries;
  CommandRunner m_Command{CommandRunner::Children::None};
};

TEST_F(MissingLibrary, without_libzip_a_package_is_not_read_and_all_else_is) {
  Break(RASTREL_LIBZIP);
  for (const char* const form : {"--faithful", "--as-shown", "--list"})
    ExpectNotInstalled({"sheet", "book.xlsx", form},
                       "libzip, which reads packages of spreadsheets, can't be used: ");
  EXPECT_EQ(m_Command.NamesIn("jobs"), Words());
  EXPECT_NE(m_Command.Run({"sheet", "book.xlsx"}).error.find("; install libzip"),
            std::string::npos);
  EXPECT_EQ(m_Command.Run({"sheet", Examples + "price-list", "--list"}).status, 0);
  EXPECT_EQ(m_Command.Run({"sheet", Examples + "price-list.fods", "--list"}).status, 0);
  EXPECT_EQ(m_Command.Run({"notes", Examples + "job-notes.xml"}).status, 0);
}

TEST_F(MissingLibrary, a_libzip_of_another_kind_is_reported_with_its_missing_functions) {
  Replace(RASTREL_LIBZIP);
  ExpectNotInstalled({"sheet", "book.xlsx"},
                     "libzip, which reads packages of spreadsheets, can't be used: it has no zip_");
}

TEST_F(MissingLibrary, without_libxml2_nothing_that_is_xml_is_read) {
  Break(RASTREL_LIBXML2);
  for (const Words& arguments :
       {Words{"sheet", "book.xlsx"},
        {"sheet", Examples + "price-list.fods", "--as-shown"},
        {"notes", Examples + "job-notes.xml"},
        {"cars", Examples + "car-library.xml"},
        {"chart", "caps", Examples + "charts/capitals.xml"},
        {"chart", "symbol", Examples + "charts/symbols.xml", "--size", "6"}})
    ExpectNotInstalled(arguments, "the XML parser can't be had: ");
  EXPECT_EQ(m_Command.NamesIn("jobs"), Words());
}

TEST_F(MissingLibrary, a_libxml2_of_another_kind_is_said) {
  Replace(RASTREL_LIBXML2);
  ExpectNotInstalled({"notes", Examples + "job-notes.xml"},
                     "the XML parser " RASTREL_LIBXML2 " is of another kind; install libxml2");
}

TEST_F(MissingLibrary, is_a_failed_event_as_json) {
  Break(RASTREL_LIBZIP);
  const CommandResult result = m_Command.Run({"sheet", "book.xlsx", "--json"});
  EXPECT_EQ(result.status, 5);
  const auto line = nlohmann::json::parse(result.LastLine());
  EXPECT_EQ(line["event"], "failed");
  EXPECT_EQ(line["exit"], 5);
}

TEST_F(MissingLibrary, is_a_note_of_the_doctors) {
  const std::string whole = m_Command.Run({"doctor"}).output;
  EXPECT_NE(whole.find("libzip: found"), std::string::npos) << whole;
  EXPECT_NE(whole.find("libxml2: found"), std::string::npos) << whole;
  Break(RASTREL_LIBZIP);
  Break(RASTREL_LIBXML2);
  const std::string broken = m_Command.Run({"doctor"}).output;
  EXPECT_NE(broken.find("libzip: libzip, which"), std::string::npos) << broken;
  EXPECT_NE(broken.find("libxml2: the XML parser can't be had"), std::string::npos) << broken;
}

}  // namespace
}  // namespace rastrel::test
