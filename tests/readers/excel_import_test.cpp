// Workbooks as one text: files, sheets, paths and the text's file.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "rastrel/platform/os/system_calls.h"
#include "rastrel/readers/excel_package.h"
#include "rastrel/readers/ms_excel_xml_import.h"
#include "tests/support/excel_folder.h"
#include "tests/support/library_fixture.h"

using rastrel::readers::SheetLimits;
using rastrel::test::ExcelFolder;

namespace {

namespace fs = std::filesystem;

using Text = std::optional<std::string>;
const Text NoText;

// In a data root of its own, where the log is.
class ExcelImport : public rastrel::test::LibraryTest {
 protected:
  [[nodiscard]] bool IsLogged(std::string_view words) const {
    return m_Library.LogTexts().find(words) != std::string::npos;
  }
  ExcelFolder m_Folder;
};

std::string Numbers(int count) {
  std::string rows;
  for (int number = 0; number < count; ++number)
    rows += "<row><c r='A1'><v>" + std::to_string(number) + "</v></c></row>";
  return rows;
}

}  // namespace

TEST_F(ExcelImport, a_workbook_becomes_lines_of_cells_with_a_tab_behind_each) {
  m_Folder.WriteStrings("<si><t>width</t></si><si><t>height</t></si>");
  EXPECT_EQ(m_Folder.ImportRows("<row r='1' spans='1:2'><c r='A1' t='s'><v>0</v></c>"
                                "<c r='B1' t='s'><v>1</v></c></row>"
                                "<row r='2'><c r='A2'><v>12</v></c><c r='B2'><v>7.5</v></c></row>"),
            "width\theight\t\n12\t7.500000");
}

TEST_F(ExcelImport, the_text_has_a_mark_and_ends_lines_by_cr_lf) {
  m_Folder.WriteStrings("<si><t>\xC3\xA4</t></si>");
  m_Folder.ImportRows("<row><c r='A1' t='s'><v>0</v></c></row><row><c r='A2'><v>1</v></c></row>");
  EXPECT_EQ(m_Folder.Directory().Read("content.txt"), "\xEF\xBB\xBF\xC3\xA4\t\r\n1");
}

TEST_F(ExcelImport, a_text_that_is_there_already_is_replaced) {
  m_Folder.Directory().Write("content.txt", std::string(5000, 'x'));
  m_Folder.WriteRows("<row><c r='A1'><v>1</v></c></row>");
  CMSExcelXMLImport import(m_Folder.Path().c_str());
  ASSERT_TRUE(import.ParseXmlFiles(m_Folder.Files()));
  EXPECT_EQ(m_Folder.Directory().Read("content.txt"),
            "\xEF\xBB\xBF"
            "1");
}

TEST_F(ExcelImport, the_second_sheet_begins_on_the_last_line_of_the_first) {
  m_Folder.WriteWorkbook(2);
  m_Folder.WriteRows(Numbers(2), 1);
  m_Folder.WriteRows("<row><c r='A1'><v>7</v></c></row><row><c r='A2'><v>8</v></c></row>", 2);
  EXPECT_EQ(m_Folder.Import(), "0\t\n1\t7\t\n8");
}

TEST_F(ExcelImport, empty_rows_at_the_end_of_a_sheet_leave_nothing_before_the_next_sheet) {
  m_Folder.WriteWorkbook(2);
  m_Folder.WriteRows("<row><c r='A1'><v>1</v></c></row><row/><row/>", 1);
  m_Folder.WriteRows("<row/><row><c r='A2'><v>2</v></c></row>", 2);
  EXPECT_EQ(m_Folder.Import(), "1\t\n2");
}

