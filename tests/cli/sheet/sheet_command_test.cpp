// `rastrel sheet` as it is run: its input, its output, and that nothing is left.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "rastrel/readers/ms_excel_xml_import.h"
#include "rastrel/readers/open_office_xml_import.h"
#include "tests/cli/sheet/sheet_command_fixture.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

TEST_F(SheetCommandTest, gives_the_bytes_that_the_import_makes_of_the_same_package) {
  const ScratchDirectory package;
  for (const ZipEntry& entry : TwoSheets().Entries()) package.Write(entry.name, entry.content);
  std::vector<tagEXCEL_XML_FILE> files(3);
  const std::wstring names[] = {L"/xl/workbook.xml", L"/xl/_rels/workbook.xml.rels",
                                L"/xl/texts.xml"};
  for (std::size_t index = 0; index < files.size(); ++index) {
    files[index].type = static_cast<int>(index) + 1;
    (package.Wide() + names[index]).copy(files[index].path, 1000);
  }
  CMSExcelXMLImport import(package.Wide().c_str());
  ASSERT_TRUE(import.ParseXmlFiles({&files[0], &files[1], &files[2]}));
  const std::string expected = package.Read("content.txt");
  ASSERT_NE(expected.find("Name\t1.500000\t"), std::string::npos);
  EXPECT_EQ(Shown(TwoSheets().Bytes(), {}), expected);
  EXPECT_EQ(Shown(TwoSheets().Bytes(), {"--faithful"}), expected);
  EXPECT_EQ(Shown(TwoSheets().Bytes(), {"-o", "-"}), expected);
}

TEST_F(SheetCommandTest, gives_the_bytes_that_the_import_makes_of_the_same_document) {
  const std::string tables =
      Table("A", TableRow(TableCell("a &amp; b") +
                          TableCell("r", "table:number-columns-repeated=\"3\"")) +
                     "<table:table-row-group>" + TableRow(TableCell("in a group")) +
                     "</table:table-row-group>") +
      Table("B",
            TableRow("<table:table-cell><text:p>one</text:p><text:p> <text:span>two</text:span>"
                     " words </text:p></table:table-cell>"));
  const ScratchDirectory scratch;
  scratch.Write("content.xml", OpenDocument(tables));
  COpenOfficeXMLImport import(scratch.Wide("content.xml").c_str());
  import.SetDataSaveFileName(scratch.Wide("text").c_str());
  ASSERT_EQ(import.ImportXMLFile(), 1);
  const std::string expected = scratch.Read("text");
  EXPECT_EQ(Shown(OpenDocumentPackage(OpenDocument(tables)), {}), expected);
  EXPECT_EQ(Shown(OpenDocument(tables), {}), expected);
  // A flat document's root has a name that the import does not take.
  EXPECT_EQ(Shown(OpenDocument(tables, "document"), {}), expected);
}

TEST_F(SheetCommandTest, shows_values_as_a_person_sees_them) {
  EXPECT_EQ(Shown(TwoSheets().Bytes()),
            "\\sheet\tFirst\nName\t1.5\n\ntwo\\nlines\\tand \\\\\t\tTRUE\n"
            "\\sheet\tSecond\n7.00 m" +
                std::string(26, '\t') + "8\n");
}

