// Tables of OpenOffice spreadsheets as one text, and as records.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "rastrel/platform/os/system_calls.h"
#include "rastrel/readers/open_office_document.h"
#include "rastrel/readers/open_office_xml_import.h"
#include "tests/support/excel_folder.h"
#include "tests/support/library_fixture.h"
#include "tests/support/test_host.h"

using rastrel::readers::OpenOfficeDocument;
using rastrel::readers::SheetLimits;
using rastrel::test::ExcelFolder;

namespace {

using Text = std::optional<std::string>;
const Text NoText;

constexpr std::string_view Head =
    "<office:document-content xmlns:office='o' xmlns:table='t' xmlns:text='x'>";
constexpr std::string_view Tail = "</office:document-content>";

std::string Document(const std::string& tables) {
  return std::string(Head) + "<office:body><office:spreadsheet>" + tables +
         "</office:spreadsheet></office:body>" + std::string(Tail);
}
std::string Table(const std::string& rows) { return "<table:table>" + rows + "</table:table>"; }
std::string Row(const std::string& cells) {
  return "<table:table-row>" + cells + "</table:table-row>";
}
std::string Cell(const std::string& text, const std::string& repeat = {}) {
  const std::string attribute =
      repeat.empty() ? "" : " table:number-columns-repeated='" + repeat + "'";
  return "<table:table-cell" + attribute + "><text:p>" + text + "</text:p></table:table-cell>";
}
std::string EmptyCell(const std::string& repeat) {
  return "<table:table-cell table:number-columns-repeated='" + repeat + "'/>";
}

class OpenOfficeImport : public rastrel::test::LibraryTest {
 protected:
  Text ImportDocument(const std::string& document) {
    m_Directory.Write("content.xml", document);
    std::filesystem::remove(m_Directory.Path("out.txt"));
    COpenOfficeXMLImport import(m_Path.c_str());
    import.SetDataSaveFileName(m_Out.c_str());
    const int result = import.ImportXMLFile();
    if (result == 0) return NoText;
    EXPECT_EQ(result, 1);
    return ExcelFolder::PlainText(m_Directory.Read("out.txt"));
  }
  Text ImportRows(const std::string& rows) { return ImportDocument(Document(Table(rows))); }
  [[nodiscard]] bool IsLogged(std::string_view words) const {
    return m_Library.LogTexts().find(words) != std::string::npos;
  }

  rastrel::test::MemoryScratchDirectory m_Directory;
  std::wstring m_Path = m_Directory.Wide("content.xml");
  std::wstring m_Out = m_Directory.Wide("out.txt");
};

tagOPEN_OFFICE_DATA* AsTable(void* plate) { return static_cast<tagOPEN_OFFICE_DATA*>(plate); }

}  // namespace

TEST_F(OpenOfficeImport, a_table_becomes_lines_of_cells_with_a_tab_behind_each) {
  EXPECT_EQ(ImportRows(Row(Cell("a") + Cell("1.5")) + Row(Cell("c") + Cell("d"))),
            "a\t1.5\t\nc\td");
}

// A row is handed on whole up to 65,536 bytes.
TEST_F(OpenOfficeImport, tens_of_thousands_of_empty_cells_are_as_many_tabs) {
  for (const std::size_t count : {65535U, 65536U, 65537U, 100000U}) {
    const Text text =
        ImportRows(Row(Cell("a") + EmptyCell(std::to_string(count)) + Cell("b")) + Row(Cell("c")));
    EXPECT_TRUE(text == "a\t" + std::string(count, '\t') + "b\t\nc") << count;
  }
}

TEST_F(OpenOfficeImport, the_text_has_a_mark_and_ends_lines_by_cr_lf) {
  ImportRows(Row(Cell("\xC3\xA4")) + Row(Cell("b")));
  EXPECT_EQ(m_Directory.Read("out.txt"), "\xEF\xBB\xBF\xC3\xA4\t\r\nb");
}

