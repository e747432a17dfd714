#include "cli/reading/inspect_command.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "cli/reading/inspection.h"
#include "cli/reading/inspection_text.h"
#include "tests/cli/command_runner.h"
#include "tests/support/scratch_directory.h"

namespace rastrel::cli {
namespace {

using test::CommandRunner;
using test::ScratchDirectory;

const std::string Sign =
    "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 72 144\n%%DocumentCustomColors: (Cut) (B\\050)\n"
    "%%+ (Loose)\n%%CMYKCustomColor: 0 1 0 0 (Cut)\n%%+ 0 0 0 0.5 (B\\050)\n%%EndComments\n"
    "[/Separation (Cut) /DeviceCMYK {0 exch 0 0}] setcolorspace 1 setcolor 10 10 20 20 rectfill\n"
    "[/Separation (Ghost) /DeviceCMYK {0 exch 0 0}] setcolorspace 1 setcolor 40 40 9 9 rectfill\n"
    "[/Separation (Loose) /DeviceCMYK {0 exch 0 0}] setcolorspace\nshowpage\n%%EOF\n";

Inspection Inspect(const std::string& content) {
  const ScratchDirectory scratch;
  scratch.Write("file.eps", content);
  auto inspection = InspectFile(scratch.Path("file.eps"));
  EXPECT_TRUE(inspection);
  return inspection ? *inspection : Inspection();
}

std::string Word(unsigned value) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<char>(value >> shift));
  return bytes;
}

