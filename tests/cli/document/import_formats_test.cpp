#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "rastrel/xml/save.h"
#include "tests/cli/command_runner.h"

namespace rastrel::cli {
namespace {

using nlohmann::json;
using test::CommandResult;
using test::CommandRunner;

const std::string Examples = std::string(RASTREL_SOURCE_DIR) + "/examples/plates/";

constexpr const char* Crest =
    "<svg xmlns='http://www.w3.org/2000/svg' width='20mm' height='20mm' viewBox='0 0 20 20'>"
    "<rect width='20' height='20' fill='#ff0000'/></svg>";

std::string Escaped(const std::string& text) {
  std::string escaped;
  xml::AppendXmlText(escaped, text, false);
  return escaped;
}

std::string Cr2(const std::string& file, const std::string& cutLine = "") {
  return "<engraving_template><table_size width='12' height='6' origin='top left'/>"
         "<template><placement width='4' height='2'/>" +
         cutLine + "</template><graphics><graphic_location name='g'><file>" + Escaped(file) +
         "</file></graphic_location></graphics><plates><plate><graphic_frame><graphic>g</graphic>"
         "<placement x='0.5' y='0.5' width='1' height='1'/></graphic_frame></plate></plates>"
         "</engraving_template>";
}

std::string Llx(const std::string& file) {
  return "<A><ENGRAVINGTEMPLATE><PLATE><WIDTH>4</WIDTH><HEIGHT>2</HEIGHT><GRAPHIC><FILE>" +
         Escaped(file) + "</FILE><WIDTH>1</WIDTH></GRAPHIC></PLATE></ENGRAVINGTEMPLATE></A>";
}

class ImportFormats : public ::testing::Test {
 protected:
  CommandResult RunOn(const std::string& name, const std::string& content,
                      std::vector<std::string> more = {}) {
    m_Command.Place().Write(name, content);
    more.insert(more.begin(), {"import", name});
    return m_Command.Run(more);
  }
  static json Summary(const CommandResult& result) { return json::parse(result.LastLine()); }
  static json Event(const CommandResult& result, const std::string& event) {
    for (const std::string& line : result.Lines()) {
      const json object = json::parse(line);
      if (object["event"] == event) return object;
    }
    return {};
  }

  /// A private file of the data root.
  void WriteRoot(const std::string& name, const std::string& content) const {
    const std::filesystem::path path = m_Command.Root() + "/" + name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << content;
    std::filesystem::permissions(path, std::filesystem::perms(0600));
  }