TEST_F(OpenOfficeImport, two_tables_give_their_rows_one_after_the_other) {
  EXPECT_EQ(
      ImportDocument(Document(Table(Row(Cell("a")) + Row(Cell("b"))) + Table(Row(Cell("c"))))),
      "a\t\nb\t\nc");
}

TEST_F(OpenOfficeImport, an_empty_cell_repeated_1000_times_gives_1000_tabs) {
  EXPECT_EQ(ImportRows(Row(Cell("a") + EmptyCell("1000") + Cell("b")) + Row(EmptyCell("1000")) +
                       Row(Cell("c"))),
            "a\t" + std::string(1000, '\t') + "b\t\n" + std::string(1000, '\t') + "\nc");
}

TEST_F(OpenOfficeImport, a_repeated_cell_has_its_text_each_time) {
  EXPECT_EQ(ImportRows(Row(Cell("a", "3") + Cell("b"))), "a\ta\ta\tb");
}

TEST_F(OpenOfficeImport, a_repeat_of_0_or_less_or_of_no_number_gives_no_cell) {
  for (const char* const repeat : {"0", "-1", "-99999999999", "many", " "})
    EXPECT_EQ(ImportRows(Row(Cell("a") + Cell("x", repeat) + Cell("b"))), "a\tb") << repeat;
}

TEST_F(OpenOfficeImport, a_repeat_is_read_under_its_full_name_and_an_empty_one_is_none) {
  EXPECT_EQ(
      ImportRows(Row(Cell("a") + "<table:table-cell table:number-columns-repeated=''/>" +
                     "<table:table-cell number-columns-repeated='5'/>" +
                     "<t:table-cell xmlns:t='t' t:number-columns-repeated='5'/>" + Cell("b"))),
      "a\t\t\t\tb");
  EXPECT_EQ(ImportRows(Row(Cell("a", "2.9") + Cell("b", " 2x"))), "a\ta\tb\tb");
}

TEST_F(OpenOfficeImport, a_repeated_row_comes_once) {
  EXPECT_EQ(ImportRows("<table:table-row table:number-rows-repeated='5'>" + Cell("a") +
                       "</table:table-row>" + Row(Cell("b"))),
            "a\t\nb");
}

TEST_F(OpenOfficeImport, of_two_paragraphs_the_last_counts_unless_it_is_empty) {
  const std::string begin = "<table:table-cell>";
  const std::string end = "</table:table-cell>";
  EXPECT_EQ(ImportRows(Row(begin + "<text:p>one</text:p><text:p>two</text:p>" + end)), "two");
  EXPECT_EQ(ImportRows(Row(begin + "<text:p>one</text:p><text:p/>" + end)), "one");
  EXPECT_EQ(
      ImportRows(Row(begin + "<text:p>one</text:p><text:p> </text:p><text:h>no</text:h>" + end)),
      "one");
}

TEST_F(OpenOfficeImport, texts_made_of_several_pieces_do_not_mix_with_the_paragraph_before) {
  const std::string pieces = "<text:p>o<text:span>n</text:span>e</text:p>";
  EXPECT_EQ(
      ImportRows(Row("<table:table-cell>" + pieces + "<text:p>t<text:span>w</text:span>o</text:p>" +
                     "<text:p><text:span/> <text:s/></text:p></table:table-cell>")),
      "two");
}

TEST_F(OpenOfficeImport, blanks_tabs_and_breaks_that_are_elements_are_no_text) {
  EXPECT_EQ(ImportRows(Row("<table:table-cell><text:p>a <text:s text:c=\"3\"/>b<text:tab/>c"
                           "<text:line-break/>d</text:p></table:table-cell>")),
            "a bcd");
}

TEST_F(OpenOfficeImport, blanks_alone_between_two_spans_are_no_text) {
  EXPECT_EQ(
      ImportRows(Row("<table:table-cell><text:p>is<text:span> </text:span><text:span>bold"
                     "</text:span> <text:span>, sure</text:span></text:p></table:table-cell>")),
      "isbold, sure");
}

