#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "tests/cli/command_runner.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using test::CommandResult;
using test::CommandRunner;

const std::string Examples = std::string(RASTREL_SOURCE_DIR) + "/examples/plates/";

// A plate with a line of text, and other elements beside it.
std::string Template(const std::string& inside, const std::string& beside = "<PLATES/>") {
  return "<ABB>\n<ENGRAVINGTEMPLATE>" + beside + "\n<PLATE>\n" + inside +
         "\n</PLATE>\n</ENGRAVINGTEMPLATE>\n</ABB>\n";
}

constexpr const char* Sound =
    "<COLOR>Gold</COLOR><WIDTH>3</WIDTH><HEIGHT>1</HEIGHT><TEXTCOLOR>Black</TEXTCOLOR>"
    "<TEXT data='Ada'><FONT name='DejaVuSans.ttf' size='0.25'/></TEXT>";

std::string ReadFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream) << path;
  return {std::istreambuf_iterator<char>(stream), {}};
}

class Import : public ::testing::Test {
 protected:
  CommandResult RunOn(const std::string& content, std::vector<std::string> arguments = {},
                      const std::string& name = "plates.xml") {
    m_Command.Place().Write(name, content);
    arguments.insert(arguments.begin(), {"import", name});
    return m_Command.Run(arguments);
  }

  // The last line of an import with --json.
  static json Summary(const CommandResult& result) { return json::parse(result.LastLine()); }

  CommandRunner m_Command{CommandRunner::Children::None};
};

TEST_F(Import, prints_the_count_of_each_kind) {
  const auto result = RunOn(Template(Sound));
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.output, "1 page of 60 by 40 cm: 1 plate, 1 text, 0 drill points\n");
  EXPECT_EQ(result.error, "");
}

TEST_F(Import, takes_a_template_from_standard_input) {
  m_Command.SetInput(Template(Sound));
  const auto imported = m_Command.Run({"import", "-", "--json"});
  EXPECT_EQ(imported.status, 0) << imported.error;
  EXPECT_EQ(Summary(imported)["file"], "standard input");
  EXPECT_EQ(Summary(imported)["texts"], 1);
  const auto viewed = m_Command.Run({"view", "-", "--output", "seen.svg"});
  EXPECT_EQ(viewed.status, 0) << viewed.error;
  EXPECT_EQ(RunOn(Template(Sound), {"--output", "named.svg"}).status, 0);
  EXPECT_EQ(m_Command.Place().Read("seen.svg"), m_Command.Place().Read("named.svg"));
}

TEST_F(Import, reads_a_document_and_other_templates_from_standard_input_by_their_content) {
  ASSERT_EQ(RunOn(Template(Sound), {"--output", "plates.rdoc"}).status, 0);
  for (const auto& [file, format] :
       {std::pair{m_Command.Place().Path("plates.rdoc"), "document"},
        std::pair{std::string(RASTREL_SOURCE_DIR) + "/examples/plates/llx/justified-arcs.llx",
                  "llx"},
        std::pair{std::string(RASTREL_SOURCE_DIR) + "/examples/plates/cro/door-plates.cro",
                  "cro"}}) {
    m_Command.SetInput(ReadFile(file));
    const auto result = m_Command.Run({"import", "-", "--json"});
    EXPECT_EQ(Summary(result)["format"], format) << result.error;
    EXPECT_EQ(Summary(result)["pages"], 1);
  }
}

// Relative names belong to the directory where the command runs, as there is no other.
TEST_F(Import, finds_graphics_of_standard_input_in_the_present_directory) {
  fs::copy(Examples + "graphics", m_Command.Place().Path("graphics"));
  std::string text = ReadFile(Examples + "cro/metric-with-graphics.cro");
  for (std::size_t at = text.find("..\\"); at != text.npos; at = text.find("..\\"))
    text.erase(at, 3);
  m_Command.SetInput(text);
  const auto result = m_Command.Run({"import", "-", "--json"});
  EXPECT_EQ(result.status, 0) << result.error << result.output;
  EXPECT_EQ(Summary(result)["paths"], 6);  // two a crest, which is there three times
}

