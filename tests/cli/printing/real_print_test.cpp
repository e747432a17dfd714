// The program with the children that ship with it.

#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

constexpr const char* TwoPages =
    "%!PS-Adobe-3.0\n%%Pages: 2\n%%EndComments\n<< /PageSize [120 80] >> setpagedevice\n"
    "1 0 0 setrgbcolor 10 10 40 40 rectfill showpage\n"
    "0 0 1 setrgbcolor 20 20 40 40 rectfill showpage\n%%EOF\n";

class RealPrintTest : public ::testing::Test {
 protected:
  RealPrintTest() { m_Command.Place().Write("job.ps", TwoPages); }
  [[nodiscard]] static std::string NameOf(const std::string& path) {
    return fs::path(path).filename();
  }
  // The line of the job's second page in the spool.
  nlohmann::json SecondPage() {
    const auto lines = m_Command.Run({"spool", "show", "job", "--json"}).Lines();
    if (lines.size() != 3) return {};
    return nlohmann::json::parse(lines[2]);
  }
  CommandRunner m_Command{CommandRunner::Children::Real};
};

TEST_F(RealPrintTest, the_shop_sign_prints_as_two_tiff_files) {
  const CommandResult result =
      m_Command.Run({"print", RASTREL_SOURCE_DIR "/examples/shopfront.ps"});
  ASSERT_EQ(result.status, 0) << result.error;
  const auto files = result.Lines();
  ASSERT_EQ(files.size(), 2U);
  for (const std::string& file : files) {
    std::ifstream stream(file, std::ios::binary);
    std::string magic(4, ' ');
    stream.read(magic.data(), 4);
    EXPECT_TRUE(magic == std::string("II*\0", 4) || magic == std::string("MM\0*", 4)) << file;
  }
  EXPECT_EQ(m_Command.NamesIn("jobs"), Names());
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/System/c-out"), Names());
}

TEST_F(RealPrintTest, pages_in_the_spool_reprint_without_ghostscript_alone_twice_and_elsewhere) {
  ASSERT_EQ(m_Command.Run({"print", "job.ps", "--spool"}).status, 0);
  m_Command.Set("PATH", "/nowhere");
  const CommandResult result =
      m_Command.Run({"reprint", "job", "--pages", "2", "--copies", "2", "--printer", "PNG files"});
  ASSERT_EQ(result.status, 0) << result.error;
  const auto files = result.Lines();
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(NameOf(files[0]), "job-2.png");
  EXPECT_EQ(NameOf(files[1]), "job-2-2.png");
  EXPECT_EQ(m_Command.Run({"reprint", "job"}).status, 0);  // nothing was used up
}

TEST_F(RealPrintTest, a_killed_print_leaves_nothing_to_the_next_command) {
  ASSERT_EQ(m_Command.Run({"spool", "list"}).status, 0);
  m_Command.WriteOdalis("while kill -0 $PPID 2>/dev/null; do sleep 0.1; done\n");
  m_Command.Start({"print", "job.ps", "--spool"}, "Start Printing");
  m_Command.Signal(SIGKILL);
  EXPECT_EQ(m_Command.Wait().status, -1);
  EXPECT_EQ(m_Command.NamesIn("jobs").size(), 1U);
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/System/c-out").size(), 1U);
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM").size(), 1U);
  EXPECT_EQ(m_Command.Run({"spool", "list"}).output, "");
  EXPECT_EQ(m_Command.NamesIn("jobs"), Names());
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/System/c-out"), Names());
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM"), Names());
}