TEST_F(ExcelImport, sheets_come_in_the_workbooks_order_whatever_their_ids) {
  m_Folder.Directory().Write(
      "xl/workbook.xml",
      "<workbook xmlns:r='r'><sheets><sheet name='b' sheetId='9' r:id='rId2'/>"
      "<sheet name='a' sheetId='1' r:id='rId1'/></sheets></workbook>");
  m_Folder.Directory().Write(
      "xl/_rels/workbook.xml.rels",
      "<Relationships><Relationship Id='rId1' Target='worksheets/sheet1.xml'/>"
      "<Relationship Id='rId2' Target='worksheets/sheet2.xml'/></Relationships>");
  m_Folder.WriteRows("<row><c r='A1'><v>1</v></c></row>", 1);
  m_Folder.WriteRows("<row><c r='A1'><v>2</v></c></row>", 2);
  EXPECT_EQ(m_Folder.Import(), "2\t1");
}

TEST_F(ExcelImport, the_first_relationship_with_the_id_counts) {
  m_Folder.Directory().Write(
      "xl/_rels/workbook.xml.rels",
      "<Relationships><Relationship Id='rId1' Target='worksheets/sheet2.xml'/>"
      "<Relationship Id='rId1' Target='worksheets/sheet1.xml'/></Relationships>");
  m_Folder.WriteRows("<row><c r='A1'><v>1</v></c></row>", 1);
  m_Folder.WriteRows("<row><c r='A1'><v>2</v></c></row>", 2);
  EXPECT_EQ(m_Folder.Import(), "2");
}

TEST_F(ExcelImport, the_id_is_found_under_any_prefix_and_the_last_one_counts) {
  m_Folder.Directory().Write("xl/workbook.xml",
                             "<workbook xmlns:q='r'><sheets><sheet name='a' id='rId2' q:id='rId1'/>"
                             "</sheets></workbook>");
  m_Folder.WriteRows("<row><c r='A1'><v>1</v></c></row>");
  EXPECT_EQ(m_Folder.Import(), "1");
}

TEST_F(ExcelImport, no_file_at_all_gives_no_text) { EXPECT_EQ(m_Folder.Import({}), NoText); }

TEST_F(ExcelImport, a_missing_file_fails_whatever_its_type) {
  m_Folder.WriteRows("<row><c r='A1'><v>1</v></c></row>");
  for (const int type : {0, 1, 2, 3, 4}) {
    m_Folder.Files();
    m_Folder.Add(type, "xl/absent.xml");
    EXPECT_EQ(m_Folder.Import(m_Folder.List()), NoText) << type;
  }
  EXPECT_TRUE(IsLogged("xl/absent.xml: there is no such file"));
}

TEST_F(ExcelImport, a_null_in_the_list_fails) {
  m_Folder.WriteRows("<row><c r='A1'><v>1</v></c></row>");
  std::vector<tagEXCEL_XML_FILE*> files = m_Folder.Files();
  files.push_back(nullptr);
  EXPECT_EQ(m_Folder.Import(files), NoText);
}

TEST_F(ExcelImport, another_type_behind_a_good_file_is_passed_over_and_in_front_of_all_it_fails) {
  m_Folder.WriteRows("<row><c r='A1'><v>1</v></c></row>");
  m_Folder.Files();
  m_Folder.Add(4, "xl/workbook.xml");
  m_Folder.Add(-1, "xl/workbook.xml");
  const std::vector<tagEXCEL_XML_FILE*> good = m_Folder.List();
  EXPECT_EQ(m_Folder.Import(good), "1");
  EXPECT_EQ(m_Folder.Import({good[2], good[0], good[1]}), NoText);
}

TEST_F(ExcelImport, a_path_that_fills_its_field_needs_no_terminator) {
  tagEXCEL_XML_FILE file;
  file.type = 1;
  std::fill(std::begin(file.path), std::end(file.path), L'x');
  EXPECT_EQ(m_Folder.Import({&file}), NoText);
}

TEST_F(ExcelImport, a_workbook_or_relationships_that_are_no_document_or_have_another_root_fail) {
  m_Folder.WriteRows("<row><c r='A1'><v>1</v></c></row>");
  for (const char* const name : {"xl/workbook.xml", "xl/_rels/workbook.xml.rels"}) {
    const std::string good = m_Folder.Directory().Read(name);
    for (const std::string& bad : {std::string("<other/>"), good.substr(0, good.size() - 1),
                                   std::string(), "<!DOCTYPE a>" + good}) {
      m_Folder.Directory().Write(name, bad);
      EXPECT_EQ(m_Folder.Import(), NoText) << name << ": " << bad;
    }
    m_Folder.Directory().Write(name, good);
  }
  EXPECT_EQ(m_Folder.Import(), "1");
}