TEST_F(OpenOfficeImport, a_line_feed_within_a_paragraph_stays) {
  EXPECT_EQ(ImportRows(Row(Cell("one\ntwo") + Cell("b"))), "one\ntwo\tb");
}

TEST_F(OpenOfficeImport, only_direct_children_are_rows_cells_and_paragraphs) {
  EXPECT_EQ(
      ImportRows("<table:table-header-rows>" + Row(Cell("no")) + "</table:table-header-rows>" +
                 Row("<table:covered-table-cell><text:p>no</text:p></table:covered-table-cell>" +
                     Cell("a") + "<table:table-cell><x:note xmlns:x='n'><text:p>no</text:p>" +
                     "</x:note></table:table-cell>" + Cell("b"))),
      "a\t\tb");
}

TEST_F(OpenOfficeImport, the_first_body_counts_and_every_spreadsheet_in_it) {
  const std::string table = "<t:table><t:table-row><t:table-cell><p>";
  const std::string end = "</p></t:table-cell></t:table-row></t:table>";
  const std::string document = "<document-content xmlns:t='t'><x/><body><spreadsheet>" + table +
                               "a" + end + "</spreadsheet><x>" + table + "no" + end +
                               "</x><spreadsheet>" + table + "b" + end +
                               "</spreadsheet></body><body><spreadsheet>" + table + "no" + end +
                               "</spreadsheet></body></document-content>";
  EXPECT_EQ(ImportDocument(document), "a\t\nb");
}

TEST_F(OpenOfficeImport, another_root_no_table_or_a_broken_document_fails) {
  EXPECT_EQ(ImportDocument("<document>" + Table("") + "</document>"), NoText);
  EXPECT_EQ(ImportDocument(Document("")), NoText);
  EXPECT_TRUE(IsLogged("there is no table"));
  const std::string whole = Document(Table(Row(Cell("a"))));
  for (std::size_t size = 0; size < whole.size(); ++size)
    ASSERT_EQ(ImportDocument(whole.substr(0, size)), NoText) << "cut at " << size;
  EXPECT_EQ(ImportDocument(whole), "a");
}

TEST_F(OpenOfficeImport, the_extension_is_xml_in_any_case) {
  for (const char* const name : {"a.XML", "a.xMl", "a.b.xml", "a.xml ", "a. xml", "a.xml\t"}) {
    m_Directory.Write(name, Document(Table("")));
    COpenOfficeXMLImport import(m_Directory.Wide(name).c_str());
    EXPECT_NE(import.GetFirstPlate(), nullptr) << name;
  }
  for (const char* const name : {"a.ods", "xml", "a.xmlx", "a."}) {
    m_Directory.Write(name, Document(Table("")));
    COpenOfficeXMLImport import(m_Directory.Wide(name).c_str());
    EXPECT_EQ(import.GetFirstPlate(), nullptr) << name;
  }
}

TEST_F(OpenOfficeImport, a_null_or_empty_path_or_a_missing_file_fails) {
  const std::wstring missing = m_Directory.Wide("missing.xml");
  for (const wchar_t* const path : {static_cast<const wchar_t*>(nullptr), L"", missing.c_str()}) {
    COpenOfficeXMLImport import(path);
    import.SetDataSaveFileName(m_Out.c_str());
    EXPECT_EQ(import.GetFirstPlate(), nullptr);
    EXPECT_EQ(import.ImportXMLFile(), 0);
  }
}

TEST_F(OpenOfficeImport, without_a_name_to_save_under_nothing_is_written) {
  m_Directory.Write("content.xml", Document(Table(Row(Cell("a")))));
  COpenOfficeXMLImport import(m_Path.c_str());
  EXPECT_EQ(import.ImportXMLFile(), 0);
  import.SetDataSaveFileName(nullptr);
  EXPECT_EQ(import.ImportXMLFile(), 0);
  import.SetDataSaveFileName(m_Out.c_str());
  EXPECT_EQ(import.ImportXMLFile(), 1);
  EXPECT_EQ(import.ImportXMLFile(), 1);
}

