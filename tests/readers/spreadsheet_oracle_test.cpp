// The shipped imports of spreadsheets, which read streams, against literal ones that hold trees.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

#include "rastrel/platform/os/number_text.h"
#include "rastrel/readers/cell_value.h"
#include "tests/support/library_fixture.h"
#include "tests/support/spreadsheet_answers.h"
#include "tests/support/spreadsheet_files.h"

using rastrel::readers::SheetText;
using rastrel::test::ExcelFolder;
using rastrel::test::SpreadsheetFiles;

namespace {

class AgainstLiteralSpreadsheets : public rastrel::test::LibraryTest {};

std::string PrintedNumber(const std::string& number) {
  SheetText text(1000);
  rastrel::readers::AppendNumber(text, number);
  std::string printed;
  text.ForEachPiece(0, text.Size(), [&printed](std::string_view piece) {
    printed += piece;
    return true;
  });
  return printed;
}

std::string ExpectedFraction(const std::string& number) {
  char printed[400];
  std::snprintf(printed, sizeof(printed), "%f", rastrel::os::DoubleFromText(number));
  return printed;
}

std::string DigitsOf(std::mt19937& random, std::size_t count) {
  std::string digits;
  while (digits.size() < count) digits += static_cast<char>('0' + random() % 10);
  return digits;
}

}  // namespace

TEST_F(AgainstLiteralSpreadsheets, random_workbooks) {
  int texts = 0;
  for (std::uint32_t seed = 0; seed < 4000; ++seed) {
    SpreadsheetFiles files(seed);
    ExcelFolder folder;
    folder.Directory().Write("xl/workbook.xml", files.Workbook());
    folder.Directory().Write("xl/_rels/workbook.xml.rels", files.Relationships());
    if (!files.OneIn(5)) folder.Directory().Write("xl/sharedStrings.xml", files.Strings());
    for (std::size_t sheet = 0; sheet < 3; ++sheet)
      if (!files.OneIn(16)) folder.WriteSheet(files.Sheet(), sheet);
    ASSERT_EQ(rastrel::test::DifferenceFromLiteral(folder), "") << "seed " << seed;
    texts += folder.Directory().Has("content.txt") ? 1 : 0;
  }
  EXPECT_GT(texts, 1000);  // or the files are too odd to show anything
}

TEST_F(AgainstLiteralSpreadsheets, random_open_office_documents) {
  int texts = 0;
  for (std::uint32_t seed = 0; seed < 4000; ++seed) {
    const rastrel::test::MemoryScratchDirectory directory;
    directory.Write("content.xml", SpreadsheetFiles(seed).OpenOffice());
    ASSERT_EQ(rastrel::test::DifferenceFromLiteralOpenOffice(directory), "") << "seed " << seed;
    texts += directory.Has("out.txt") ? 1 : 0;
  }
  EXPECT_GT(texts, 1000);
}

TEST_F(AgainstLiteralSpreadsheets, a_workbook_cut_at_every_byte_of_every_file) {
  SpreadsheetFiles files(7);
  for (const char* const name :
       {"xl/workbook.xml", "xl/_rels/workbook.xml.rels", "xl/sharedStrings.xml",
        "xl/worksheets/sheet1.xml", "xl/worksheets/sheet2.xml"}) {
    ExcelFolder folder(2);
    folder.WriteStrings("<si><t>a&amp;lt;</t></si><si><r><t>b</t></r></si><si><t>c</t></si>");
    folder.WriteRows("<row><c r='A1' t='s'><v>0</v></c><c r='C1'><v>1.5</v></c></row>", 1);
    folder.WriteRows("<row><c r='B1' t='s'><v>1</v></c></row><row/>", 2);
    const std::string whole = folder.Directory().Read(name);
    for (std::size_t size = 0; size <= whole.size(); ++size) {
      folder.Directory().Write(name, std::string_view(whole).substr(0, size));
      ASSERT_EQ(rastrel::test::DifferenceFromLiteral(folder), "") << name << " cut at " << size;
    }
  }
}

TEST_F(AgainstLiteralSpreadsheets, fractions_are_as_printf_writes_the_double) {
  std::mt19937 random(1);
  for (int round = 0; round < 200000; ++round) {
    std::string number = random() % 3 == 0 ? "-" : "";
    number += DigitsOf(random, random() % 11) + "." + DigitsOf(random, random() % 9);
    if (random() % 2 == 0) {
      const char* const tails[] = {"5",    "49999", "50000", "4998",
                                   "4999", "5000",  "5001",  "49984999"};
      number = number.substr(0, number.find('.') + 7) + tails[random() % 8];
    }
    ASSERT_EQ(PrintedNumber(number), ExpectedFraction(number)) << number;
  }
}

TEST_F(AgainstLiteralSpreadsheets,
       halves_of_the_last_decimal_are_rounded_to_even_if_they_are_exact) {
  // The sixth decimal's half is exact in binary where the fraction is a multiple of 2^-7.
  for (int whole = 0; whole < 300; ++whole)
    for (int part = 0; part < 128; ++part) {
      char number[64];
      std::snprintf(number, sizeof(number), "%.7f", whole + part / 128.0);
      ASSERT_EQ(PrintedNumber(number), ExpectedFraction(number)) << number;
    }
  EXPECT_EQ(PrintedNumber("0.0078125"), "0.007812");
  EXPECT_EQ(PrintedNumber("0.0234375"), "0.023438");
}

TEST_F(AgainstLiteralSpreadsheets, whole_numbers_are_as_printf_writes_64_bits) {
  std::mt19937 random(2);
  for (int round = 0; round < 100000; ++round) {
    const std::string number = (random() % 3 == 0 ? "-" : "") + DigitsOf(random, random() % 22);
    const std::string expected = std::to_string(rastrel::os::Int64FromText(number));
    ASSERT_EQ(PrintedNumber(number), expected) << number;
  }
}