// Its prefix would have the job's own name.
TEST_F(RealPrintTest, a_job_with_the_extension_of_a_prefix_prints) {
  m_Command.Place().Write("sign.psp", TwoPages);
  const CommandResult result = m_Command.Run({"print", "sign.psp"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(result.Lines().size(), 2U);
  EXPECT_EQ(m_Command.Place().Read("sign.psp"), TwoPages);
}

TEST_F(RealPrintTest, ghostscript_off_the_path_is_5) {
  m_Command.Set("PATH", "/nowhere");
  const CommandResult result = m_Command.Run({"print", "job.ps"});
  EXPECT_EQ(result.status, 5);
  EXPECT_NE(result.error.find("Ghostscript"), std::string::npos) << result.error;
  EXPECT_EQ(m_Command.Run({"doctor"}).status, 5);
}

TEST_F(RealPrintTest, the_doctor_finds_all_well) {
  const CommandResult result = m_Command.Run({"doctor"});
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(result.output.find("WRONG"), std::string::npos) << result.output;
}

// The doctor's finding of that name.
nlohmann::json FindingOf(const CommandResult& result, const std::string& name) {
  for (const std::string& line : result.Lines()) {
    auto finding = nlohmann::json::parse(line);
    if (finding["name"] == name) return finding;
  }
  return {};
}

TEST_F(RealPrintTest, the_doctor_counts_the_files_of_the_prolog_and_names_one_that_is_missing) {
  const auto shipped = fs::directory_iterator(RASTREL_SOURCE_DIR "/share/rip/System/prolog");
  const auto count = std::distance(begin(shipped), end(shipped));
  const auto whole = FindingOf(m_Command.Run({"doctor", "--json"}), "prolog");
  const fs::path prolog = m_Command.Root() + "/Queue/rip/System/prolog";
  EXPECT_EQ(whole["state"], "good");
  EXPECT_EQ(whole["text"], std::to_string(count) + " files");
  EXPECT_EQ(whole["path"], prolog.string());
  // A file in the directory's place is the user's own, and is not laid out anew.
  fs::remove_all(prolog);
  std::ofstream(prolog.string()) << "no directory";
  const CommandResult result = m_Command.Run({"doctor", "--json"});
  EXPECT_EQ(result.status, 5);
  const auto broken = FindingOf(result, "prolog");
  EXPECT_EQ(broken["state"], "bad");
  EXPECT_EQ(broken["text"], "missing");
  EXPECT_EQ(fs::path(broken["path"].get<std::string>()).parent_path(), prolog);
  EXPECT_NE(broken["mend"].get<std::string>(), "");
}

TEST_F(RealPrintTest, the_doctor_knows_the_queue_program) {
  ASSERT_EQ(m_Command.Run({"doctor"}).status, 0);
  const std::string program = m_Command.Root() + "/Queue/JobSpool.exe";
  fs::remove(program);
  // A user's own stays, and is none that can be started.
  std::ofstream(program) << "not a program";
  const CommandResult result = m_Command.Run({"doctor"});
  EXPECT_EQ(result.status, 5);
  EXPECT_NE(result.output.find("queue program"), std::string::npos) << result.output;
  EXPECT_NE(result.output.find("not executable"), std::string::npos) << result.output;
}

TEST_F(RealPrintTest, the_doctor_reports_a_faulty_devices_file_by_line) {
  ASSERT_EQ(m_Command.Run({"doctor"}).status, 0);
  std::ofstream(m_Command.Root() + "/devices.txt") << "[A]\nkind = nonsense\n";
  const CommandResult result = m_Command.Run({"doctor"});
  EXPECT_EQ(result.status, 5);
  EXPECT_NE(result.output.find("line 2"), std::string::npos) << result.output;
}

TEST_F(RealPrintTest, a_file_without_extension_in_a_read_only_folder_prints) {
  m_Command.Place().Write("inner/noext", TwoPages);
  const fs::path inner = m_Command.Place().Path("inner");
  fs::permissions(inner, fs::perms::owner_read | fs::perms::owner_exec);
  const CommandResult result = m_Command.Run({"print", "inner/noext"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(std::distance(fs::directory_iterator(inner), {}), 1);
  fs::permissions(inner, fs::perms::owner_all);
}

TEST_F(RealPrintTest, a_mode_is_found_without_its_extension_and_in_any_case) {
  const CommandResult result = m_Command.Run({"print", "job.ps", "--mode", "tiff/TIFF default"});
  EXPECT_EQ(result.status, 0) << result.error;
}

TEST_F(RealPrintTest, a_postscript_error_is_reported_by_the_interpreters_message) {
  m_Command.Place().Write("bad.ps", "%!PS\nundefinedthing showpage\n");
  const CommandResult result = m_Command.Run({"print", "bad.ps", "--json"});
  EXPECT_EQ(result.status, 1);
  const auto last = nlohmann::json::parse(result.LastLine());
  EXPECT_EQ(last["stage"], "rip");
  EXPECT_NE(last["text"].get<std::string>().find("undefinedthing"), std::string::npos) << last;
}

TEST_F(RealPrintTest, an_interrupted_job_leaves_no_process_and_no_file) {
  m_Command.Place().Write("endless.ps", "%!PS\n{ 0 0 moveto } loop\n");
  m_Command.Start({"print", "endless.ps", "--spool"}, "Rip Interpreting");
  m_Command.Signal(SIGINT);
  const CommandResult result = m_Command.Wait();
  EXPECT_EQ(result.status, 4) << result.error;
  EXPECT_EQ(m_Command.NamesIn("jobs"), Names());
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM"), Names());
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/System/c-out"), Names());
  EXPECT_EQ(m_Command.Processes(), 0);
}

TEST_F(RealPrintTest, the_pages_of_a_spool_entry_are_listed_by_their_description) {
  ASSERT_EQ(m_Command.Run({"print", "job.ps", "--spool", "--mode", "Screen/preview"}).status, 0);
  const auto page = SecondPage();
  EXPECT_EQ(page["page"], 2);
  EXPECT_EQ(page["width"], 160);  // 120 points at 96 pixels per inch
  EXPECT_EQ(page["height"], 107);
  EXPECT_EQ(page["planes"], nlohmann::json({"Red", "Green", "Blue"}));
}

// The lowest resolution that is good enough for a sign that is looked at from close by.
TEST_F(RealPrintTest, a_print_that_names_no_mode_has_300_pixels_per_inch_in_rgb) {
  ASSERT_EQ(m_Command.Run({"print", "job.ps", "--spool"}).status, 0);
  const auto page = SecondPage();
  EXPECT_EQ(page["width"], 500);  // of 120 points
  EXPECT_EQ(page["height"], 333);
  EXPECT_EQ(page["planes"], nlohmann::json({"Red", "Green", "Blue"}));
}

}  // namespace
}  // namespace rastrel::test
