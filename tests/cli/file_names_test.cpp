// Names of files and data roots with bytes that the formats' own paths can't spell.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/cli/command_runner.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;
using test::CommandResult;
using test::CommandRunner;

const std::string Examples = std::string(RASTREL_SOURCE_DIR) + "/examples/";

constexpr const char* OnePage =
    "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 72 36\n%%DocumentCustomColors: (Cut)\n"
    "%%CMYKCustomColor: 0 1 0 0 (Cut)\n%%EndComments\n"
    "[/Separation (Cut) /DeviceCMYK {0 exch 0 0}] setcolorspace 1 setcolor 9 9 20 20 rectfill\n"
    "showpage\n%%EOF\n";

std::string ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Latin 1, a backslash, a double quote, a drive's letter, and a byte alone that begins a letter.
class FileNames : public ::testing::TestWithParam<const char*> {
 protected:
  // A file of that name in the command's directory.
  std::string File(const std::string& content, const char* extension) const {
    const std::string name = std::string(GetParam()) + extension;
    m_Command.Place().Write(name, content);
    return name;
  }
  void ExpectDone(const std::vector<std::string>& arguments, const std::string& file) {
    const CommandResult result = m_Command.Run(arguments);
    EXPECT_EQ(result.status, 0) << arguments.front() << ": " << result.error;
    if (!file.empty()) {
      EXPECT_TRUE(m_Command.Place().Has(file)) << arguments.front();
    }
  }

  CommandRunner m_Command{CommandRunner::Children::Real};
};

TEST_P(FileNames, that_print_are_opened_as_they_are_named) {
  const std::string name = GetParam();
  const std::string job = File(OnePage, ".eps");
  for (const std::vector<std::string>& words : {std::vector<std::string>{"inspect"},
                                                {"inspect", "--painted"},
                                                {"inspect", "--json"},
                                                {"pagesize"},
                                                {"prefix"},
                                                {"header"},
                                                {"queue"}}) {
    std::vector<std::string> arguments = words;
    arguments.push_back(job);
    ExpectDone(arguments, "");
  }
  ExpectDone({"print", job, "--output", "out " + name}, "out " + name);
  ExpectDone({"preview", job, "-o", name + ".png"}, name + ".png");
  ExpectDone({"print", job, "--save-ticket", name + ".tkt"}, name + ".tkt");
  ExpectDone({"ticket", "show", name + ".tkt"}, "");
}

TEST_P(FileNames, of_lists_are_opened_as_they_are_named) {
  ExpectDone({"notes", File(ContentOf(Examples + "job-notes.xml"), ".xml")}, "");
  ExpectDone({"cars", File(ContentOf(Examples + "car-library.xml"), ".xml")}, "");
  ExpectDone({"chart", "caps", File(ContentOf(Examples + "charts/capitals.xml"), ".xml")}, "");
  const std::string sheet = File(ContentOf(Examples + "price-list.fods"), ".fods");
  ExpectDone({"sheet", sheet, "-o", std::string(GetParam()) + ".txt"},
             std::string(GetParam()) + ".txt");
}

TEST_P(FileNames, are_shown_as_text_in_json) {
  const std::string job = File(OnePage, ".eps");
  const auto lines = m_Command.Run({"inspect", "--json", job}).Lines();
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_TRUE(nlohmann::json::accept(lines[0])) << lines[0];
}

INSTANTIATE_TEST_SUITE_P(Bytes, FileNames,
                         ::testing::Values("J\xF6rg", "a\\b", "quo\"te", "c:sign", "\xE5\xB0"));

TEST(RootNames, that_the_children_can_not_be_given_are_refused_with_the_reason) {
  for (const auto& [name, held] : {std::pair{"quo\"te", "a double quote"},
                                   {"a\\b", "a backslash"},
                                   {"a\nb", "a control character"},
                                   {"J\xF6rg", "bytes that are no UTF-8"}}) {
    CommandRunner command(CommandRunner::Children::Real);
    command.Place().Write("job.eps", OnePage);
    const std::string root = command.Place().Path(name);
    command.Set("RASTREL_HOME", root);
    for (const std::vector<std::string>& arguments : {std::vector<std::string>{"print", "job.eps"},
                                                      {"pagesize", "job.eps"},
                                                      {"modes"},
                                                      {"printers"},
                                                      {"spool", "list"},
                                                      {"queue", "job.eps"}}) {
      const CommandResult result = command.Run(arguments);
      EXPECT_EQ(result.status, 5) << arguments.front();
      EXPECT_TRUE(result.error.starts_with("rastrel: the data root can't be used: the path '"))
          << result.error;
      EXPECT_NE(result.error.find(std::string("holds ") + held +
                                  ", which can't be passed to the programs of a job"),
                std::string::npos)
          << result.error;
    }
    const CommandResult doctor = command.Run({"doctor"});
    EXPECT_EQ(doctor.status, 5);
    EXPECT_NE(doctor.output.find(std::string("holds ") + held), std::string::npos) << doctor.output;
    EXPECT_NE(doctor.output.find("set RASTREL_HOME to another directory"), std::string::npos);
    EXPECT_FALSE(fs::exists(root + "/Queue/rip")) << "nothing is laid out there";
    EXPECT_FALSE(fs::exists(command.Place().Path("a"))) << "or anywhere else";
  }
}

}  // namespace
}  // namespace rastrel::cli