TEST_F(SheetCommandTest, shows_every_kind_of_cell) {
  WorkbookFiles files;
  files.strings =
      "<si><r><t>rich </t></r><r><rPr/><t>text</t></r></si><si><t/></si>"
      "<si><t>base</t><rPh sb=\"0\" eb=\"1\"><t>hint</t></rPh></si>"
      "<si><t>a_x000D_\nb_x0041__x005F_x0041_</t></si><si><t xml:space=\"preserve\"> </t></si>";
  files.styles = "<cellXfs><xf numFmtId=\"0\"/><xf numFmtId=\"14\"/><xf numFmtId=\"9\"/></cellXfs>";
  files.sheets = {
      {"S", Row(1, Cell("A1", "0", "s") + Cell("B1", "1", "s") + Cell("C1", "2", "s") +
                       Cell("D1", "3", "s") + Cell("E1", "4", "s")) +
                Row(2, Cell("A2", "0", "b") + Cell("B2", "#N/A", "e") + Cell("C2", "f", "str") +
                           Cell("D2", "44197", "n", 1) + Cell("E2", "0.5", "n", 2) +
                           Cell("F2", "2021-02-03", "d", 1)) +
                "<row><c t=\"inlineStr\"><is><t>in</t></is></c>"
                "<c t=\"inlineStr\"><is><r><t>ru</t></r><r><t>ns</t></r></is></c>"
                "<c><f>1+1</f></c><c><v></v></c><c><v>no number</v></c></row>"}};
  EXPECT_EQ(Shown(files.Bytes(), {"--as-shown", "--sheet", "S"}),
            "rich text\t\tbase\ta\\nbA_x0041_\t \n"
            "FALSE\t#N/A\tf\t1/1/2021\t50%\t2/3/2021\n"
            "in\truns\t\t\tno number\n");
  files.workbookExtra = "<workbookPr date1904=\"1\"/>";
  EXPECT_NE(Shown(files.Bytes()).find("\t1/2/2025\t"), std::string::npos);
}

TEST_F(SheetCommandTest, shows_booleans_by_a_format_of_numbers) {
  WorkbookFiles files;
  files.styles =
      "<numFmts><numFmt numFmtId=\"164\" formatCode=\"&quot;yes&quot;;;&quot;no&quot;\"/></numFmts>"
      "<cellXfs><xf numFmtId=\"0\"/><xf numFmtId=\"2\"/><xf numFmtId=\"164\"/><xf "
      "numFmtId=\"49\"/></cellXfs>";
  std::string cells;
  for (const char* value : {"1", "0"})
    for (const int style : {0, 1, 2, 3}) cells += Cell("", value, "b", style);
  files.sheets = {{"S", Row(1, cells)}};
  EXPECT_EQ(Shown(files.Bytes(), {"--as-shown", "--sheet", "S"}),
            "TRUE\t1.00\tyes\tTRUE\tFALSE\t0.00\tno\tFALSE\n");
}

TEST_F(SheetCommandTest, shows_open_document_cells_as_they_were_saved) {
  EXPECT_EQ(
      ShownTables(Table(
          "T", TableRow("<table:table-cell><text:p> a  b\n<text:s text:c=\"3\"/>c<text:tab/>"
                        "<text:span>d</text:span> <text:span>e</text:span><text:line-break/>f "
                        "</text:p><text:p>g</text:p><office:annotation><text:p>note</text:p>"
                        "</office:annotation></table:table-cell>") +
                   TableRow("<table:covered-table-cell><text:p>no</text:p>"
                            "</table:covered-table-cell>" +
                            TableCell("next")) +
                   TableRow("<table:table-cell office:value-type=\"float\" "
                            "office:value=\"0.1\"/><table:table-cell "
                            "office:value-type=\"percentage\" office:value=\"0.5\"/>"
                            "<table:table-cell office:value-type=\"boolean\" "
                            "office:boolean-value=\"true\"/><table:table-cell "
                            "office:value-type=\"string\" office:string-value=\"s\"/>"))),
      "\\sheet\tT\na b    c\\td e\\nf\\ng\n\tnext\n0.1\t50%\tTRUE\ts\n");
}

TEST_F(SheetCommandTest, shows_repeats_as_often_as_they_come) {
  EXPECT_EQ(
      ShownTables(Table("T", TableRow(TableCell("", "table:number-columns-repeated=\"2\"") +
                                      TableCell("a", "table:number-columns-repeated=\"3\"") +
                                      TableCell("", "table:number-columns-repeated=\"16000\"")) +
                                 TableRow("", "table:number-rows-repeated=\"2\"") +
                                 "<table:table-header-rows>" +
                                 TableRow(TableCell("b"), "table:number-rows-repeated=\"2\"") +
                                 "</table:table-header-rows>" +
                                 TableRow("", "table:number-rows-repeated=\"1048000\""))),
      "\\sheet\tT\n\t\ta\ta\ta\n\n\nb\nb\n");
  for (const char* odd : {"0", "-1", "x", ""})
    EXPECT_EQ(ShownTables(Table(
                  "T", TableRow(TableCell(
                           "a", std::string("table:number-columns-repeated=\"") + odd + "\"")))),
              "\\sheet\tT\na\n");
}