TEST_F(Import, names_standard_input_where_it_refuses_it) {
  m_Command.SetInput("<ABB>\n<ENGRAVINGTEMPLATE>\n");
  const auto result = m_Command.Run({"import", "-"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.error.find("rastrel: standard input"), 0U) << result.error;
  EXPECT_EQ(result.error.find("rastrel-import-"), std::string::npos) << result.error;
}

TEST_F(Import, draws_a_picture_of_96_dpi_by_default) {
  const auto drawn = [this](const std::string& name, std::vector<std::string> more) {
    more.insert(more.begin(), {"--output", name});
    const auto result = RunOn(Template(Sound), more);
    EXPECT_EQ(result.status, 0) << result.error;
    return m_Command.Place().Read(name);
  };
  const std::string picture = drawn("plain.png", {});
  EXPECT_EQ(picture, drawn("same.png", {"--dpi", "96"}));
  EXPECT_NE(picture, drawn("finer.png", {"--dpi", "97"}));
}

TEST_F(Import, takes_resolutions_up_to_2400_dpi) {
  const std::vector<std::string> drawing{"--output", "out.png", "--blank", "1x1cm", "--dpi"};
  for (const char* dpi : {"0", "2401", "96.5"}) {
    auto arguments = drawing;
    arguments.emplace_back(dpi);
    EXPECT_EQ(RunOn(Template(Sound), arguments).error,
              "rastrel: --dpi " + std::string(dpi) + ": not a number from 1 to 2400\n");
  }
}

TEST_F(Import, imports_every_example_whole_and_reports_its_special_parts) {
  const struct {
    const char* name;
    int pages, plates, objects, texts, drillPoints, findings;
  } examples[] = {
      {"blank-plates.xml", 1, 2, 1, 0, 0, 0},   {"default-margins.xml", 1, 1, 1, 1, 0, 1},
      {"further-pages.xml", 2, 6, 2, 6, 12, 0}, {"hole-sizes.xml", 1, 1, 1, 0, 4, 0},
      {"line-breaks.xml", 1, 2, 1, 2, 0, 0},    {"missing-fonts.xml", 1, 1, 1, 1, 0, 2},
      {"name-badge.xml", 1, 1, 1, 1, 0, 0},     {"panel.xml", 1, 3, 2, 3, 4, 0},
      {"same-sizes.xml", 1, 3, 2, 3, 0, 0},     {"several-templates.xml", 1, 4, 2, 4, 1, 0},
      {"text-frames.xml", 1, 4, 1, 4, 0, 3},    {"unknown-colors.xml", 1, 2, 2, 2, 2, 4},
      {"valve-tags.xml", 1, 12, 1, 12, 12, 0}};
  for (const auto& example : examples) {
    const auto result = m_Command.Run({"import", Examples + example.name, "--strict", "--json"});
    EXPECT_EQ(result.status, example.findings > 0 ? 3 : 0) << example.name;
    const auto lines = result.Lines();
    EXPECT_EQ(std::ranges::count_if(
                  lines, [](const auto& line) { return json::parse(line)["event"] == "finding"; }),
              example.findings)
        << example.name;
    const json summary = Summary(result);
    EXPECT_EQ(summary["format"], "abb");
    EXPECT_EQ(summary["pages"], example.pages) << example.name;
    EXPECT_EQ(summary["plates"], example.plates) << example.name;
    EXPECT_EQ(summary["plate_objects"], example.objects) << example.name;
    EXPECT_EQ(summary["texts"], example.texts) << example.name;
    EXPECT_EQ(summary["drill_points"], example.drillPoints) << example.name;
  }
}

TEST_F(Import, saves_a_document_that_opens_again) {
  const auto saved = RunOn(Template(Sound), {"-o", "out.rdoc"});
  EXPECT_EQ(saved.status, 0) << saved.error;
  const auto document = json::parse(m_Command.Place().Read("out.rdoc"));
  EXPECT_EQ(document["format"], "rastrel-document");
  const auto again = m_Command.Run({"import", "out.rdoc", "-o", "again.json", "--json"});
  EXPECT_EQ(again.status, 0) << again.error;
  EXPECT_EQ(Summary(again)["format"], "document");
  EXPECT_EQ(m_Command.Place().Read("again.json"), m_Command.Place().Read("out.rdoc"));
}

// Library paths ignore case, and a user's names don't.
TEST_F(Import, a_file_whose_name_differs_in_case_alone_is_left_alone) {
  for (const std::string extension : {".svg", ".pdf", ".png", ".rdoc"}) {
    m_Command.Place().Write("sign" + extension, "mine");
    const auto result = RunOn(Template(Sound), {"-o", "SIGN" + extension});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(m_Command.Place().Read("sign" + extension), "mine");
    EXPECT_GT(m_Command.Place().Read("SIGN" + extension).size(), 100U);
  }
}

TEST_F(Import, a_document_that_can_not_be_saved_leaves_nothing) {
  std::filesystem::create_directory(m_Command.Place().Path("out.rdoc"));
  EXPECT_NE(RunOn(Template(Sound), {"-o", "out.rdoc"}).status, 0);
  for (const auto& entry : std::filesystem::directory_iterator(m_Command.Place().Path()))
    EXPECT_FALSE(entry.path().filename().string().starts_with(".rastrel"));
}

TEST_F(Import, lays_out_on_the_blank_that_is_asked_for) {
  const auto result = RunOn(Template(Sound), {"--blank", "100x50mm", "--json"});
  EXPECT_EQ(Summary(result)["width_cm"], 10.0);
  EXPECT_EQ(Summary(result)["height_cm"], 5.0);
}

TEST_F(Import, a_plate_that_does_not_fit_on_the_blank_is_reported_and_is_a_failure) {
  const auto result = RunOn(Template(Sound), {"--blank", "2x2in"});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.error.find("left out: a plate of 7.62 by 2.54 cm does not fit on the blank"),
            std::string::npos)
      << result.error;
}

