// Rows, cells and shared strings of a sheet as text.

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "rastrel/readers/excel_package.h"
#include "rastrel/readers/shared_strings.h"
#include "tests/support/comma_locale.h"
#include "tests/support/excel_folder.h"
#include "tests/support/library_fixture.h"

using rastrel::readers::SharedStrings;
using rastrel::readers::SheetLimits;
using rastrel::test::ExcelFolder;

namespace {

class ExcelCells : public rastrel::test::LibraryTest {
 protected:
  // The text of one row.
  std::string Row(const std::string& cells) {
    return m_Folder.ImportRows("<row>" + cells + "</row>").value_or("(failed)");
  }
  // The text of a value in column A.
  std::string Value(const std::string& value, const std::string& type = {}) {
    const std::string text =
        m_Folder
            .ImportRows("<row><c r='A1'><v>1</v></c></row><row><c r='A2'" + type + "><v>" + value +
                        "</v></c><c r='B2'><v>1</v></c></row>")
            .value_or("(failed)");
    return text.substr(3, text.size() - 5);
  }
  ExcelFolder m_Folder;
};

}  // namespace

TEST_F(ExcelCells, cells_in_a_and_d_have_three_tabs_between_them) {
  EXPECT_EQ(Row("<c r='A1'><v>1</v></c><c r='D1'><v>4</v></c><c r='E1'><v>5</v></c>"),
            "1\t\t\t4\t5");
}

TEST_F(ExcelCells, the_letter_may_stand_anywhere_in_the_reference) {
  EXPECT_EQ(Row("<c r='AA3'><v>1</v></c><c r='ZB1'><v>2</v></c><c r='9C'><v>3</v></c>"), "1\t2\t3");
}

TEST_F(ExcelCells, a_reference_behind_the_letter_passes_over_all_letters) {
  // B1 in the first place: A is missing. A1 after it is looked for from C on, to Z.
  EXPECT_EQ(Row("<c r='B1'><v>1</v></c><c r='A1'><v>2</v></c><c r='C1'><v>3</v></c>"),
            "1\t" + std::string(24, '\t') + "2\t3");
}

TEST_F(ExcelCells, a_reference_in_small_letters_or_none_at_all_is_looked_for_up_to_z) {
  for (const char* const reference : {"r='b1'", "", "r=''", "x='A1'"})
    EXPECT_EQ(Row("<c r='A1'><v>1</v></c><c " + std::string(reference) + "><v>2</v></c>"),
              "1\t" + std::string(25, '\t') + "2")
        << reference;
}

TEST_F(ExcelCells, an_attribute_with_a_prefix_is_no_reference) {
  EXPECT_EQ(Row("<c r='A1'><v>1</v></c><c xmlns:x='u' x:r='B1'><v>2</v></c>"),
            "1\t" + std::string(25, '\t') + "2");
}

TEST_F(ExcelCells, behind_z_values_follow_without_a_search) {
  std::string cells;
  std::string expected;
  for (int column = 0; column < 28; ++column) {
    const std::string name = column < 26
                                 ? std::string(1, static_cast<char>('A' + column))
                                 : "A" + std::string(1, static_cast<char>('A' + column - 26));
    cells += "<c r='" + name + "1'><v>" + std::to_string(column) + "</v></c>";
    expected += (column > 0 ? "\t" : "") + std::to_string(column);
  }
  EXPECT_EQ(Row(cells), expected);
}

TEST_F(ExcelCells, other_children_of_a_row_count_in_a_cells_place) {
  for (const char* const other : {"<x/>", "<!-- -->", "<?x?>", "text", "<![CDATA[ ]]>"})
    EXPECT_EQ(Row("<c r='A1'><v>1</v></c>" + std::string(other) +
                  "<c r='B1'><v>2</v></c><c r='C1'><v>3</v></c>"),
              "1\t" + std::string(24, '\t') + "2\t3")
        << other;
  EXPECT_EQ(Row("<c r='A1'><v>1</v></c> \n <c r='B1'><v>2</v></c>"), "1\t2");
}

TEST_F(ExcelCells, a_cell_without_a_value_or_with_an_empty_one_is_a_tab) {
  for (const char* const cell : {"<c r='B1'/>", "<c r='B1'><v/></c>", "<c r='B1'><v> </v></c>",
                                 "<c r='B1'><f>1</f></c>", "<c r='B1'><x><v>1</v></x></c>"})
    EXPECT_EQ(Row("<c r='A1'><v>1</v></c>" + std::string(cell) + "<c r='C1'><v>3</v></c>"),
              "1\t\t3")
        << cell;
}

TEST_F(ExcelCells, the_first_value_counts_even_if_it_is_empty) {
  EXPECT_EQ(Row("<c r='A1'><f>x</f><v>1</v><v>2</v></c><c r='B1'><v/><v>2</v></c>"
                "<c r='C1'><v>3</v></c>"),
            "1\t\t3");
}