TEST_F(SheetCommandTest, lists_sheets_with_their_sizes) {
  const CommandResult list = Sheet(TwoSheets().Bytes(), {"--list"});
  EXPECT_EQ(list.Lines(), Names({"1\tFirst\tvisible\t3 rows\t3 columns\t4 cells",
                                 "2\tSecond\thidden\t1 rows\t27 columns\t2 cells"}));
  const CommandResult json = Sheet(TwoSheets().Bytes(), {"--list", "--json"});
  ASSERT_EQ(json.Lines().size(), 3U);
  EXPECT_EQ(json.Lines()[1],
            "{\"event\":\"sheet\",\"text\":\"Second\",\"number\":2,\"visibility\":"
            "\"hidden\",\"rows\":1,\"columns\":27,\"cells\":2}");
  WorkbookFiles files = TwoSheets();
  files.sheets[0].attributes = "state=\"veryHidden\"";
  EXPECT_NE(Sheet(files.Bytes(), {"--list"}).output.find("\tvery-hidden\t"), std::string::npos);
}

TEST_F(SheetCommandTest, lists_tables_that_a_style_hides) {
  const std::string styles =
      "<office:automatic-styles><style:style style:name=\"h\" style:family=\"table\">"
      "<style:table-properties table:display=\"false\"/></style:style></office:automatic-styles>";
  const std::string tables =
      "<table:table table:name=\"A\" table:style-name=\"h\"/>" + Table("B", "");
  EXPECT_EQ(Sheet(OpenDocument(tables, "document", styles), {"--list"}).Lines(),
            Names({"1\tA\thidden\t0 rows\t0 columns\t0 cells",
                   "2\tB\tvisible\t0 rows\t0 columns\t0 cells"}));
}

TEST_F(SheetCommandTest, one_sheet_is_chosen_by_name_or_by_place_and_a_name_counts_first) {
  WorkbookFiles files = TwoSheets();
  for (const char* wanted : {"First", "1"})
    EXPECT_EQ(Shown(files.Bytes(), {"--as-shown", "--sheet", wanted}),
              "Name\t1.5\n\ntwo\\nlines\\tand \\\\\t\tTRUE\n");
  // The import looks for the second cell's column from B on, and goes to the last letter.
  EXPECT_EQ(Shown(files.Bytes(), {"--sheet", "Second"}),
            "\xEF\xBB\xBF"
            "7" +
                std::string(26, '\t') + "8");
  files.sheets[0].name = "2";
  EXPECT_NE(Shown(files.Bytes(), {"--as-shown", "--sheet", "2"}).find("Name"), std::string::npos);
  for (const char* wanted : {"0", "3", "none", "", "-1", "18446744073709551617"}) {
    const CommandResult result = Sheet(TwoSheets().Bytes(), {"--sheet", wanted});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.error.find("there are 'First', 'Second'"), std::string::npos) << result.error;
  }
}

TEST_F(SheetCommandTest, one_table_is_chosen_in_both_forms) {
  const std::string tables = Table("A", TableRow(TableCell("a"))) +
                             Table("B &amp; C", TableRow(TableCell("b") + TableCell("c")));
  for (const std::string& bytes :
       {OpenDocumentPackage(OpenDocument(tables)), OpenDocument(tables, "document")}) {
    EXPECT_EQ(Shown(bytes, {"--sheet", "B & C"}),
              "\xEF\xBB\xBF"
              "b\tc");
    EXPECT_EQ(Shown(bytes, {"--as-shown", "--sheet", "2"}), "b\tc\n");
  }
}