TEST_F(Import, a_font_that_can_not_be_had_is_reported_once) {
  const auto result =
      RunOn(Template("<WIDTH>3</WIDTH><HEIGHT>1</HEIGHT>"
                     "<TEXT data='a'><FONT name='NoSuchFont.ttf' size='0.2'/></TEXT>"
                     "<TEXT data='b'><FONT name='NoSuchFont.ttf' size='0.2'/></TEXT>"));
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.error,
            "rastrel: the font \"NoSuchFont\" can't be had; DejaVu Sans stands in for it\n");
}

TEST_F(Import, strict_reports_each_thing_that_is_passed_over_with_its_line) {
  const auto result = RunOn(
      "<ABB>\n"
      "<OTHER/>\n"
      "<ENGRAVINGTEMPLATE>\n"
      "<PLATES><PLATE/></PLATES>\n"
      "<PLATE>\n"
      "<COLOUR>Gold</COLOUR>\n"
      "<COLOR>No Such Colour</COLOR>\n"
      "<WIDTH>3 inch</WIDTH>\n"
      "<HEIGHT>1</HEIGHT>\n"
      "<TEXTCOLOR>Black</TEXTCOLOR>\n"
      "<TEXT data='x' colour='red'><FONT name='NoSuchFont.ttf'/></TEXT>\n"
      "<TEXT data='y'/>\n"
      "<DRILLPOINT><COLOR>Red</COLOR><XLOC>1</XLOC></DRILLPOINT>\n"
      "</PLATE></ENGRAVINGTEMPLATE></ABB>\n",
      {"--strict"});
  EXPECT_EQ(result.status, 1) << "a text without a font is left out";
  const std::vector<std::string> told = {
      "plates.xml:2: <OTHER> is not known in <ABB>",
      "plates.xml:4: a <PLATE> in <PLATES> is not read; it has to stand beside it",
      "plates.xml:5: the text \"x\" has letters of the size 0, which can't be seen",
      "plates.xml:5: the text has the colour of its plate, and can't be seen",
      "plates.xml:6: <COLOUR> is not known in <PLATE>",
      "plates.xml:7: the palette has no colour \"No Such Colour\"; it becomes black",
      "plates.xml:8: <WIDTH> is no number: \"3 inch\"",
      "plates.xml:11: <TEXT> has an attribute \"colour\" that is not known",
      "plates.xml:11: the font has no size that is a number",
      "plates.xml:11: the font \"NoSuchFont.ttf\" can't be had; DejaVu Sans stands in for it",
      "plates.xml:12: the text has no <FONT>",
      "plates.xml:13: <DRILLPOINT> has no <YLOC>, which counts as 0",
      "plates.xml:13: the hole at 1, 0 in is cut by the edge of its plate of 3 by 1 in",
      "rastrel: left out: a text that names no font",
  };
  std::string all;
  for (const std::string& line : told) all += line + "\n";
  EXPECT_EQ(result.error, all);
}

// A plate of 3 by 1 inches on line 3, of that color and with more inside.
std::string Plate(const std::string& color, const std::string& inside) {
  return "<ABB>\n<ENGRAVINGTEMPLATE><PLATES/>\n<PLATE><COLOR>" + color +
         "</COLOR><WIDTH>3</WIDTH><HEIGHT>1</HEIGHT>\n" + inside +
         "</PLATE></ENGRAVINGTEMPLATE></ABB>\n";
}