TEST_F(ExcelImport, every_sheets_element_of_the_workbook_is_read_and_nothing_else) {
  m_Folder.WriteWorkbook(2);
  m_Folder.Directory().Write(
      "xl/workbook.xml",
      "<workbook xmlns:r='r'><sheet r:id='rId2'/><sheets><other r:id='rId2'/><sheet r:id='rId1'/>"
      "</sheets><x><sheets><sheet r:id='rId1'/></sheets></x>"
      "<sheets><sheet r:id='rId2'/><x><sheet r:id='rId1'/></x></sheets></workbook>");
  m_Folder.WriteRows("<row><c r='A1'><v>1</v></c></row>", 1);
  m_Folder.WriteRows("<row><c r='A1'><v>2</v></c></row>", 2);
  EXPECT_EQ(m_Folder.Import(), "1\t2");
}

TEST_F(ExcelImport, a_first_sheet_that_fails_ends_the_import) {
  m_Folder.WriteWorkbook(2);
  m_Folder.WriteRows("<row><c r='A1'><v>2</v></c></row>", 2);
  EXPECT_EQ(m_Folder.Import(), NoText);
  EXPECT_FALSE(m_Folder.Directory().Has("content.txt"));
}

TEST_F(ExcelImport, a_later_sheet_that_fails_is_passed_over) {
  m_Folder.WriteWorkbook(4);
  m_Folder.WriteRows("<row><c r='A1'><v>1</v></c></row>", 1);
  m_Folder.WriteSheet("<worksheet/>", 2);
  m_Folder.WriteSheet("<worksheet><sheetData><row><c r='A1'><v>9</v></c></row></sheetData>", 3);
  m_Folder.WriteRows("<row><c r='A1'><v>4</v></c></row>", 4);
  EXPECT_EQ(m_Folder.Import(), "1\t4");
}

TEST_F(ExcelImport, a_sheet_that_breaks_at_any_byte_leaves_the_text_as_it_was) {
  m_Folder.WriteWorkbook(2);
  m_Folder.WriteRows(Numbers(3), 1);
  const std::string sheet = "<worksheet><sheetData>" + Numbers(3) + "</sheetData></worksheet>";
  for (std::size_t size = 0; size < sheet.size(); ++size) {
    m_Folder.WriteSheet(sheet.substr(0, size), 2);
    ASSERT_EQ(m_Folder.Import(), "0\t\n1\t\n2") << "cut at " << size;
    m_Folder.WriteSheet(sheet.substr(0, size), 1);
    ASSERT_EQ(m_Folder.Import(), NoText) << "cut at " << size;
    m_Folder.WriteSheet(sheet, 1);
  }
}

TEST_F(ExcelImport, a_workbook_with_no_sheets_has_no_text_to_save) {
  m_Folder.WriteWorkbook(0);
  EXPECT_EQ(m_Folder.Import(), NoText);
}

TEST_F(ExcelImport, processing_no_sheets_at_all_succeeds) {
  CMSExcelXMLImport import(m_Folder.Path().c_str());
  EXPECT_TRUE(import.ProcessExcelSheets());
  EXPECT_FALSE(import.SaveDataToFile());
}

TEST_F(ExcelImport, blanks_commas_and_stops_that_end_a_row_are_kept_by_its_tab) {
  m_Folder.WriteStrings("<si><t>Mill Inc.</t></si><si><t>a, b,.,</t></si><si><t>.</t></si>");
  EXPECT_EQ(m_Folder.ImportRows("<row><c r='A1' t='s'><v>0</v></c></row><row/>"
                                "<row><c r='A3' t='s'><v>1</v></c></row>"
                                "<row><c r='A4' t='s'><v>2</v></c></row>"),
            "Mill Inc.\t\n\na, b,.,\t\n.");
}