TEST_F(SheetCommandTest, parts_are_found_by_relationships_whatever_they_are_called) {
  WorkbookFiles files = TwoSheets();
  files.workbookPart = "xl/main-book.xml";
  EXPECT_NE(Shown(files.Bytes()).find("Name\t1.5"), std::string::npos);
  EXPECT_NE(Shown(files.Bytes(), {}).find("Name\t1.500000"), std::string::npos);
}

TEST_F(SheetCommandTest, a_workbook_elsewhere_is_shown_and_the_import_says_why_it_fails) {
  WorkbookFiles files = TwoSheets();
  files.workbookPart = "office/book.xml";
  files.sheets[0].target = "../xl/tables/t1.xml";
  files.sheets[1].target = "/xl/tables/t2.xml";
  files.strings.clear();
  files.sheets[0].rows = Row(1, Cell("A1", "5"));
  EXPECT_EQ(Shown(files.Bytes()).substr(0, 16), "\\sheet\tFirst\n5\n\\");
  EXPECT_EQ(Shown(files.Bytes(), {}),
            "its workbook is 'office/book.xml', and sheets are looked for below xl; --as-shown "
            "reads it\n");
}

TEST_F(SheetCommandTest, an_absolute_target_is_followed_for_shown_values_alone) {
  WorkbookFiles files = TwoSheets();
  files.sheets[0].target = "/xl/tables/t1.xml";
  EXPECT_NE(Shown(files.Bytes()).find("Name\t1.5"), std::string::npos);
  EXPECT_EQ(
      Shown(files.Bytes(), {}),
      "sheet 'First': its target '/xl/tables/t1.xml' is absolute, and is looked for below xl; "
      "--as-shown reads it\n");
}

TEST_F(SheetCommandTest, a_target_that_the_import_refuses_gets_the_hint_if_and_only_if_it_helps) {
  const std::string hint = "; --as-shown reads it\n";
  const std::pair<std::string, std::string> targets[] = {
      {"/xl/tables/t1.xml", "is absolute, and is looked for below xl" + hint},
      {"../xl/tables/t1.xml", "leads out of its folder" + hint},
      {"tables/../tables/t1.xml", "leads out of its folder" + hint},
      {"tables/t%31.xml", "is looked for below xl as it is written" + hint},
      {"/xl/tables/none.xml", "is absolute, and is not in the package\n"},
      {"../tables/t1.xml", "leads out of its folder\n"},
      {"tables/none.xml", "is not in the package\n"},
  };
  for (const auto& [target, why] : targets) {
    WorkbookFiles files = TwoSheets();
    files.sheets[0].target = target;
    EXPECT_EQ(Shown(files.Bytes(), {}), "sheet 'First': its target '" + target + "' " + why);
    const bool isRead = Shown(files.Bytes()).find("Name\t1.5") != std::string::npos;
    EXPECT_EQ(isRead, why.ends_with(hint)) << target;
  }
  // After a sheet that is read it is passed over, with the same message.
  WorkbookFiles files = TwoSheets();
  files.sheets[1].target = "/xl/tables/t2.xml";
  const CommandResult result = Sheet(files.Bytes());
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(
      result.error.starts_with("rastrel: book: passed over: sheet 'Second': its target "
                               "'/xl/tables/t2.xml' is absolute, and is looked for below xl" +
                               hint));
  // A part that is only written in a longer way is found.
  files.sheets[1].target = "./tables/t2.xml";
  EXPECT_EQ(Sheet(files.Bytes()).error, "");
}

TEST_F(SheetCommandTest, targets_that_lead_out_lead_nowhere) {
  for (const char* target : {"../../secret.xml", "..\\..\\secret.xml", "none.xml", ""}) {
    WorkbookFiles files = TwoSheets();
    files.sheets[0].target = target;
    if (*target == '\0') files.sheets[0].kind = "x\" TargetMode=\"External";
    for (const Names& options : {Names{}, Names{"--as-shown"}})
      EXPECT_NE(Shown(files.Bytes(), options).find("sheet 'First'"), std::string::npos) << target;
  }
}