std::string Hole(const std::string& x, const std::string& y, const std::string& diameter) {
  return "<DRILLPOINT><COLOR>Red</COLOR><XLOC>" + x + "</XLOC><YLOC>" + y + "</YLOC><DIAMETER>" +
         diameter + "</DIAMETER></DRILLPOINT>\n";
}

TEST_F(Import, strict_names_holes_that_are_not_wholly_in_their_plate) {
  const auto result =
      RunOn(Plate("Gold", Hole("3.5", "0.5", "0.1") + Hole("1", "-0.2", "0") +
                              Hole("2.96", "0.5", "0.1") + Hole("1", "0.95", "0.1") +
                              // 0.0005 beyond the edge, which is rounding, and 0.002.
                              Hole("0.0495", "0.5", "0.1") + Hole("0.048", "0.5", "0.1")),
            {"--strict"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.error,
            "plates.xml:4: the hole at 3.5, 0.5 in is beside its plate of 3 by 1 in\n"
            "plates.xml:5: the hole at 1, -0.2 in is beside its plate of 3 by 1 in\n"
            "plates.xml:6: the hole at 2.96, 0.5 in is cut by the edge of its plate of 3 by 1 in\n"
            "plates.xml:9: the hole at 0.048, 0.5 in is cut by the edge of its plate of 3 by 1 "
            "in\n");
}

std::string Text(const std::string& color, const std::string& data, const std::string& size) {
  return "<TEXTCOLOR>" + color + "</TEXTCOLOR><TEXT data='" + data +
         "'><FONT name='DejaVuSans.ttf' size='" + size + "'/></TEXT>\n";
}

TEST_F(Import, strict_names_text_in_the_color_of_its_plate) {
  const auto result = RunOn(Plate("Gold", Text("Gold", "Ada", "0.2")), {"--strict"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.error,
            "plates.xml:3: the text has the colour of its plate, and can't be seen\n");
  // A further pane of the same plate object has the first pane's color, whatever its own.
  const std::string two =
      "<ABB>\n<ENGRAVINGTEMPLATE><PLATES/>\n<PLATE><COLOR>Gold</COLOR>"
      "<WIDTH>3</WIDTH><HEIGHT>1</HEIGHT></PLATE>\n<PLATE><COLOR>Black"
      "</COLOR><WIDTH>3</WIDTH><HEIGHT>1</HEIGHT>" +
      Text("Gold", "Ada", "0.2") + "</PLATE></ENGRAVINGTEMPLATE></ABB>\n";
  EXPECT_EQ(RunOn(two, {"--strict"}).error,
            "plates.xml:4: the text has the colour of its plate, and can't be seen\n");
  EXPECT_EQ(RunOn(Plate("Gold", Text("Black", "Ada", "0.2")), {"--strict"}).status, 0);
}

TEST_F(Import, letters_that_no_font_has_are_named_when_drawn_and_refused_by_strict) {
  const std::string content = Plate("Gold", Text("Black", "Ada &#xE000;", "0.2"));
  const std::string told =
      "the text \"Ada \xEE\x80\x80\" has characters that neither \"DejaVu Sans\" nor another font "
      "has, and boxes stand in for them: U+E000\n";
  const auto drawn = RunOn(content, {"-o", "out.svg"});
  EXPECT_EQ(drawn.status, 0);
  EXPECT_EQ(drawn.error, "rastrel: " + told);
  const auto strict = RunOn(content, {"--strict"});
  EXPECT_EQ(strict.status, 3);
  EXPECT_EQ(strict.error, "plates.xml:3: " + told);
}

TEST_F(Import, text_that_can_not_be_seen_is_a_loss_when_drawn_and_refused_by_strict) {
  const std::string small = "the text \"Ada\" has letters of the size 0, which can't be seen\n";
  const std::string squeezed =
      "the text \"Ada\" can't be seen: its letters are narrower or lower than 0.1 mm in the room "
      "between its margins\n";
  const std::string noRoom = "<TEXTFRAME>50</TEXTFRAME>" + Text("Black", "Ada", "0.2");
  for (const auto& [inside, told] :
       {std::pair(Text("Black", "Ada", "0"), small), std::pair(noRoom, squeezed)}) {
    const auto drawn = RunOn(Plate("Gold", inside), {"-o", "out.png"});
    EXPECT_EQ(drawn.status, 1);
    EXPECT_EQ(drawn.error, "rastrel: left out: " + told);
    const auto strict = RunOn(Plate("Gold", inside), {"--strict"});
    EXPECT_EQ(strict.status, 3);
    EXPECT_EQ(strict.error, "plates.xml:3: " + told);
  }
}

TEST_F(Import, strict_findings_come_as_json_with_their_lines) {
  const auto result = RunOn(Template(std::string(Sound) + "\n<NEW/>"), {"--strict", "--json"});
  const auto lines = result.Lines();
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(json::parse(lines[0]), (json{{"event", "finding"},
                                         {"file", "plates.xml"},
                                         {"line", 5},
                                         {"text", "<NEW> is not known in <PLATE>"}}));
}

TEST_F(Import, a_file_that_is_no_xml_is_reported_with_line_column_and_reason) {
  const auto result = RunOn("<ABB>\n  <ENGRAVINGTEMPLATE>\n");
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.error.rfind("rastrel: plates.xml:2:22: ", 0), 0U) << result.error;
}

TEST_F(Import, a_file_without_plates_is_refused) {
  const auto none = RunOn(Template(Sound, ""));
  EXPECT_EQ(none.status, 3);
  EXPECT_NE(none.error.find("there is no <PLATES>"), std::string::npos) << none.error;
  const auto other = RunOn("<SHEET/>");
  EXPECT_EQ(other.status, 3);
  EXPECT_NE(other.error.find("plates.xml:1: <SHEET> holds no template that is known"),
            std::string::npos)
      << other.error;
}

TEST_F(Import, a_format_decides_whatever_the_file_looks_like) {
  const auto document = RunOn(Template(Sound), {"--format", "document"});
  EXPECT_EQ(document.status, 3);
  const auto named = RunOn(Template(Sound), {"--format", "abb"}, "plates.txt");
  EXPECT_EQ(named.status, 3);
  EXPECT_NE(named.error.find("its name does not end in .xml"), std::string::npos) << named.error;
  const auto unknown = RunOn(Template(Sound), {"--format", "plates"});
  EXPECT_EQ(unknown.status, 2);
  EXPECT_NE(unknown.error.find("there are document, abb"), std::string::npos) << unknown.error;
}

TEST_F(Import, wrong_values_of_options_are_reported) {
  const struct {
    std::vector<std::string> arguments;
    const char* told;
  } wrong[] = {{{"-o", "out.txt"}, "its name has to end in .svg, .pdf, .png, .rdoc or .json"},
               {{"--page", "0"}, "--page 0: not a number from 1 to 1000000"},
               {{"--dpi", "2401"}, "--dpi 2401: not a number from 1 to 2400"},
               {{"--blank", "10x5"}, "--blank 10x5: a size has its unit behind it"},
               {{"--blank", "0x5cm"}, "is no length above 0"}};
  for (const auto& one : wrong) {
    const auto result = RunOn(Template(Sound), one.arguments);
    EXPECT_EQ(result.status, 2) << one.told;
    EXPECT_NE(result.error.find(one.told), std::string::npos) << result.error;
  }
}

TEST_F(Import, a_missing_file_and_a_directory_are_reported) {
  EXPECT_EQ(m_Command.Run({"import", "none.xml"}).status, 3);
  const auto directory = m_Command.Run({"import", "."});
  EXPECT_EQ(directory.status, 3);
  EXPECT_NE(directory.error.find("it is a directory"), std::string::npos) << directory.error;
}

TEST_F(Import, measures_that_are_none_are_left_out_and_end_the_import_soon) {
  for (const char* width : {"1e308", "-3", "nan", "inf", "0", "1e-300", ""}) {
    const auto result =
        RunOn(Template("<WIDTH>" + std::string(width) + "</WIDTH><HEIGHT>1</HEIGHT>"));
    EXPECT_TRUE(result.status == 1 || result.status == 0) << width << result.error;
    if (result.status == 1) {
      EXPECT_NE(result.error.find("left out"), std::string::npos) << width;
    }
  }
}

TEST_F(Import, a_text_longer_than_a_field_is_refused_with_its_element) {
  const auto result = RunOn(Template("<WIDTH>3</WIDTH><HEIGHT>1</HEIGHT><TEXT data='" +
                                     std::string(256, 'x') + "'><FONT name='a' size='1'/></TEXT>"));
  EXPECT_EQ(result.status, 3);
  EXPECT_NE(result.error.find("data"), std::string::npos) << result.error;
}

}  // namespace
}  // namespace rastrel::cli