TEST_F(ExcelImport, an_empty_sheet_has_no_text_to_save) {
  EXPECT_EQ(m_Folder.ImportRows(""), NoText);
  EXPECT_EQ(m_Folder.ImportRows("<row/><row><c r='C1'/></row>"), NoText);
}

TEST_F(ExcelImport, sheet_data_is_looked_for_below_the_first_worksheet_of_another_root) {
  const std::string data = "<sheetData><row><c r='A1'><v>5</v></c></row></sheetData>";
  m_Folder.WriteSheet("<x><y/><worksheet><cols/>" + data + "</worksheet></x>");
  EXPECT_EQ(m_Folder.Import(), "5");
  m_Folder.WriteSheet("<x><worksheet/><worksheet>" + data + "</worksheet></x>");
  EXPECT_EQ(m_Folder.Import(), NoText);
  m_Folder.WriteSheet("<x>" + data + "</x>");
  EXPECT_EQ(m_Folder.Import(), NoText);
  m_Folder.WriteSheet("<worksheet><worksheet>" + data + "</worksheet></worksheet>");
  EXPECT_EQ(m_Folder.Import(), NoText);
}

TEST_F(ExcelImport, only_the_first_sheet_data_is_read) {
  m_Folder.WriteSheet("<worksheet><sheetData>" + Numbers(1) + "</sheetData><sheetData>" +
                      Numbers(3) + "</sheetData></worksheet>");
  EXPECT_EQ(m_Folder.Import(), "0");
}

TEST_F(ExcelImport, names_of_elements_count_without_their_prefix) {
  m_Folder.WriteSheet(
      "<x:worksheet xmlns:x='u'><x:sheetData><x:row><x:c r='A1'><x:v>5</x:v></x:c>"
      "</x:row></x:sheetData></x:worksheet>");
  EXPECT_EQ(m_Folder.Import(), "5");
}

TEST_F(ExcelImport, white_space_at_both_ends_of_the_text_is_taken_off) {
  EXPECT_EQ(m_Folder.ImportRows("<row/><row><c r='C1'><v>5</v></c><c r='D1'/></row><row/>"), "5");
}

TEST_F(ExcelImport, a_second_run_of_the_same_object_looks_in_the_wrong_place) {
  m_Folder.WriteRows(Numbers(1));
  CMSExcelXMLImport import(m_Folder.Path().c_str());
  ASSERT_TRUE(import.ParseXmlFiles(m_Folder.Files()));
  EXPECT_FALSE(import.ParseXmlFiles(m_Folder.Files()));
}

TEST_F(ExcelImport, an_empty_or_null_folder_is_never_written_to) {
  m_Folder.WriteWorkbook(0);
  for (const wchar_t* const folder : {static_cast<const wchar_t*>(nullptr), L""}) {
    CMSExcelXMLImport import(folder);
    EXPECT_FALSE(import.ParseXmlFiles(m_Folder.Files()));
    EXPECT_FALSE(import.SaveDataToFile());
  }
}

TEST_F(ExcelImport, target_sheets_are_returned_as_written_and_an_unknown_id_leaves_the_outputs) {
  m_Folder.WriteRows(Numbers(1));
  CMSExcelXMLImport import(m_Folder.Path().c_str());
  ASSERT_TRUE(import.ParseXmlFiles(m_Folder.Files()));
  CString type = L"t";
  CString target = L"u";
  EXPECT_TRUE(import.GetTargetSheet(L"rId7", type, target));
  EXPECT_EQ(type + target, L"tu");
  EXPECT_TRUE(import.GetTargetSheet(L"rId1", type, target));
  EXPECT_EQ(type, L"worksheet");
  EXPECT_EQ(target, L"worksheets/sheet1.xml");
  import.ClearExcelObjects();
  type = L"gone";
  EXPECT_TRUE(import.GetTargetSheet(L"rId1", type, target));
  EXPECT_EQ(type, L"gone");
}

TEST_F(ExcelImport, a_sheet_without_a_relationship_fails_and_the_log_names_it) {
  m_Folder.Directory().Write("xl/_rels/workbook.xml.rels", "<Relationships/>");
  m_Folder.WriteRows(Numbers(1));
  EXPECT_EQ(m_Folder.Import(), NoText);
  EXPECT_TRUE(IsLogged("no relationship has the id \"rId1\" of the sheet \"S1\""));
}