TEST_F(ExcelCells, a_whole_number_stays_and_one_with_a_point_has_six_decimals) {
  EXPECT_EQ(Value("3"), "3");
  EXPECT_EQ(Value("1.5"), "1.500000");
  EXPECT_EQ(Value("-1.5"), "-1.500000");
  EXPECT_EQ(Value(" 42 "), "42");
  EXPECT_EQ(Value("007"), "7");
  EXPECT_EQ(Value("-0"), "0");
  EXPECT_EQ(Value("+5"), "5");
  EXPECT_EQ(Value("0.1234567890123"), "0.123457");
  EXPECT_EQ(Value("1234567890123.25"), "1234567890123.250000");
}

TEST_F(ExcelCells, numbers_never_follow_the_locale) {
  const rastrel::test::CommaLocale locale;
  EXPECT_EQ(Value("1.5"), "1.500000");
  EXPECT_EQ(Value("1.5e3"), "1500.000000");
}

TEST_F(ExcelCells, a_whole_number_out_of_range_becomes_the_largest_or_smallest) {
  EXPECT_EQ(Value("9223372036854775807"), "9223372036854775807");
  EXPECT_EQ(Value("9223372036854775808"), "9223372036854775807");
  EXPECT_EQ(Value("-9223372036854775808"), "-9223372036854775808");
  EXPECT_EQ(Value("-99999999999999999999"), "-9223372036854775808");
}

TEST_F(ExcelCells, a_text_that_is_no_number_becomes_zero) {
  EXPECT_EQ(Value("hello", " t='str'"), "0");
  EXPECT_EQ(Value("#N/A", " t='e'"), "0");
  EXPECT_EQ(Value("TRUE", " t='b'"), "0");
  EXPECT_EQ(Value("e.g.", " t='str'"), "0.000000");
  EXPECT_EQ(Value("-.", " t='str'"), "0.000000");
}

TEST_F(ExcelCells, a_number_is_the_longest_part_in_front_that_is_one) {
  EXPECT_EQ(Value("1E5"), "1");
  EXPECT_EQ(Value("1.5E3"), "1500.000000");
  EXPECT_EQ(Value("12 months"), "12");
  EXPECT_EQ(Value("1.2.3"), "1.200000");
}

TEST_F(ExcelCells, a_number_beyond_a_doubles_range_is_inf) {
  EXPECT_EQ(Value("1.0E999"), "inf");
  EXPECT_EQ(Value("-1.0E999"), "-inf");
  EXPECT_EQ(Value("1.0E-999"), "0.000000");
  EXPECT_EQ(Value("1.0E22"), "10000000000000000000000.000000");
}

TEST_F(ExcelCells, a_string_is_looked_up_only_if_the_type_is_a_small_s) {
  m_Folder.WriteStrings("<si><t>zero</t></si><si><t>one</t></si>");
  EXPECT_EQ(Value("1", " t='s'"), "one");
  EXPECT_EQ(Value("1", " t='S'"), "1");
  EXPECT_EQ(Value("1", " t='n'"), "1");
  EXPECT_EQ(Value("1", " xmlns:x='u' x:t='s'"), "1");
}

TEST_F(ExcelCells, an_index_is_a_whole_number_by_the_same_rules) {
  m_Folder.WriteStrings("<si><t>zero</t></si><si><t>one</t></si>");
  EXPECT_EQ(Value("1.9", " t='s'"), "one");
  EXPECT_EQ(Value("what", " t='s'"), "zero");
  for (const char* const unknown : {"2", "-1", "4294967296", "99999999999"})
    EXPECT_EQ(Value(unknown, " t='s'"), "") << unknown;
}

TEST_F(ExcelCells, a_package_without_shared_strings_works_if_no_cell_needs_one) {
  EXPECT_EQ(Value("3"), "3");
  EXPECT_EQ(Value("0", " t='s'"), "");
}

TEST_F(ExcelCells, the_index_counts_texts_that_are_not_empty) {
  m_Folder.WriteStrings(
      "<si><t>zero</t></si><si><r><t>rich</t></r></si><si><t/></si><si><t> </t></si>"
      "<si><t><![CDATA[ ]]></t></si><x><t>other</t></x><si><t>one</t><t>two</t></si>");
  EXPECT_EQ(Value("0", " t='s'"), "zero");
  EXPECT_EQ(Value("1", " t='s'"), "one");
  EXPECT_EQ(Value("2", " t='s'"), "two");
  EXPECT_EQ(Value("3", " t='s'"), "");
}

TEST_F(ExcelCells, a_text_on_two_lines_has_a_byte_8_at_the_break) {
  m_Folder.WriteStrings("<si><t>one\r\ntwo\nthree</t></si>");
  EXPECT_EQ(Value("0", " t='s'"), "one\x08two\x08three");
}

