// The limits of spreadsheets that take large files to reach.

#include <gtest/gtest.h>

#include <filesystem>

#include "spreadsheet/error.h"
#include "spreadsheet/open_document.h"
#include "spreadsheet/string_table.h"
#include "spreadsheet/workbook.h"
#include "spreadsheet/workbook_formats.h"
#include "tests/spreadsheet/workbook_files.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::test {
namespace {

using namespace spreadsheet;

class SheetLimitsTest : public ::testing::Test {
 protected:
  // A package in a folder, whose parts are copied anew.
  Parts Fresh() {
    std::filesystem::remove_all(m_Scratch.Path("out"));
    std::filesystem::create_directories(m_Scratch.Path("in"));
    std::filesystem::create_directories(m_Scratch.Path("out"));
    return {OpenFolderPackage(m_Scratch.Path("in")), m_Scratch.Path("out"), {}};
  }
  // The refusal's message, or none.
  template <typename Call>
  static std::string WordsOf(const Call& call) {
    try {
      call();
      return {};
    } catch (const Error& error) {
      return error.what();
    }
  }
  static std::string Times(std::size_t count, const std::string& text) {
    std::string all;
    all.reserve(count * text.size());
    while (count-- > 0) all += text;
    return all;
  }
  static bool Ends(const std::string& words, const std::string& end) {
    return words.ends_with(end);
  }

  ScratchDirectory m_Scratch;
};

TEST_F(SheetLimitsTest, shared_strings_are_counted) {
  for (const std::size_t count : {3'999'999U, 4'000'000U, 4'000'001U}) {
    m_Scratch.Write("in/s", "<sst>" + Times(count, "<si/>") + "</sst>");
    const std::string words = WordsOf([&] {
      Parts parts = Fresh();
      EXPECT_EQ(StringTable::Read(parts, "s").Count(), count);
    });
    if (count <= 4'000'000)
      EXPECT_EQ(words, "");
    else
      EXPECT_TRUE(Ends(words, "there are more shared strings than the limit of 4000000")) << words;
  }
}

TEST_F(SheetLimitsTest, the_bytes_of_shared_strings_are_counted) {
  m_Scratch.Write("in/s", "<sst><si><t>abc</t></si><si><t>\u20AC</t></si></sst>");
  for (const std::size_t most : {5U, 6U, 7U}) {
    const std::string words = WordsOf([&] {
      Parts parts = Fresh();
      EXPECT_EQ(StringTable::Read(parts, "s", most).At(1), "\u20AC");
    });
    EXPECT_EQ(words.empty(), most >= 6) << words;
  }
}

TEST_F(SheetLimitsTest, formats_are_counted) {
  for (const std::size_t count : {65'535U, 65'536U, 65'537U}) {
    m_Scratch.Write("in/f", "<styleSheet><cellXfs>" + Times(count - 1, "<xf numFmtId=\"0\"/>") +
                                "<xf numFmtId=\"9\"/></cellXfs></styleSheet>");
    const std::string words = WordsOf([&] {
      Parts parts = Fresh();
      const WorkbookFormats formats = WorkbookFormats::Read(parts, "f");
      EXPECT_EQ(formats.CodeOf(count - 1).ShowNumber(0.5, DateSystem::From1900), "50%");
      EXPECT_EQ(formats.CodeOf(count).ShowNumber(0.5, DateSystem::From1900), "0.5");
    });
    EXPECT_EQ(words.empty(), count <= 65'536) << words;
    std::string codes;
    for (std::size_t number = 0; number < count; ++number)
      codes += "<numFmt numFmtId=\"" + std::to_string(number) + "\" formatCode=\"0\"/>";
    m_Scratch.Write("in/f", "<styleSheet><numFmts>" + codes + "</numFmts></styleSheet>");
    const std::string ofCodes = WordsOf([&] {
      Parts parts = Fresh();
      static_cast<void>(WorkbookFormats::Read(parts, "f"));
    });
    EXPECT_EQ(ofCodes.empty(), count <= 65'536) << ofCodes;
  }
}

TEST_F(SheetLimitsTest, relationships_are_counted) {
  for (const std::size_t count : {65'535U, 65'536U, 65'537U}) {
    WorkbookFiles files;
    files.sheets = {{"S", ""}};
    for (const ZipEntry& entry : files.Entries())
      m_Scratch.Write("in/" + entry.name, entry.content);
    std::string links;
    for (std::size_t number = 0; number < count; ++number)
      links += "<Relationship Id=\"r" + std::to_string(number) + "\" Type=\"x\" Target=\"y\"/>";
    m_Scratch.Write("in/xl/_rels/workbook.xml.rels", WorkbookFiles::Relationships(links));
    const std::string words = WordsOf([&] {
      Parts parts = Fresh();
      static_cast<void>(ReadWorkbook(parts));
    });
    EXPECT_EQ(words.empty(), count <= 65'536) << words;
  }
}

TEST_F(SheetLimitsTest, styles_of_hidden_tables_are_counted) {
  for (const std::size_t count : {65'535U, 65'536U, 65'537U}) {
    std::string styles;
    for (std::size_t number = 0; number < count; ++number)
      styles += "<style:style style:family=\"table\" style:name=\"s" + std::to_string(number) +
                "\"><style:table-properties table:display=\"false\"/></style:style>";
    m_Scratch.Write(
        "d", OpenDocument(Table("T", ""), "document",
                          "<office:automatic-styles>" + styles + "</office:automatic-styles>"));
    const std::string words = WordsOf([&] {
      EXPECT_EQ(ReadOpenDocumentSheets({m_Scratch.Path("d"), "d"}).size(), 1U);
    });
    EXPECT_EQ(words.empty(), count <= 65'536) << words;
  }
}

TEST(ColumnName, counts_in_letters) {
  EXPECT_EQ(ColumnName(1), "A");
  EXPECT_EQ(ColumnName(26), "Z");
  EXPECT_EQ(ColumnName(27), "AA");
  EXPECT_EQ(ColumnName(702), "ZZ");
  EXPECT_EQ(ColumnName(703), "AAA");
  EXPECT_EQ(ColumnName(limits::Columns), "XFD");
}

}  // namespace
}  // namespace rastrel::test