TEST_F(OpenOfficeImport, white_space_at_both_ends_is_taken_off_tabs_included) {
  EXPECT_EQ(ImportRows(Row(EmptyCell("3") + Cell("a") + EmptyCell("9")) + Row("")), "a");
  EXPECT_EQ(ImportRows(Row(EmptyCell("3"))), NoText);
}

TEST_F(OpenOfficeImport, blanks_and_stops_that_end_a_row_are_kept_by_its_tab) {
  EXPECT_EQ(ImportRows(Row(Cell("Mill Inc.")) + Row("") + Row(Cell(". .")) + Row(Cell("."))),
            "Mill Inc.\t\n\n. .\t\n.");
}

TEST_F(OpenOfficeImport, the_wait_cursor_shows_if_there_is_something_to_write) {
  rastrel::test::TestHost host;
  m_Directory.Write("content.xml", Document(Table(Row(Cell("a")))));
  COpenOfficeXMLImport import(m_Path.c_str());
  EXPECT_EQ(host.m_WaitCursors, 0);
  EXPECT_EQ(import.ImportXMLFile(), 0);
  EXPECT_EQ(host.m_WaitCursors, 1);
  COpenOfficeXMLImport none(m_Directory.Wide("none.xml").c_str());
  EXPECT_EQ(none.ImportXMLFile(), 0);
  EXPECT_EQ(host.m_WaitCursors, 1);
}

TEST_F(OpenOfficeImport, entities_are_replaced_one_kind_after_the_other) {
  EXPECT_EQ(
      ImportRows(Row(Cell("&amp;quot;&amp;amp;&amp;lt;&amp;gt;&amp;apos;") + Cell("&amp;amp;lt;") +
                     Cell("&amp;amp;quot;") + Cell("&amp;am") + Cell("p;"))),
      "\"&<>'\t<\t&quot;\t&am\tp;");
}

TEST_F(OpenOfficeImport, a_text_of_the_hosts_own_is_saved_by_the_same_rules) {
  COpenOfficeXMLImport import(nullptr);
  EXPECT_EQ(import.SaveDataToFile(L"text"), 0);
  import.SetDataSaveFileName(m_Out.c_str());
  EXPECT_EQ(import.SaveDataToFile(L""), 0);
  EXPECT_EQ(import.SaveDataToFile(L" \t\r\n\v\f"), 0);
  EXPECT_EQ(import.SaveDataToFile(L"\n \ta.\n&amp;lt; \n"), 1);
  EXPECT_EQ(m_Directory.Read("out.txt"),
            "\xEF\xBB\xBF"
            "a.\r\n<");
}

TEST_F(OpenOfficeImport, tables_are_walked_as_records_of_rows_and_cells) {
  m_Directory.Write("content.xml",
                    Document(Table(Row(Cell("a", "2") + EmptyCell("1")) + Row("")) + Table("")));
  COpenOfficeXMLImport import(m_Path.c_str());
  const tagOPEN_OFFICE_DATA* const table = AsTable(import.GetFirstPlate());
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->m_FirstNumber + table->m_SecondNumber + table->m_Reserved[0], 0);
  EXPECT_EQ(std::wstring(table->m_FirstText) + table->m_SecondText, L"");
  ASSERT_EQ(table->m_Rows.size(), 2U);
  EXPECT_EQ(table->m_Rows[0].m_Reserved, 0);
  ASSERT_EQ(table->m_Rows[0].m_Cells.size(), 3U);
  const std::vector<tagTABLE_TABLE_CELL>& cells = table->m_Rows[0].m_Cells;
  EXPECT_STREQ(cells[0].m_Text.get(), L"a");
  EXPECT_STREQ(cells[1].m_Text.get(), L"a");
  EXPECT_NE(cells[0].m_Text.get(), cells[1].m_Text.get());
  EXPECT_EQ(cells[2].m_Text, nullptr);
  EXPECT_EQ(cells[2].m_Reserved[0] + cells[2].m_Reserved[1] + cells[2].m_Reserved[2], 0);
  EXPECT_TRUE(table->m_Rows[1].m_Cells.empty());

  const tagOPEN_OFFICE_DATA* const second = AsTable(import.GetNextPlate());
  ASSERT_NE(second, nullptr);
  EXPECT_TRUE(second->m_Rows.empty());
  EXPECT_EQ(import.GetNextPlate(), nullptr);
  EXPECT_EQ(import.GetNextPlate(), nullptr);
  EXPECT_EQ(import.GetFirstPlate(), table);
}