TEST(Inspect, a_line_says_all_of_a_file) {
  CommandRunner command(CommandRunner::Children::None);
  command.Place().Write("sign.eps", Sign);
  const auto result = command.Run({"inspect", "sign.eps"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(
      result.output,
      "sign.eps: EPS (its first line says EPSF); %!PS-Adobe-3.0 EPSF-3.0; bounds 0 0 72 144 pt,"
      " 0 0 2.54 5.08 cm; colours: Cut, B2 (B(), Loose; spots: Cut CMYK 0 1 0 0,"
      " B2 (B() CMYK 0 0 0 0.5; not defined: Loose\n");
}

TEST(Inspect, json_holds_the_same_as_members) {
  CommandRunner command(CommandRunner::Children::None);
  command.Place().Write("sign.eps", Sign);
  const auto object = nlohmann::json::parse(command.Run({"inspect", "--json", "sign.eps"}).output);
  EXPECT_EQ(object["event"], "file");
  EXPECT_EQ(object["path"], "sign.eps");
  EXPECT_EQ(object["kind"], "EPS");
  EXPECT_EQ(object["points"], (std::vector<double>{0, 0, 72, 144}));
  EXPECT_EQ(object["names"].size(), 3U);
  EXPECT_EQ(object["spots"][1]["name"], "B2");
  EXPECT_EQ(object["spots"][1]["postscript"], "B(");
  EXPECT_EQ(object["spots"][1]["values"], (std::vector<double>{0, 0, 0, 0.5}));
  EXPECT_EQ(object["undefined"][0]["name"], "Loose");
  EXPECT_FALSE(object.contains("painted"));
}

TEST(Inspect, a_table_has_as_many_fields_in_each_row_as_its_head) {
  CommandRunner command(CommandRunner::Children::None);
  command.Place().Write("a.eps", Sign);
  command.Place().Write("tab\tin.ps", "%!\tPS\n");
  command.Place().Write("z", "nothing");
  const auto lines = command.Run({"inspect", "--tsv", "."}).Lines();
  ASSERT_EQ(lines.size(), 4U);
  for (const std::string& line : lines)
    EXPECT_EQ(std::count(line.begin(), line.end(), '\t'), 20) << line;
  EXPECT_TRUE(lines[1].starts_with("./a.eps\tEPS\t"));
  EXPECT_TRUE(lines[2].starts_with("./tab\\x09in.ps\tPostScript\t"));
  EXPECT_TRUE(lines[3].starts_with("./z\tneither\t"));
}

TEST(Inspect, a_file_that_can_not_be_read_is_reported_and_the_others_follow) {
  CommandRunner command(CommandRunner::Children::None);
  command.Place().Write("sign.eps", Sign);
  const auto result = command.Run({"inspect", "missing.eps", "sign.eps"});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.Lines().size(), 1U);
  EXPECT_EQ(result.error,
            "rastrel: missing.eps: open 'missing.eps': No such file or directory (2)\n");
}

TEST(Inspect, several_files_at_a_time_are_listed_as_one_after_the_other_is) {
  CommandRunner command(CommandRunner::Children::None);
  std::vector<std::string> words{"inspect", "--painted", "--json"};
  for (int number = 0; number < 6; ++number) {
    const std::string name = "sign" + std::to_string(number) + ".eps";
    command.Place().Write(name, Sign + (number == 2 ? "no_such_operator\n" : ""));
    words.push_back(name);
  }
  words.emplace_back("missing.eps");
  auto oneByOne = words;
  oneByOne.insert(oneByOne.end(), {"--jobs", "1"});
  words.insert(words.end(), {"--jobs", "4"});
  const auto expected = command.Run(oneByOne);
  EXPECT_EQ(expected.Lines().size(), 6U) << expected.error;
  EXPECT_EQ(expected.status, 3);
  const auto result = command.Run(words);
  EXPECT_EQ(result.output, expected.output);
  EXPECT_EQ(result.error, expected.error);
  EXPECT_EQ(result.status, 3);
}

// An EPS of that box: squares of 10 points in the spots Low and High at its lower left and upper
// right corner, and Above and Beside outside of it.
std::string BoxedEps(int left, int bottom, int right, int top) {
  const auto square = [](const std::string& spot, int x, int y) {
    return "[/Separation (" + spot + ") /DeviceGray {1 exch sub}] setcolorspace 1 setcolor " +
           std::to_string(x) + " " + std::to_string(y) + " 10 10 rectfill\n";
  };
  return "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: " + std::to_string(left) + " " +
         std::to_string(bottom) + " " + std::to_string(right) + " " + std::to_string(top) +
         "\n%%EndComments\n" + square("Low", left, bottom) + square("High", right - 10, top - 10) +
         square("Above", left, top + 3) + square("Beside", right + 3, bottom) + "showpage\n";
}

// Small ones and large ones are painted on sheets of other sizes, and larger ones made smaller.
TEST(Inspect, ink_within_the_declared_box_is_painted_and_other_ink_is_not) {
  CommandRunner command(CommandRunner::Children::None);
  struct Box {
    int left, bottom, right, top;
  };
  for (const Box& box : {Box{-50, 20, 48, 120}, Box{0, 0, 298, 298}, Box{0, 0, 299, 298},
                         Box{10, 10, 1508, 1508}, Box{7, 9, 4000, 200}}) {
    command.Place().Write("boxed.eps", BoxedEps(box.left, box.bottom, box.right, box.top));
    const auto result = command.Run({"inspect", "--painted", "--json", "boxed.eps"});
    ASSERT_EQ(result.status, 0) << result.error;
    const auto object = nlohmann::json::parse(result.output);
    EXPECT_EQ(object["painted"], (std::vector<std::string>{"High", "Low"})) << box.right;
  }
}

TEST(Inspect, json_and_a_table_exclude_each_other) {
  CommandRunner command(CommandRunner::Children::None);
  EXPECT_EQ(command.Run({"inspect", "--json", "--tsv", "x"}).status, 2);
}

TEST(Inspect, ghostscript_says_where_the_pages_paint) {
  CommandRunner command(CommandRunner::Children::None);
  command.Place().Write("sign.eps", Sign);
  const auto result = command.Run({"inspect", "--painted", "--json", "sign.eps"});
  ASSERT_EQ(result.status, 0) << result.error;
  const auto object = nlohmann::json::parse(result.output);
  EXPECT_EQ(object["painted"], (std::vector<std::string>{"Cut", "Ghost"}));
  EXPECT_EQ(object["not_painted"], (std::vector<std::string>{"B(", "Loose"}));
  EXPECT_EQ(object["not_declared"], (std::vector<std::string>{"Ghost"}));
}

TEST(Inspect, a_program_that_fails_under_ghostscript_is_reported) {
  CommandRunner command(CommandRunner::Children::None);
  command.Place().Write("bad.ps", "%!PS\nno_such_operator\n");
  const auto result = command.Run({"inspect", "--painted", "bad.ps"});
  EXPECT_EQ(result.status, 1);
  EXPECT_TRUE(result.error.starts_with("rastrel: bad.ps: Ghostscript can't paint it"));
}

// The comments are read without an interpreter, so its failure takes nothing of them away.
TEST(Inspect, what_the_comments_say_is_shown_when_the_interpreter_fails) {
  CommandRunner command(CommandRunner::Children::None);
  command.Place().Write("bad.eps", std::string(Sign) + "no_such_operator\n");
  const auto plain = command.Run({"inspect", "bad.eps"});
  const auto painted = command.Run({"inspect", "--painted", "bad.eps"});
  EXPECT_EQ(painted.status, 1);
  EXPECT_EQ(painted.output,
            plain.output.substr(0, plain.output.size() - 1) + "; painted: not known\n");
  const std::string start = "rastrel: bad.eps: ";
  ASSERT_TRUE(painted.error.starts_with(start)) << painted.error;
  const std::string reason =
      painted.error.substr(start.size(), painted.error.size() - start.size() - 1);
  EXPECT_TRUE(reason.starts_with("Ghostscript can't paint it: Error: /undefined")) << reason;

  auto object = nlohmann::json::parse(command.Run({"inspect", "--json", "bad.eps"}).output);
  object["painted_error"] = reason;
  const auto json = command.Run({"inspect", "--painted", "--json", "bad.eps"});
  EXPECT_EQ(nlohmann::json::parse(json.output), object);

  const auto lines = command.Run({"inspect", "--painted", "--tsv", "bad.eps"}).Lines();
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_TRUE(lines[0].ends_with("\tpainted_error")) << lines[0];
  EXPECT_TRUE(lines[1].ends_with("\t" + reason)) << lines[1];
}

TEST(Inspect, a_missing_interpreter_leaves_what_the_comments_say) {
  CommandRunner command(CommandRunner::Children::None);
  command.Place().Write("sign.eps", Sign);
  command.Set("PATH", command.Root());
  const auto result = command.Run({"inspect", "--painted", "--json", "sign.eps"});
  EXPECT_EQ(result.status, 5);
  const auto object = nlohmann::json::parse(result.output);
  EXPECT_EQ(object["kind"], "EPS");
  EXPECT_TRUE(object.contains("points"));
  EXPECT_EQ(object["painted_error"], "Ghostscript (gs) is not installed");
}

TEST(InspectFile, a_dos_header_lists_its_sections) {
  const std::string header = "\xC5\xD0\xD3\xC6" + Word(30) + Word(9) + Word(0) + Word(0) +
                             Word(39) + Word(3) + std::string(2, '\xFF');
  const Inspection inspection = Inspect(header + "%!PS EPSFtif");
  EXPECT_EQ(inspection.kind, FileKind::DosEps);
  EXPECT_EQ(inspection.postScript.offset, 30U);
  EXPECT_EQ(inspection.postScript.length, 9U);
  EXPECT_EQ(inspection.tiff.offset, 39U);
  EXPECT_EQ(inspection.tiff.length, 3U);
  EXPECT_EQ(inspection.metafile.length, 0U);
}

TEST(InspectFile, each_kind_has_its_reason) {
  EXPECT_EQ(Inspect("").reason, "it is empty");
  EXPECT_EQ(Inspect("text").reason, "it has no \"%!PS\"");
  EXPECT_EQ(Inspect("%!PS-Adobe-3.0\n").reason, "its first line says PS-Adobe, and not EPSF");
  EXPECT_EQ(Inspect("%!\n").reason, "it has \"%!\", and neither PS-Adobe nor EPSF");
}

TEST(InspectFile, comments_of_a_document_inside_are_not_the_documents) {
  const Inspection inspection = Inspect(
      "%!PS\n%%BeginDocument: x\n%%DocumentCustomColors: A\n%%EndDocument\n"
      "%%DocumentCustomColors: B\nx\n%%+ C\nx\n");
  ASSERT_EQ(inspection.names.size(), 1U);
  EXPECT_EQ(inspection.names[0].name, "B");
}

TEST(InspectionLine, a_swatch_is_the_color_as_a_screen_shows_it) {
  Inspection inspection = Inspect(Sign);
  EXPECT_NE(InspectionLine(inspection, true).find("\x1b[48;2;255;0;255m  \x1b[0m Cut CMYK"),
            std::string::npos);
  EXPECT_EQ(InspectionLine(inspection, false).find('\x1b'), std::string::npos);
}

TEST(InspectionLine, control_characters_of_a_file_do_not_reach_the_terminal) {
  const Inspection inspection = Inspect("%!PS \x1b]0;x\x07\n%%DocumentCustomColors: \x1b[2J\nx\n");
  const std::string line = InspectionLine(inspection, false);
  EXPECT_EQ(line.find('\x1b'), std::string::npos);
  EXPECT_EQ(line.find('\x07'), std::string::npos);
}

const std::string Cro =
    "<?xml version='1.0'?>\n<ENGRAVINGTEMPLATE><TEMPLATENAME>Doors</TEMPLATENAME>"
    "<PLATES><PLATE><TEXT>101</TEXT></PLATE></PLATES></ENGRAVINGTEMPLATE>";

TEST(Inspect, a_cro_template_named_xml_gives_the_records_that_it_gives_named_cro) {
  CommandRunner command(CommandRunner::Children::None);
  command.Place().Write("doors.cro", Cro);
  command.Place().Write("doors.xml", Cro);
  const auto own = command.Run({"inspect", "doors.cro"});
  const auto other = command.Run({"inspect", "doors.xml"});
  EXPECT_EQ(own.status, 0) << own.error;
  EXPECT_EQ(other.status, 0) << other.error;
  ASSERT_EQ(other.Lines().size(), 2U) << other.output;
  auto first = nlohmann::json::parse(other.Lines()[0]);
  EXPECT_EQ(first["format"], "cro");
  EXPECT_EQ(first["name"], "Doors");
  EXPECT_EQ(first["file"], "doors.xml");
  first["file"] = "doors.cro";
  EXPECT_EQ(first, nlohmann::json::parse(own.Lines()[0]));
  EXPECT_EQ(other.Lines()[1], own.Lines()[1]);
  EXPECT_EQ(command.Run({"inspect", "doors.xml", "--tsv"}).status, 3);
}

TEST(Inspect, other_files_named_xml_are_inspected_as_any_file) {
  CommandRunner command(CommandRunner::Children::None);
  command.Place().Write("plates.xml", "<A><ENGRAVINGTEMPLATE/></A>");
  command.Place().Write("zml.xml", "<ENGRAVINGTEMPLATE><table_size/></ENGRAVINGTEMPLATE>");
  command.Place().Write("broken.xml", "<ENGRAVINGTEMPLATE>");
  command.Place().Write("sign.xml", Sign);
  for (const char* name : {"plates.xml", "zml.xml", "broken.xml"}) {
    const auto result = command.Run({"inspect", name, "--json"});
    EXPECT_EQ(nlohmann::json::parse(result.output)["kind"], "neither") << name;
  }
  const auto sign = command.Run({"inspect", "sign.xml", "--json"});
  EXPECT_EQ(nlohmann::json::parse(sign.output)["kind"], "EPS");
  EXPECT_NE(command.Run({"inspect", "none.xml"}).status, 0);
}

TEST(PostScriptText, escapes_are_read_as_the_language_has_them) {
  EXPECT_EQ(PostScriptText("a\\050\\51\\1012\\\\\\(\\n\\x"), "a()A2\\(\nx");
  EXPECT_EQ(PostScriptText("\\351 \xE9"), "\xC3\xA9 \xC3\xA9");
  EXPECT_EQ(PostScriptText("\\303\\244"), "\xC3\xA4") << "UTF-8 stays";
  EXPECT_EQ(PostScriptText("\\"), "\\");
}

TEST(MatchesPattern, a_star_is_any_text_and_a_question_mark_a_byte) {
  EXPECT_TRUE(MatchesPattern("sign.eps", "*.eps"));
  EXPECT_TRUE(MatchesPattern("sign.eps", "s*g?.*s"));
  EXPECT_TRUE(MatchesPattern("", "**"));
  EXPECT_FALSE(MatchesPattern("sign.eps", "*.ps"));
  EXPECT_FALSE(MatchesPattern("sign.eps", "sign"));
  EXPECT_FALSE(MatchesPattern("a", "?b"));
  EXPECT_FALSE(MatchesPattern(std::string(5000, 'a'), "*a*a*a*a*a*a*b"));
}

TEST(FilesOfOperand, folders_patterns_and_names_are_distinguished) {
  const ScratchDirectory scratch;
  scratch.Write("b/two.eps", "");
  scratch.Write("b/c/three.eps", "");
  scratch.Write("a.eps", "");
  scratch.Write("what?.ps", "");
  const auto below = [&](const std::string& operand) {
    std::string names;
    for (const std::string& file : FilesOfOperand(scratch.Path(operand)))
      names += file.substr(scratch.Path().size() + 1) + " ";
    return names;
  };
  EXPECT_EQ(below("b"), "b/c/three.eps b/two.eps ");
  EXPECT_EQ(below("*.eps"), "a.eps ");
  EXPECT_EQ(below("what?.ps"), "what?.ps ");
  EXPECT_EQ(below("none*"), "none* ");
}

}  // namespace
}  // namespace rastrel::cli