TEST_F(SheetCommandTest, the_import_passes_over_a_later_sheet_and_the_command_says_so) {
  WorkbookFiles files = TwoSheets();
  files.sheets[1].rows = "<row><c><v>1</v>";
  const CommandResult faithful = Sheet(files.Bytes());
  EXPECT_EQ(faithful.status, 0);
  EXPECT_NE(faithful.output.find("Name"), std::string::npos);
  EXPECT_TRUE(faithful.error.starts_with("rastrel: book: passed over: xl/tables/t2.xml:2:"))
      << faithful.error;
  EXPECT_EQ(Shown(files.Bytes()).substr(0, 20), "xl/tables/t2.xml:2:1");
  const CommandResult json = Sheet(files.Bytes(), {"--json"});
  EXPECT_NE(json.output.find("{\"event\":\"warning\""), std::string::npos);
}

TEST_F(SheetCommandTest, a_sheet_that_breaks_in_its_last_row_gives_no_text_at_all) {
  WorkbookFiles files;
  std::string rows;
  for (int row = 1; row <= 20'000; ++row) rows += Row(row, Cell("A" + std::to_string(row), "1"));
  files.sheets = {{"S", rows + "<row>"}};
  for (const Names& options : {Names{}, Names{"--as-shown"}, Names{"--list"}})
    EXPECT_TRUE(Shown(files.Bytes(), options).starts_with("xl/tables/t1.xml:2:"));
}

TEST_F(SheetCommandTest, writes_its_target_as_a_whole_or_not_at_all) {
  const std::string text = Shown(TwoSheets().Bytes());
  m_Command.Place().Write("out.tsv", "old");
  CommandResult result = Sheet(TwoSheets().Bytes(), {"--as-shown", "-o", "out.tsv"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(m_Command.Place().Read("out.tsv"), text);
  result = Sheet(TwoSheets().Bytes(), {"--as-shown", "--output", "out.tsv", "--json"});
  EXPECT_EQ(result.Lines(), Names({"{\"event\":\"done\",\"originator\":\"system\",\"exit\":0,"
                                   "\"paths\":[\"out.tsv\"]}"}));
  fs::create_symlink("out.tsv", m_Command.Place().Path("link"));
  EXPECT_EQ(Sheet(TwoSheets().Bytes(), {"-o", "link"}).status, 0);
  EXPECT_TRUE(fs::is_symlink(m_Command.Place().Path("link")));
  const std::string before = m_Command.Place().Read("out.tsv");
  EXPECT_NE(before, text);
  EXPECT_EQ(Sheet("none", {"-o", "out.tsv"}).status, 3);
  EXPECT_EQ(m_Command.Place().Read("out.tsv"), before);
  // A file that others may not read stays one.
  fs::permissions(m_Command.Place().Path("out.tsv"),
                  fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(Sheet(TwoSheets().Bytes(), {"--as-shown", "-o", "out.tsv"}).status, 0);
  EXPECT_EQ(m_Command.Place().Read("out.tsv"), text);
  EXPECT_EQ(fs::status(m_Command.Place().Path("out.tsv")).permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(SheetCommandTest, another_file_system_gets_the_same_text_in_a_file_like_any_other) {
  const std::string text = Shown(TwoSheets().Bytes());
  const MemoryScratchDirectory memory;
  const mode_t mask = ::umask(0);
  ::umask(mask);
  for (const std::string& target : {memory.Path("out.tsv"), m_Command.Place().Path("out.tsv")}) {
    EXPECT_EQ(Sheet(TwoSheets().Bytes(), {"--as-shown", "-o", target}).status, 0);
    struct stat state {};
    ASSERT_EQ(::stat(target.c_str(), &state), 0) << target;
    EXPECT_EQ(state.st_mode & 07777U, 0666U & ~mask) << target;
  }
  EXPECT_EQ(memory.Read("out.tsv"), text);
  EXPECT_EQ(m_Command.Place().Read("out.tsv"), text);
  // Nothing else: no unfinished file beside it.
  EXPECT_EQ(std::distance(fs::directory_iterator(memory.Path()), {}), 1);
}

TEST_F(SheetCommandTest,
       a_text_gets_the_permissions_of_its_spreadsheet_and_is_its_owners_to_write) {
  struct Case {
    unsigned book, mask, text;
  };
  const MemoryScratchDirectory memory;
  m_Command.Place().Write("book", TwoSheets().Bytes());
  for (const Case& one : {Case{0600, 0022, 0600}, Case{0640, 0022, 0640}, Case{0644, 0077, 0600},
                          Case{0444, 0022, 0644}, Case{0755, 0000, 0644}}) {
    fs::permissions(m_Command.Place().Path("book"), static_cast<fs::perms>(one.book));
    const mode_t before = ::umask(one.mask);
    for (const std::string& target : {memory.Path("out.tsv"), m_Command.Place().Path("out.tsv")}) {
      for (const char* option : {"--as-shown", "--faithful"}) {
        fs::remove(target);
        EXPECT_EQ(m_Command.Run({"sheet", "book", option, "-o", target}).status, 0);
        EXPECT_EQ(static_cast<unsigned>(fs::status(target).permissions()), one.text)
            << option << " " << target << " of " << std::oct << one.book << " " << one.mask;
      }
    }
    ::umask(before);
  }
}

TEST_F(SheetCommandTest, a_target_that_can_not_be_written_is_said) {
  fs::create_directory(m_Command.Place().Path("folder"));
  for (const char* target : {"folder", "none/out.tsv"}) {
    const CommandResult result = Sheet(TwoSheets().Bytes(), {"-o", target});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.error.find(target), std::string::npos) << result.error;
  }
  EXPECT_EQ(Sheet(TwoSheets().Bytes(), {"-o", "/dev/full"}).status, 1);
}

TEST_F(SheetCommandTest, json_gives_rows_with_their_places) {
  EXPECT_EQ(
      Sheet(TwoSheets().Bytes(), {"--as-shown", "--json"}).Lines(),
      Names({"{\"event\":\"sheet\",\"text\":\"First\",\"number\":1,\"visibility\":\"visible\"}",
             "{\"event\":\"row\",\"sheet\":\"First\",\"row\":1,\"cells\":[\"Name\",\"1.5\"]}",
             "{\"event\":\"row\",\"sheet\":\"First\",\"row\":3,\"cells\":[\"two\\nlines\\tand "
             "\\\\\",\"\",\"TRUE\"]}",
             "{\"event\":\"sheet\",\"text\":\"Second\",\"number\":2,\"visibility\":\"hidden\"}",
             "{\"event\":\"row\",\"sheet\":\"Second\",\"row\":1,\"cells\":[\"7.00 m\"" +
                 [] {
                   std::string empty;
                   for (int column = 0; column < 25; ++column) empty += ",\"\"";
                   return empty;
                 }() +
                 ",\"8\"]}",
             "{\"event\":\"done\",\"originator\":\"system\",\"exit\":0,\"paths\":[]}"}));
  EXPECT_EQ(Sheet(OpenDocument(Table("T", TableRow(TableCell("a") + TableCell("b")))), {"--json"})
                .Lines()
                .front(),
            "{\"event\":\"line\",\"row\":1,\"cells\":[\"a\",\"b\"]}");
  const CommandResult bad = Sheet("none", {"--json"});
  EXPECT_EQ(bad.status, 3);
  EXPECT_EQ(nlohmann::json::parse(bad.LastLine())["event"], "failed");
}

TEST_F(SheetCommandTest, wrong_use_is_reported) {
  for (const Names& options : {Names{"--faithful", "--as-shown"}, Names{"--list", "-o", "x"},
                               Names{"--list", "--as-shown"}, Names{"--list", "--sheet", "1"},
                               Names{"-o", ""}, Names{"--sheet"}})
    EXPECT_EQ(Sheet(TwoSheets().Bytes(), options).status, 2);
  EXPECT_EQ(m_Command.Run({"sheet"}).status, 2);
  EXPECT_EQ(Sheet(TwoSheets().Bytes(), {"-o", "./book"}).status, 2);
  EXPECT_EQ(m_Command.Place().Read("book"), TwoSheets().Bytes());
}

TEST_F(SheetCommandTest, a_folder_is_read_and_stays_as_it_is) {
  for (const ZipEntry& entry : TwoSheets().Entries())
    m_Command.Place().Write("package/" + entry.name, entry.content);
  m_Command.Place().Write("document/content.xml",
                          OpenDocument(Table("T", TableRow(TableCell("a")))));
  const auto names = [this] {
    Names found;
    for (const auto& entry : fs::recursive_directory_iterator(m_Command.Place().Path()))
      found.push_back(entry.path());
    std::ranges::sort(found);
    return found;
  };
  const Names before = names();
  EXPECT_EQ(m_Command.Run({"sheet", "document"}).output,
            "\xEF\xBB\xBF"
            "a");
  const std::string text = m_Command.Run({"sheet", "package"}).output;
  EXPECT_EQ(m_Command.Run({"sheet", "package/"}).output, text);
  EXPECT_EQ(names(), before);
  EXPECT_EQ(text, Shown(TwoSheets().Bytes(), {}));
  m_Command.Place().Write("secret", "<worksheet/>");
  fs::remove(m_Command.Place().Path("package/xl/tables/t1.xml"));
  fs::create_symlink("../../../secret", m_Command.Place().Path("package/xl/tables/t1.xml"));
  const CommandResult link = m_Command.Run({"sheet", "package"});
  EXPECT_EQ(link.status, 3);
  EXPECT_NE(link.error.find("entry 'xl/tables/t1.xml': it is a link"), std::string::npos)
      << link.error;
}

TEST_F(SheetCommandTest, other_files_than_spreadsheets_are_refused_with_their_kind) {
  WorkbookFiles binary = TwoSheets();
  binary.workbookType = "application/vnd.ms-excel.sheet.binary.macroEnabled.main";
  WorkbookFiles letter = TwoSheets();
  letter.workbookType = "application/vnd.openxmlformats-officedocument.wordprocessingml.document";
  const std::string encrypted =
      "<m:manifest "
      "xmlns:m=\"urn:m\"><m:file-entry><m:encryption-data/></m:file-entry></m:manifest>";
  const std::vector<std::pair<std::string, std::string>> files{
      {"", "it is empty"},
      {" \n", "it holds nothing but blanks"},
      {"words", "it is neither a package of a spreadsheet nor a document of XML\n"},
      {"%PDF-1.4",
       "it is neither a package of a spreadsheet nor a document of XML, but a PDF file\n"},
      {std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8), "it is encrypted, or of the old binary"},
      {"<!DOCTYPE a>\n<a/>", "1:"},
      {"<a", "it is no spreadsheet: its root element is 'a'"},
      {"<1/>", "1:"},
      {"<html/>", "it is no spreadsheet: its root element is 'html'"},
      {"<document/>", "it is no spreadsheet"},
      {binary.Bytes(), "it is a binary workbook (.xlsb)"},
      {letter.Bytes(), "it is no workbook: the content type"},
      {ZipBytes({ZipEntry{"a", "x"}}).Make(), "it is no spreadsheet: it has neither"},
      {ZipBytes({}).Make(), "it is no spreadsheet: it has neither"},
      {ZipBytes({{"mimetype", "application/vnd.oasis.opendocument.text"}, {"content.xml", "<a/>"}})
           .Make(),
       "it is no spreadsheet, but 'application/vnd.oasis.opendocument.text'"},
      {OpenDocumentPackage("\x01\x02", encrypted), "it is encrypted"},
      {OpenDocumentPackage("<a/>"), "content.xml:"},
      {TwoSheets().Bytes().substr(0, 500), "it is no whole zip file"},
  };
  for (const auto& [bytes, words] : files)
    for (const Names& options : {Names{}, Names{"--as-shown"}, Names{"--list"}})
      EXPECT_TRUE(Shown(bytes, options).starts_with(words)) << words;
  EXPECT_EQ(m_Command.Run({"sheet", "missing"}).status, 3);
  EXPECT_EQ(m_Command.Run({"sheet", "/dev/null"}).status, 3);
}

TEST_F(SheetCommandTest, a_document_type_inside_a_package_is_refused_with_its_place) {
  for (const char* part : {"xl/workbook.xml", "xl/tables/t1.xml", "_rels/.rels",
                           "[Content_Types].xml", "xl/forms.xml", "xl/texts.xml"}) {
    auto entries = TwoSheets().Entries();
    for (ZipEntry& entry : entries)
      if (entry.name == part)
        entry.content =
            "<!DOCTYPE x [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;\">]><x>&b;</x>";
    const std::string words = Shown(ZipBytes(entries).Make());
    EXPECT_TRUE(words.starts_with(std::string(part) + ":1:")) << words;
  }
}

TEST_F(SheetCommandTest, a_hostile_package_is_refused_before_anything_is_written) {
  auto entries = TwoSheets().Entries();
  entries.push_back({"../../evil", "x"});
  EXPECT_EQ(Shown(ZipBytes(entries).Make(), {}),
            "entry '../../evil': its name leads out of the package\n");
}

TEST_F(SheetCommandTest, charts_have_no_rows) {
  WorkbookFiles files = TwoSheets();
  files.sheets[0].kind = "chartsheet";
  EXPECT_EQ(Shown(files.Bytes()).substr(0, 31), "\\sheet\tFirst\n\\sheet\tSecond\n7.00");
}

TEST_F(SheetCommandTest, a_signal_ends_it_and_leaves_nothing) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    m_Command.Place().Write("book", TwoSheets().Bytes());
    const std::string pipe = m_Command.Place().Path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    // Nobody reads the pipe, so that the command waits.
    m_Command.Start({"sheet", "book", "--json", "-o", "pipe"}, "\"progress\"");
    EXPECT_EQ(m_Command.NamesIn("jobs").size(), 1U);
    m_Command.Signal(signal);
    const CommandResult result = m_Command.Wait();
    EXPECT_EQ(result.status, 4);
    EXPECT_NE(result.LastLine().find("cancelled; what was unpacked has been removed"),
              std::string::npos);
    EXPECT_EQ(m_Command.NamesIn("jobs"), Names());
    fs::remove(pipe);
  }
}

TEST_F(SheetCommandTest,
       the_copy_of_a_killed_one_goes_with_the_next_and_that_of_a_running_one_stays) {
  m_Command.Place().Write("book", TwoSheets().Bytes());
  const std::string pipe = m_Command.Place().Path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  m_Command.Start({"sheet", "book", "--json", "-o", "pipe"}, "\"progress\"");
  m_Command.Signal(SIGKILL);
  static_cast<void>(m_Command.Wait());
  const Names killed = m_Command.NamesIn("jobs");
  ASSERT_EQ(killed.size(), 1U);
  m_Command.Start({"sheet", "book", "--json", "-o", "pipe"}, "\"progress\"");
  const Names running = m_Command.NamesIn("jobs");
  ASSERT_EQ(running.size(), 1U);
  EXPECT_NE(running, killed);

  CommandRunner other(CommandRunner::Children::None);
  other.Set("RASTREL_HOME", m_Command.Root());
  EXPECT_EQ(other.Run({"sheet", m_Command.Place().Path("book")}).status, 0);
  EXPECT_EQ(m_Command.NamesIn("jobs"), running);
  m_Command.Signal(SIGINT);
  EXPECT_EQ(m_Command.Wait().status, 4);
  fs::remove(pipe);
}

TEST_F(SheetCommandTest, the_examples_say_their_purpose) {
  const std::string examples = std::string(RASTREL_SOURCE_DIR) + "/examples/";
  EXPECT_EQ(
      m_Command.Run({"sheet", examples + "price-list", "--as-shown", "--sheet", "Prices"}).output,
      "Sign\tPrice\tRebate\tValid from\nShop front\t\u20AC 1,249.50\t15%\t1-Jan-25\n"
      "Brass plate, engraved\t\u20AC 89.00\t\t1-Mar-25\n");
  EXPECT_EQ(m_Command.Run({"sheet", examples + "price-list.fods", "--list"}).output,
            "1\tPrices\tvisible\t3 rows\t2 columns\t6 cells\n");
}

}  // namespace
}  // namespace rastrel::test