TEST_F(OpenOfficeImport, the_text_is_the_same_after_the_records_were_walked) {
  const std::string document =
      Document(Table(Row(Cell("a", "2") + EmptyCell("2") + Cell("&amp;lt;")) + Row("")) +
               Table(Row(Cell("\xF0\x9F\x98\x80"))));
  const Text before = ImportDocument(document);
  COpenOfficeXMLImport import(m_Path.c_str());
  import.SetDataSaveFileName(m_Out.c_str());
  ASSERT_NE(import.GetFirstPlate(), nullptr);
  EXPECT_EQ(import.ImportXMLFile(), 1);
  EXPECT_EQ(ExcelFolder::PlainText(m_Directory.Read("out.txt")), before);
}

TEST_F(OpenOfficeImport, a_hosts_change_of_a_record_shows_in_the_text) {
  m_Directory.Write("content.xml", Document(Table(Row(Cell("a") + Cell("b")) + Row(Cell("c")))));
  COpenOfficeXMLImport import(m_Path.c_str());
  AsTable(import.GetFirstPlate())->m_Rows[0].m_Cells[1].m_Text = nullptr;
  import.SetDataSaveFileName(m_Out.c_str());
  EXPECT_EQ(import.ImportXMLFile(), 1);
  EXPECT_EQ(ExcelFolder::PlainText(m_Directory.Read("out.txt")), "a\t\t\nc");
}

TEST_F(OpenOfficeImport, cleared_tables_are_gone) {
  m_Directory.Write("content.xml", Document(Table(Row(Cell("a")))));
  for (const bool walks : {false, true}) {
    COpenOfficeXMLImport import(m_Path.c_str());
    if (walks) {
      EXPECT_NE(import.GetFirstPlate(), nullptr);
    }
    import.ClearPlates();
    import.SetDataSaveFileName(m_Out.c_str());
    EXPECT_EQ(import.GetFirstPlate(), nullptr);
    EXPECT_EQ(import.GetNextPlate(), nullptr);
    EXPECT_EQ(import.ImportXMLFile(), 0);
  }
}

TEST_F(OpenOfficeImport, a_billion_cells_end_at_a_limit_that_the_log_names) {
  EXPECT_EQ(ImportRows(Row(Cell("a") + EmptyCell("1000000000"))), NoText);
  EXPECT_TRUE(IsLogged("more than 67108864 cells"));
  EXPECT_EQ(ImportRows(Row(EmptyCell("99999999999999999999"))), NoText);
}

TEST_F(OpenOfficeImport, a_text_repeated_beyond_all_measure_ends_at_a_limit) {
  EXPECT_EQ(ImportRows(Row(Cell(std::string(10000, 'x'), "1000000"))), NoText);
  EXPECT_TRUE(IsLogged("the tables become more than 134217728 bytes of text"));
}

