// Jobs for the printer "Separation", which become files in the separation directory.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

constexpr const char* Job = "%!PS\nshowpage\n";

class SeparationPrint : public ::testing::Test {
 protected:
  SeparationPrint() { m_Command.Place().Write("job.ps", Job); }
  CommandResult Print(std::vector<std::string> more = {}) {
    std::vector<std::string> words{"print", "job.ps", "--printer", "Separation"};
    words.insert(words.end(), more.begin(), more.end());
    return m_Command.Run(words);
  }
  [[nodiscard]] Names Kept() const { return m_Command.NamesIn("Queue/rip/Separation"); }
  [[nodiscard]] std::string PathOf(const std::string& name) const {
    return m_Command.Root() + "/Queue/rip/Separation/" + name;
  }
  [[nodiscard]] std::string Settings() const {
    std::ifstream stream(m_Command.Root() + "/settings.ini");
    return {std::istreambuf_iterator<char>(stream), {}};
  }

  CommandRunner m_Command{CommandRunner::Children::None};
};

TEST_F(SeparationPrint, keeps_the_job_as_it_is_and_names_it_in_the_settings) {
  const CommandResult result = Print();
  ASSERT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.output, PathOf("job.ps") + "\n");
  std::ifstream stream(PathOf("job.ps"));
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), Job);
  EXPECT_EQ(Settings(), "[Separation]\nOutput File = " + PathOf("job.ps") + "\n");
  EXPECT_EQ(m_Command.NamesIn("jobs"), Names());
  const fs::perms access = fs::status(PathOf("job.ps")).permissions();
  EXPECT_EQ(access & (fs::perms::group_all | fs::perms::others_all), fs::perms::none);
}

TEST_F(SeparationPrint, takes_the_next_free_name_and_replaces_no_file) {
  ASSERT_EQ(Print().status, 0);
  EXPECT_EQ(Print().output, PathOf("job-2.ps") + "\n");
  EXPECT_EQ(Kept(), (Names{"job-2.ps", "job.ps"}));
  EXPECT_NE(Settings().find("Output File = " + PathOf("job-2.ps")), std::string::npos);
}

TEST_F(SeparationPrint, says_the_path_in_json) {
  EXPECT_EQ(Print({"--json"}).output,
            R"({"event":"done","exit":0,"paths":[")" + PathOf("job.ps") + "\"]}\n");
}

TEST_F(SeparationPrint, refuses_options_of_pages_and_several_files) {
  for (const std::vector<std::string>& more :
       {Names{"--copies", "2"}, Names{"--spool"}, Names{"--scale", "a4"}, Names{"--output", "x"}}) {
    const CommandResult result = Print(more);
    EXPECT_EQ(result.status, 2) << more.front();
    EXPECT_NE(result.error.find("the printer 'Separation' takes the file as it is"),
              std::string::npos)
        << result.error;
  }
  const CommandResult two = Print({"job.ps"});
  EXPECT_EQ(two.status, 2);
  EXPECT_NE(two.error.find("keeps one file"), std::string::npos) << two.error;
  EXPECT_EQ(Kept(), Names());
}

TEST_F(SeparationPrint, refuses_a_file_that_is_missing) {
  EXPECT_EQ(m_Command.Run({"print", "gone.ps", "--printer", "Separation"}).status, 3);
  EXPECT_EQ(Kept(), Names());
}

TEST_F(SeparationPrint, goes_to_a_device_of_that_name_if_there_is_one) {
  ASSERT_EQ(m_Command.Run({"printers"}).status, 0);
  m_Command.WriteUsualChildren();
  std::ofstream(m_Command.Root() + "/devices.txt", std::ios::app)
      << "\n[Separation]\nkind = file\nformat = png\npattern = {output}/{job}-{page}.png\n";
  EXPECT_EQ(Print().status, 0);
  EXPECT_EQ(Kept(), Names());
}

}  // namespace
}  // namespace rastrel::test