namespace {

std::string Target(const std::string& target) {
  return "<Relationships><Relationship Id='rId1' Target='" + target + "'/></Relationships>";
}

}  // namespace

TEST_F(ExcelImport, a_target_with_a_parent_folder_leads_nowhere_even_back_into_the_package) {
  m_Folder.WriteRows(Numbers(1));
  fs::copy_file(m_Folder.Directory().Path("xl/worksheets/sheet1.xml"),
                m_Folder.Directory().Path("sheet1.xml"));
  for (const char* const target : {"../sheet1.xml", "..\\sheet1.xml", "../xl/worksheets/sheet1.xml",
                                   "worksheets/../worksheets/sheet1.xml", ".."}) {
    m_Folder.Directory().Write("xl/_rels/workbook.xml.rels", Target(target));
    EXPECT_EQ(m_Folder.Import(), NoText) << target;
  }
  EXPECT_TRUE(IsLogged("leads out of the package"));
}

TEST_F(ExcelImport, dots_in_a_name_are_no_parent_folder) {
  m_Folder.Directory().Write("xl/..sheet..xml",
                             "<worksheet><sheetData>" + Numbers(2) + "</sheetData></worksheet>");
  m_Folder.Directory().Write("xl/_rels/workbook.xml.rels", Target("..sheet..xml"));
  EXPECT_EQ(m_Folder.Import(), "0\t\n1");
}

TEST_F(ExcelImport, an_absolute_target_is_looked_for_below_the_package) {
  m_Folder.WriteRows(Numbers(1));
  const std::string absolute = m_Folder.Directory().Path("xl/worksheets/sheet1.xml");
  for (const std::string& target :
       {std::string("/xl/worksheets/sheet1.xml"), absolute, std::string("C:\\sheet1.xml")}) {
    m_Folder.Directory().Write("xl/_rels/workbook.xml.rels", Target(target));
    EXPECT_EQ(m_Folder.Import(), NoText) << target;
  }
  m_Folder.Directory().Write("xl/xl/worksheets/sheet1.xml",
                             "<worksheet><sheetData>" + Numbers(2) + "</sheetData></worksheet>");
  m_Folder.Directory().Write("xl/_rels/workbook.xml.rels", Target("/xl/worksheets/sheet1.xml"));
  EXPECT_EQ(m_Folder.Import(), "0\t\n1");
}

TEST_F(ExcelImport, a_link_on_the_way_to_a_sheet_leads_nowhere) {
  m_Folder.WriteRows(Numbers(1));
  const fs::path xl = m_Folder.Directory().Path("xl");
  fs::rename(xl / "worksheets", xl / "real");
  fs::create_directory_symlink(xl / "real", xl / "worksheets");
  EXPECT_EQ(m_Folder.Import(), NoText);
  EXPECT_TRUE(IsLogged("worksheets: is a link or a special file"));
  fs::remove(xl / "worksheets");
  fs::create_directory(xl / "worksheets");
  fs::create_symlink(xl / "real/sheet1.xml", xl / "worksheets/sheet1.xml");
  EXPECT_EQ(m_Folder.Import(), NoText);
}

TEST_F(ExcelImport, a_link_that_the_text_would_be_written_through_fails) {
  m_Folder.WriteRows(Numbers(1));
  const rastrel::test::ScratchDirectory outside;
  outside.Write("precious", "kept");
  fs::create_symlink(outside.Path("precious"), m_Folder.Directory().Path("content.txt"));
  CMSExcelXMLImport import(m_Folder.Path().c_str());
  EXPECT_FALSE(import.ParseXmlFiles(m_Folder.Files()));
  EXPECT_EQ(outside.Read("precious"), "kept");
}

TEST_F(ExcelImport, a_folder_that_is_reached_through_a_link_is_taken) {
  m_Folder.WriteRows(Numbers(1));
  const rastrel::test::ScratchDirectory outside;
  fs::create_directory_symlink(m_Folder.Path(), outside.Path("package"));
  CMSExcelXMLImport import(outside.Wide("package").c_str());
  EXPECT_TRUE(import.ParseXmlFiles(m_Folder.Files()));
  EXPECT_TRUE(outside.Has("package/content.txt"));
}