TEST_F(OpenOfficeImport, as_many_cells_as_may_be_are_read_and_one_more_fails) {
  for (const int cells : {6, 7, 8}) {
    m_Directory.Write("content.xml",
                      Document(Table(Row(Cell("a", std::to_string(cells - 1)) + Cell("b")))));
    SheetLimits limits;
    limits.cells = 7;
    EXPECT_EQ(OpenOfficeDocument(limits).ParseFile(m_Path), cells <= 7) << cells;
  }
}

TEST_F(OpenOfficeImport, a_text_of_exactly_the_limit_is_read_and_a_byte_more_fails) {
  m_Directory.Write("content.xml", Document(Table(Row(Cell("abc", "3")) + Row(Cell("d")))));
  for (const std::size_t limit : {15U, 16U, 17U}) {  // 3 * "abc\t", "\n", "d\t", "\n"
    SheetLimits limits;
    limits.resultText = limit;
    OpenOfficeDocument document(limits);
    EXPECT_EQ(document.ParseFile(m_Path), limit >= 16) << limit;
    EXPECT_EQ(document.SaveText(m_Out), limit >= 16) << limit;
  }
}

TEST_F(OpenOfficeImport, cells_of_as_many_bytes_as_may_be_kept_are_read_and_a_byte_more_fails) {
  for (const std::size_t size : {83U, 84U, 85U}) {
    m_Directory.Write("content.xml", Document(Table(Row(Cell(std::string(size, 'x'))))));
    SheetLimits limits;
    limits.cellText = 100;  // a byte for the row, and 15 are kept free
    EXPECT_EQ(OpenOfficeDocument(limits).ParseFile(m_Path), size <= 84) << size;
  }
}

TEST_F(OpenOfficeImport, records_beyond_their_limit_are_not_made_and_the_text_still_is) {
  m_Directory.Write("content.xml", Document(Table(Row(Cell("a") + EmptyCell("2") + Cell("b")))));
  SheetLimits limits;
  limits.records = sizeof(tagOPEN_OFFICE_DATA) + 4 * sizeof(tagTABLE_TABLE_CELL);
  OpenOfficeDocument document(limits);
  ASSERT_TRUE(document.ParseFile(m_Path));
  EXPECT_EQ(document.Record(0), nullptr);
  EXPECT_TRUE(IsLogged("the records of the tables take more than"));
  EXPECT_TRUE(document.SaveText(m_Out));
  EXPECT_EQ(ExcelFolder::PlainText(m_Directory.Read("out.txt")), "a\t\t\tb");
}

TEST_F(OpenOfficeImport, a_file_that_cannot_be_made_fails) {
  m_Directory.Write("content.xml", Document(Table(Row(Cell("a")))));
  COpenOfficeXMLImport import(m_Path.c_str());
  import.SetDataSaveFileName(m_Directory.Wide("no folder/out.txt").c_str());
  EXPECT_EQ(import.ImportXMLFile(), 0);
  EXPECT_EQ(import.SaveDataToFile(L"text"), 0);
  EXPECT_TRUE(IsLogged("out.txt: open"));
}

namespace {

ssize_t NoSpaceForTheText(int descriptor, const void* bytes, size_t count) {
  if (count < 3 || std::memcmp(bytes, "\xEF\xBB\xBF", 3) != 0)
    return ::write(descriptor, bytes, count);
  errno = ENOSPC;
  return -1;
}

}  // namespace

TEST_F(OpenOfficeImport, a_full_disk_fails_and_the_log_says_so) {
  m_Directory.Write("content.xml", Document(Table(Row(Cell("a")))));
  COpenOfficeXMLImport import(m_Path.c_str());
  import.SetDataSaveFileName(m_Out.c_str());
  const rastrel::os::SystemCallsGuard guard;
  rastrel::os::Calls().write = NoSpaceForTheText;
  EXPECT_EQ(import.ImportXMLFile(), 0);
  EXPECT_EQ(import.SaveDataToFile(L"text"), 0);
  EXPECT_TRUE(IsLogged("out.txt: write: No space left on device"));
}