TEST_F(ExcelCells, a_tab_in_a_text_stays) {
  m_Folder.WriteStrings("<si><t>one\ttwo</t></si>");
  EXPECT_EQ(Value("0", " t='s'"), "one\ttwo");
}

TEST_F(ExcelCells, entities_in_a_text_are_replaced_one_kind_after_the_other) {
  const auto replaced = [this](const std::string& text) {
    m_Folder.WriteStrings("<si><t><![CDATA[" + text + "]]></t></si>");
    return Value("0", " t='s'");
  };
  EXPECT_EQ(replaced("&quot;&amp;&lt;&gt;&apos;"), "\"&<>'");
  EXPECT_EQ(replaced("&amp;lt;"), "<");
  EXPECT_EQ(replaced("&amp;apos;"), "'");
  EXPECT_EQ(replaced("&amp;quot;"), "&quot;");
  EXPECT_EQ(replaced("&amp;amp;"), "&amp;");
  EXPECT_EQ(replaced("&QUOT; & &lt"), "&QUOT; & &lt");
  EXPECT_EQ(replaced("&&amp;lt;"), "&<");
}

TEST_F(ExcelCells, shared_strings_that_are_no_document_or_have_another_root_count_as_read) {
  for (const char* const file : {"", "<sst><si><t>a</t></si>", "<other><si><t>a</t></si></other>",
                                 "<!DOCTYPE sst><sst><si><t>a</t></si></sst>"}) {
    m_Folder.Directory().Write("xl/sharedStrings.xml", file);
    EXPECT_EQ(Value("0", " t='s'"), "") << file;
  }
}

TEST_F(ExcelCells, a_second_table_begins_at_index_0_again) {
  m_Folder.WriteStrings("<si><t>a</t></si><si><t>b</t></si><si><t>c</t></si>");
  m_Folder.Directory().Write("xl/more.xml", "<sst><si><t>X</t></si><si><t>Y</t></si></sst>");
  m_Folder.Directory().Write("xl/broken.xml", "<sst><si><t>1</t></si><si><t>2</t></si>");
  m_Folder.WriteRows(
      "<row><c r='A1' t='s'><v>0</v></c><c r='B1' t='s'><v>1</v></c>"
      "<c r='C1' t='s'><v>2</v></c></row>");
  m_Folder.Files();
  m_Folder.Add(3, "xl/more.xml");
  m_Folder.Add(3, "xl/broken.xml");
  EXPECT_EQ(m_Folder.Import(m_Folder.List()), "X\tY\tc");
}

TEST_F(ExcelCells, inline_strings_have_no_value_and_are_empty) {
  EXPECT_EQ(Row("<c r='A1'><v>1</v></c><c r='B1' t='inlineStr'><is><t>text</t></is></c>"
                "<c r='C1'><v>3</v></c>"),
            "1\t\t3");
}

TEST_F(ExcelCells, as_many_shared_strings_as_may_be_are_read_and_one_more_fails) {
  for (const std::size_t count : {6U, 7U, 8U}) {
    std::string elements;
    for (std::size_t index = 0; index < count; ++index) elements += "<si><t>a</t></si>";
    m_Folder.WriteStrings(elements);
    SheetLimits limits;
    limits.sharedStrings = 7;
    SharedStrings strings(limits);
    EXPECT_EQ(strings.Read(m_Folder.Directory().Wide("xl/sharedStrings.xml")), count <= 7) << count;
    EXPECT_EQ(strings.Count(), count <= 7 ? count : 0U);
  }
  EXPECT_NE(m_Library.LogTexts().find("more than 7 shared strings"), std::string::npos);
}

TEST_F(ExcelCells, shared_strings_of_as_many_bytes_as_may_be_are_read_and_a_byte_more_fails) {
  for (const std::size_t size : {15U, 16U, 17U}) {
    m_Folder.WriteStrings("<si><t>abcdefgh</t></si><si><t>" + std::string(size, 'x') + "</t></si>");
    SheetLimits limits;
    limits.sharedText = 32;  // the length of each is kept in four bytes
    SharedStrings strings(limits);
    EXPECT_EQ(strings.Read(m_Folder.Directory().Wide("xl/sharedStrings.xml")), size <= 16) << size;
  }
}

TEST_F(ExcelCells, shared_strings_beyond_a_limit_fail_the_import) {
  m_Folder.WriteStrings("<si><t>a</t></si><si><t>b</t></si>");
  m_Folder.WriteRows("<row><c r='A1'><v>1</v></c></row>");
  SheetLimits limits;
  limits.sharedStrings = 1;
  rastrel::readers::ExcelPackage package(m_Folder.Path(), limits);
  EXPECT_FALSE(package.ParseXmlFiles(m_Folder.Files()));
}