  CommandRunner m_Command{CommandRunner::Children::None};
};

TEST_F(ImportFormats, every_example_is_imported_as_its_format) {
  const struct {
    const char* file;
    const char* format;
    int plates, texts;
  } examples[] = {{"cro/door-plates.cro", "cro", 3, 3},
                  {"cro/metric-with-graphics.cro", "cro", 2, 2},
                  {"cro/cabinet-labels.cro", "cro", 2, 2},
                  {"llx/round-seal.llx", "llx", 1, 0},
                  {"llx/justified-arcs.llx", "llx", 1, 0},
                  {"bright-star/notice.xml", "bright-star", 0, 3},
                  {"bright-star/from-the-center.xml", "bright-star", 0, 3},
                  {"crown-trophy/colours.cr2", "cr2", 2, 1},
                  {"crown-trophy/hex-colours.zml", "zml", 2, 2},
                  {"crown-trophy/award.cr2", "cr2", 3, 2},
                  {"crown-trophy/tags.zml", "zml", 2, 2}};
  for (const auto& example : examples) {
    const auto result =
        m_Command.Run({"import", Examples + example.file, "--json", "--allow-outside"});
    EXPECT_EQ(result.status, 0) << example.file << result.output;
    const json summary = Summary(result);
    EXPECT_EQ(summary["format"], example.format) << example.file;
    EXPECT_EQ(summary["plates"], example.plates) << example.file;
    EXPECT_EQ(Event(result, "template")["format"], example.format) << example.file;
  }
}

TEST_F(ImportFormats, xml_files_are_known_by_their_root_whatever_the_reader_wants_them_named) {
  m_Command.Place().Write("logo.svg", Crest);
  EXPECT_EQ(Summary(RunOn("a.xml", Cr2("logo.svg"), {"--json"}))["format"], "cr2");
  EXPECT_EQ(Summary(RunOn("b.xml", Llx("logo.svg"), {"--json"}))["format"], "llx");
  const auto zml = RunOn("c.xml",
                         "<ENGRAVINGTEMPLATE><table_size width='5' height='5'/><template>"
                         "<placement width='2' height='2'/></template><plates><plate/></plates>"
                         "</ENGRAVINGTEMPLATE>",
                         {"--json"});
  EXPECT_EQ(Summary(zml)["format"], "zml");
  EXPECT_EQ(Summary(zml)["plates"], 1);
}

TEST_F(ImportFormats, a_graphic_beside_the_template_is_placed_in_any_case_and_with_either_slash) {
  m_Command.Place().Write("orders/Art/Logo.svg", Crest);
  for (const char* name : {"art/logo.svg", "ART\\LOGO.SVG", ".\\Art\\..\\Art\\Logo.svg"}) {
    const auto result = RunOn("orders/a.cr2", Cr2(name));
    EXPECT_EQ(result.status, 0) << name << result.error;
    EXPECT_EQ(result.error, "") << name;
  }
}

TEST_F(ImportFormats, the_summary_counts_the_paths_of_placed_vector_files) {
  m_Command.Place().Write("art.svg", Crest);
  EXPECT_EQ(Summary(RunOn("art.cr2", Cr2("art.svg"), {"--json"}))["paths"], 1);
  const CommandResult shown = RunOn("art.cr2", Cr2("art.svg"));
  EXPECT_NE(shown.output.find(", 0 drill points, 1 path"), std::string::npos) << shown.output;
  EXPECT_EQ(Summary(RunOn("none.cr2", Cr2("none.svg"), {"--json"}))["paths"], 0);
}

TEST_F(ImportFormats, a_graphic_outside_the_templates_directory_is_left_out_and_said_so) {
  m_Command.Place().Write("secret/logo.svg", Crest);
  m_Command.Place().Write("orders/note.txt", "x");
  std::filesystem::create_symlink("../secret/logo.svg", m_Command.Place().Path("orders/link.svg"));
  const std::string full = m_Command.Place().Path("secret/logo.svg");
  for (const std::string& name :
       {std::string("../secret/logo.svg"), std::string("..\\secret\\logo.svg"),
        std::string("link.svg"), full}) {
    for (const auto& [file, content] :
         {std::pair("orders/a.cr2", Cr2(name)), std::pair("orders/a.llx", Llx(name))}) {
      const auto refused = RunOn(file, content);
      EXPECT_EQ(refused.status, 1) << file << name;
      EXPECT_NE(refused.error.find("outside the template's directory; --allow-outside reads it"),
                std::string::npos)
          << file << name << refused.error;
      const auto allowed = RunOn(file, content, {"--allow-outside"});
      EXPECT_EQ(allowed.status, 0) << file << name << allowed.error;
    }
  }
}

TEST_F(ImportFormats, drives_of_the_data_root_count_as_inside) {
  std::filesystem::create_directories(m_Command.Root() + "/drive_c/art");
  std::filesystem::copy_file(Examples + "graphics/crest.svg",
                             m_Command.Root() + "/drive_c/art/crest.svg");
  const auto result = RunOn("a.cr2", Cr2("C:\\Art\\Crest.svg"));
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.error, "");
}

TEST_F(ImportFormats, a_users_own_cutline_file_stays_as_it_is) {
  const std::string line =
      "<cutline stroke='0.01' format='SVG'><svg xmlns='http://www.w3.org/2000/svg' width='10mm' "
      "height='5mm' viewBox='0 0 10 5'><path d='M1 1h8v3h-8z'/></svg>"
      "<placement width='3' height='1'/></cutline>";
  m_Command.Place().Write("orders/cutline.svg", "mine");
  m_Command.Place().Write("orders/logo.svg", Crest);
  const auto result = RunOn("orders/a.cr2", Cr2("logo.svg", line), {"--json"});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(m_Command.Place().Read("orders/cutline.svg"), "mine");
  EXPECT_EQ(
      std::distance(std::filesystem::directory_iterator(m_Command.Place().Path("orders")), {}), 3);
  // The private directory is gone.
  const std::string written = Event(result, "template")["cut_line"]["file"];
  EXPECT_FALSE(std::filesystem::exists(written)) << written;
}

TEST_F(ImportFormats, settings_that_can_not_be_stored_are_findings) {
  const std::string zml =
      "<ENGRAVINGTEMPLATE><Rotation>90</Rotation><Driver>Any</Driver>"
      "<table_size width='12' height='6'/><template><placement width='4' height='2'/></template>"
      "<plates><plate/></plates></ENGRAVINGTEMPLATE>";
  WriteRoot("settings.ini", "[plottersetup]\nNumberDevices = 1\n");
  WriteRoot("plotters/0.ini", "[setup]\nplottername = 90\n");
  EXPECT_EQ(RunOn("a.zml", zml, {"--strict"}).status, 0);
  // Nothing is written without its lock, and a directory is none.
  std::filesystem::remove(m_Command.Root() + "/.settings.lock");
  std::filesystem::create_directories(m_Command.Root() + "/.settings.lock");
  const auto result = RunOn("a.zml", zml, {"--strict"});
  EXPECT_EQ(result.status, 3) << result.error;
  EXPECT_NE(result.error.find("a.zml: the setting \"DeviceUsed\" of \"plottersetup\" can't be "
                              "stored in settings.ini of the data root\n"),
            std::string::npos)
      << result.error;
  EXPECT_EQ(RunOn("a.zml", zml).status, 0);
}

TEST_F(ImportFormats, results_go_to_the_users_directory_and_not_to_the_templates) {
  m_Command.Place().Write("orders/logo.svg", Crest);
  const auto result = RunOn("orders/a.cr2", Cr2("logo.svg"), {"-o", "out.svg"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_TRUE(std::filesystem::exists(m_Command.Place().Path("out.svg")));
}

TEST_F(ImportFormats, a_template_without_plates_is_refused_with_its_lack) {
  const auto none = RunOn("a.cr2",
                          "<engraving_template>\n<table_size width='12' height='6'/>\n"
                          "<template/>\n<plates><plate/></plates></engraving_template>");
  EXPECT_EQ(none.status, 3);
  EXPECT_EQ(none.error,
            "rastrel: can't import 'a.cr2': it has no plates that can be read; line 3: <template> "
            "has no <placement>\n");
  EXPECT_EQ(RunOn("b.cr2", "<engraving_template><").status, 3);
  EXPECT_EQ(RunOn("b.zml", "nothing").status, 3);
  EXPECT_EQ(RunOn("b.llx", "<A/>").status, 3);
  EXPECT_EQ(RunOn("b.cro", "<A/>").status, 3);
}

TEST_F(ImportFormats, a_file_that_its_reader_repairs_is_imported_by_its_extension) {
  const auto result = RunOn("a.cro",
                            "x<? xml version='1.0'?><ENGRAVINGTEMPLATE><TEMPLATESIZE><WIDTH>2"
                            "</WIDTH><HEIGHT>1</HEIGHT></TEMPLATESIZE><PLATES><PLATE><TEXT>a"
                            "</TEXT></PLATE></PLATES></ENGRAVINGTEMPLATE>",
                            {"--json"});
  EXPECT_EQ(result.status, 0) << result.output << result.error;
  EXPECT_EQ(Summary(result)["plates"], 1);
}

// A pipe that nobody writes to would be waited for without end.
TEST_F(ImportFormats, a_pipe_is_refused_as_template_and_as_table) {
  const std::string pipe = m_Command.Place().Path("pipe");
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  m_Command.Place().Write("a.llx", Llx("{Name}"));
  const auto import = m_Command.Run({"import", "pipe"});
  EXPECT_EQ(import.status, 3);
  EXPECT_EQ(import.error, "rastrel: can't import 'pipe': it is no regular file\n");
  EXPECT_EQ(m_Command.Run({"merge", "pipe", "--data", "none.csv"}).status, 3);
  const auto table = m_Command.Run({"merge", "a.llx", "--data", "pipe"});
  EXPECT_EQ(table.status, 3);
  EXPECT_EQ(table.error, "rastrel: pipe: it is no regular file\n");
}

TEST_F(ImportFormats, strict_findings_of_other_formats_have_file_and_line) {
  const auto result = RunOn("a.llx",
                            "<A><ENGRAVINGTEMPLATE><PLATE>\n<WIDTH>2</WIDTH><HEIGHT>1</HEIGHT>\n"
                            "<COLOUR/></PLATE></ENGRAVINGTEMPLATE></A>",
                            {"--strict"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.error, "a.llx:3: <COLOUR> is not known in <PLATE>\n");
}

TEST_F(ImportFormats, merges_make_plates_of_each_format) {
  m_Command.Place().Write("names.csv", "Name,Logo\nAda,logo.svg\nBob & Co &copy;,logo.svg\n");
  m_Command.Place().Write("logo.svg", Crest);
  const std::string text =
      "<text_frame><placement width='3' height='1'/><font face='DejaVu Sans' size='0.2'><line>"
      "{Name}</line></font></text_frame>";
  const struct {
    const char* name;
    std::string content;
    int pages, plates, texts;
  } templates[] = {
      {"a.cr2",
       "<engraving_template><table_size width='12' height='6' origin='top left'/><template>"
       "<placement width='4' height='2'/></template><graphics><graphic_location name='{Logo}'>"
       "<file>{Logo}</file></graphic_location></graphics><plates><plate>" +
           text + "</plate></plates></engraving_template>",
       1, 2, 2},
      {"a.zml",
       "<ENGRAVINGTEMPLATE><table_size width='12' height='6' origin='top left'/><template>"
       "<placement width='4' height='2'/></template><plates><plate>" +
           text + "</plate></plates></ENGRAVINGTEMPLATE>",
       1, 2, 2},
      {"a.cro",
       "<ENGRAVINGTEMPLATE><TEMPLATESIZE><WIDTH>4</WIDTH><HEIGHT>2</HEIGHT></TEMPLATESIZE>"
       "<PLATES><PLATE><TEXT>{Name}</TEXT></PLATE></PLATES></ENGRAVINGTEMPLATE>",
       1, 2, 2},
      {"a.llx",
       "<A><ENGRAVINGTEMPLATE><PLATE><WIDTH>4</WIDTH><HEIGHT>4</HEIGHT><ARCTEXT><CENTERX>2"
       "</CENTERX><CENTERY>2</CENTERY><RADIUS>1</RADIUS><HEIGHT>0.2</HEIGHT><FONT>DejaVuSans.ttf"
       "</FONT><TEXT>{Name}</TEXT></ARCTEXT></PLATE></ENGRAVINGTEMPLATE></A>",
       2, 2, -1},
      {"a.xml",
       "<A><ENGRAVINGTEMPLATE><WIDTH>4</WIDTH><HEIGHT>2</HEIGHT><TEXTFRAME UPPERXLOC='0.1' "
       "UPPERYLOC='1.9' LOWERXLOC='3.9' LOWERYLOC='0.1'><FONT name='DejaVuSans.ttf' size='0.2'/>"
       "<LINE>{Name}</LINE></TEXTFRAME></ENGRAVINGTEMPLATE></A>",
       2, 0, 2}};
  for (const auto& one : templates) {
    m_Command.Place().Write(one.name, one.content);
    const auto result = m_Command.Run({"merge", one.name, "--data", "names.csv", "--json", "-o",
                                       std::string(one.name) + ".svg", "--force"});
    EXPECT_EQ(result.status, 0) << one.name << result.output << result.error;
    const json summary = Summary(result);
    EXPECT_EQ(summary["pages"], one.pages) << one.name;
    EXPECT_EQ(summary["plates"], one.plates) << one.name;
    if (one.texts >= 0) {
      EXPECT_EQ(summary["texts"], one.texts) << one.name;
    }
    std::string drawn;
    for (const auto& file : summary["output"].get<std::vector<std::string>>())
      drawn += m_Command.Place().Read(file);
    EXPECT_NE(drawn.find("Ada"), std::string::npos) << one.name;
    EXPECT_NE(drawn.find("Bob &amp; Co &amp;copy;"), std::string::npos) << one.name;
  }
}

}  // namespace
}  // namespace rastrel::cli