TEST_F(ExcelImport, a_text_that_cannot_be_made_fails) {
  m_Folder.WriteRows(Numbers(1));
  fs::create_directory(m_Folder.Directory().Path("content.txt"));
  CMSExcelXMLImport import(m_Folder.Path().c_str());
  EXPECT_FALSE(import.ParseXmlFiles(m_Folder.Files()));
  EXPECT_TRUE(IsLogged("content.txt: open"));
}

namespace {

// Not for the log, which is to report it.
ssize_t NoSpaceForTheText(int descriptor, const void* bytes, size_t count) {
  if (count < 3 || std::memcmp(bytes, "\xEF\xBB\xBF", 3) != 0)
    return ::write(descriptor, bytes, count);
  errno = ENOSPC;
  return -1;
}

int WritesLeft = 0;
ssize_t SomeWrites(int descriptor, const void* bytes, size_t count) {
  if (WritesLeft-- > 0) return ::write(descriptor, bytes, count);
  errno = ENOSPC;
  return -1;
}

}  // namespace

TEST_F(ExcelImport, a_full_disk_fails_and_the_log_says_so) {
  m_Folder.WriteRows(Numbers(1));
  const rastrel::os::SystemCallsGuard guard;
  rastrel::os::Calls().write = NoSpaceForTheText;
  CMSExcelXMLImport import(m_Folder.Path().c_str());
  EXPECT_FALSE(import.ParseXmlFiles(m_Folder.Files()));
  EXPECT_TRUE(IsLogged("content.txt: write: No space left on device"));
}

TEST_F(ExcelImport, a_disk_that_fills_up_in_the_middle_of_the_text_fails) {
  m_Folder.WriteRows(Numbers(60000));
  bool isWritten = true;
  {
    const rastrel::os::SystemCallsGuard guard;
    rastrel::os::Calls().write = SomeWrites;
    WritesLeft = 2;
    CMSExcelXMLImport import(m_Folder.Path().c_str());
    isWritten = import.ParseXmlFiles(m_Folder.Files());
  }
  EXPECT_FALSE(isWritten);
}

TEST_F(ExcelImport, a_text_of_exactly_the_limit_is_saved_and_a_byte_more_fails) {
  m_Folder.WriteRows(Numbers(10));  // 30 bytes, the last line feed among them
  for (const std::size_t limit : {29U, 30U, 31U}) {
    SheetLimits limits;
    limits.resultText = limit;
    rastrel::readers::ExcelPackage package(m_Folder.Path(), limits);
    EXPECT_EQ(package.ParseXmlFiles(m_Folder.Files()), limit >= 30) << limit;
  }
  EXPECT_TRUE(IsLogged("the sheets become more than 29 bytes of text"));
}

TEST_F(ExcelImport, a_second_sheet_beyond_the_limit_is_not_passed_over) {
  m_Folder.WriteWorkbook(2);
  m_Folder.WriteRows(Numbers(10), 1);
  m_Folder.WriteRows(Numbers(10), 2);
  SheetLimits limits;
  limits.resultText = 40;
  rastrel::readers::ExcelPackage package(m_Folder.Path(), limits);
  EXPECT_FALSE(package.ParseXmlFiles(m_Folder.Files()));
}

TEST_F(ExcelImport, a_workbook_of_as_many_sheets_as_may_be_is_read_and_one_more_fails) {
  for (const std::size_t sheets : {4U, 5U, 6U}) {
    m_Folder.WriteWorkbook(sheets);
    for (std::size_t number = 1; number <= sheets; ++number) m_Folder.WriteRows(Numbers(1), number);
    SheetLimits limits;
    limits.elements = 5;
    rastrel::readers::ExcelPackage package(m_Folder.Path(), limits);
    EXPECT_EQ(package.ParseXmlFiles(m_Folder.Files()), sheets <= 5) << sheets;
  }
}
