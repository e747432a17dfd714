// Jobs in the spool that are not whole, and how they came to be so.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/statfs.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>

#include "pages/page_info.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/process.h"
#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

// A page as a RIP makes it, with its description.
void WritePage(const fs::path& directory, unsigned number) {
  fs::create_directories(directory);
  std::ofstream(directory / "page.pgm") << "pixels of page " << number;
  pages::PageInfo info;
  info.page = number;
  info.width = info.height = 1;
  info.xResolution = info.yResolution = 72;
  info.color = pages::PageColor::Gray;
  info.planes.push_back({"Gray", "page.pgm", 0});
  info.files.push_back(*pages::DescribeFile(directory.string(), "page.pgm"));
  std::ofstream(directory / pages::PageInfoName) << pages::FormatPageInfo(info);
}

// The identity of a process that has ended.
std::string GoneProcess() {
  auto identity = *os::IdentityOfProcess(os::CurrentProcessId());
  --identity.start;
  return os::FormatIdentity(identity);
}

class SpoolRecord : public ::testing::Test {
 protected:
  SpoolRecord() {
    EXPECT_EQ(m_Command.Run({"spool", "list"}).output, "");
    m_Command.WriteUsualChildren();
    m_Command.Place().Write("job.ps", "%!PS\nshowpage\n");
  }
  [[nodiscard]] fs::path Spool() const { return fs::path(m_Command.Root()) / "Queue/rip/CFM"; }
  [[nodiscard]] fs::path Output() const {
    return fs::path(m_Command.Root()) / "Queue/rip/System/c-out";
  }
  static void Write(const fs::path& file, const std::string& text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text;
  }
  // A job of two pages of which the first has moved.
  void WriteInterruptedMove(const fs::path& directory, const std::string& mover) const {
    WritePage(directory / "p0001", 1);
    const fs::path run = Output() / "run";
    WritePage(run / "p0002", 2);
    std::string text = "Rastrel kept job 1\nmover: " + mover + "\npages: 2\n";
    for (const fs::path& page : {directory / "p0001", run / "p0002"}) {
      std::uintmax_t bytes = 0;
      for (const auto& entry : fs::directory_iterator(page)) bytes += entry.file_size();
      const std::string title = page.filename();
      text += "page: 2 " + std::to_string(bytes) + " " + title +
              "\nfrom: " + (run / title).string() + "\n";
    }
    Write(directory / ".kept-unfinished", text + "end\n");
  }
  void ExpectIncomplete(const std::string& name, const std::string& why) {
    const std::string listed = m_Command.Run({"spool", "list"}).output;
    EXPECT_NE(listed.find("\tincomplete: "), listed.npos) << listed;
    EXPECT_NE(listed.find(why), listed.npos) << listed;
    const CommandResult result = m_Command.Run({"reprint", name});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.output, "");
    EXPECT_NE(result.error.find(why), result.error.npos) << result.error;
    EXPECT_NE(result.error.find("rastrel spool repair"), result.error.npos) << result.error;
  }
  void ExpectPrintable(const std::string& name, std::size_t pages) {
    const CommandResult result = m_Command.Run({"reprint", name});
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.Lines().size(), pages);
  }

  CommandRunner m_Command{CommandRunner::Children::None};
};

TEST_F(SpoolRecord, a_kept_job_has_one_and_leaves_nothing_where_its_pages_were_made) {
  ASSERT_EQ(m_Command.Run({"print", "job.ps", "--spool"}).status, 0);
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM/job.cfm"), (Names{".kept", "p0001", "p0002"}));
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/System/c-out"), Names());
  EXPECT_EQ(m_Command.NamesIn("jobs"), Names());
  const auto json = nlohmann::json::parse(m_Command.Run({"spool", "list", "--json"}).LastLine());
  EXPECT_EQ(json["state"], "kept");
  EXPECT_EQ(json["pages"], 2);
  EXPECT_FALSE(json.contains("problem"));
}

TEST_F(SpoolRecord, a_job_that_lacks_a_page_or_bytes_of_one_is_not_printed) {
  m_Command.WriteRip(R"(run=$(dirname "$0")/System/c-out/run
mkdir -p "$run/A" "$run/B"
printf 12345 > "$run/A/pixels"
for p in A B; do printf 'begin := once\n id := x\n dir := %s/\n title := %s\nend :=\n' "$run" $p; done
)");
  ASSERT_EQ(m_Command.Run({"print", "job.ps", "--spool", "--save-ticket", "t"}).status, 0);
  ExpectPrintable("job", 2);
  fs::resize_file(Spool() / "job.cfm/A/pixels", 4);
  ExpectIncomplete("job", "it has 4 bytes in 1 files in place of 5 bytes in 1 files");
  EXPECT_EQ(m_Command.Run({"reprint", "t"}).status, 3);
  fs::resize_file(Spool() / "job.cfm/A/pixels", 5);
  fs::remove(Spool() / "job.cfm/B");
  ExpectIncomplete("job", "job.cfm/B");
  const CommandResult repair = m_Command.Run({"spool", "repair", "job"});
  EXPECT_EQ(repair.status, 1);
  EXPECT_NE(repair.output.find("can't be finished"), repair.output.npos) << repair.output;
  EXPECT_TRUE(fs::exists(Spool() / "job.cfm/A/pixels"));
  EXPECT_EQ(m_Command.Run({"spool", "repair", "--remove"}).status, 0);
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM"), Names());
}

TEST_F(SpoolRecord, a_job_of_an_earlier_version_is_judged_by_its_pages) {
  for (const unsigned page : {1U, 2U, 3U})
    WritePage(Spool() / "old.cfm" / pages::PageName(page), page);
  const std::string listed = m_Command.Run({"spool", "list"}).output;
  EXPECT_NE(listed.find("old\t3 pages\t"), listed.npos) << listed;
  EXPECT_NE(listed.find("\tkept without a record\n"), listed.npos) << listed;
  ExpectPrintable("old", 3);
  std::ofstream(Spool() / "old.cfm/p0003/page.pgm") << "Pixels of page 3";  // as long as before
  EXPECT_EQ(m_Command.Run({"reprint", "old"}).status, 3);
  std::ofstream(Spool() / "old.cfm/p0003/page.pgm") << "short";
  ExpectIncomplete("old", "it has 5 bytes in place of 16");
  fs::remove_all(Spool() / "old.cfm/p0003");
  ExpectPrintable("old", 2);
  fs::remove_all(Spool() / "old.cfm/p0001");
  ExpectIncomplete("old", "there is no page 1 before page 2");
}

TEST_F(SpoolRecord, a_move_that_was_cut_off_is_finished) {
  WriteInterruptedMove(Spool() / "cut.cfm", GoneProcess());
  ExpectIncomplete("cut", "its pages were not moved to the end");
  const CommandResult result = m_Command.Run({"spool", "repair", "cut"});
  EXPECT_EQ(result.status, 0) << result.output << result.error;
  EXPECT_EQ(result.output, "finished cut\n");
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM/cut.cfm"), (Names{".kept", "p0001", "p0002"}));
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/System/c-out"), Names());
  ExpectPrintable("cut", 2);
}

TEST_F(SpoolRecord, a_move_beside_the_rips_pages_is_finished_and_comes_to_the_spool) {
  WriteInterruptedMove(Output() / "cut.cfm", GoneProcess());
  ExpectIncomplete("cut", "its pages were not moved to the end");
  EXPECT_EQ(m_Command.Run({"spool", "repair"}).output, "finished cut\n");
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM/cut.cfm"), (Names{".kept", "p0001", "p0002"}));
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/System/c-out"), Names());
}

TEST_F(SpoolRecord, a_move_whose_page_is_nowhere_changes_nothing) {
  WriteInterruptedMove(Spool() / "cut.cfm", GoneProcess());
  fs::resize_file(Output() / "run/p0002/page.pgm", 3);
  const CommandResult result = m_Command.Run({"spool", "repair", "cut"});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.output.find("the page 'p0002' is whole neither"), result.output.npos)
      << result.output;
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM/cut.cfm"), (Names{".kept-unfinished", "p0001"}));
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/System/c-out/run"), Names{"p0002"});
}

TEST_F(SpoolRecord, a_job_that_was_cut_off_is_removed_with_the_pages_that_have_not_moved) {
  for (const fs::path& place : {Spool() / "cut.cfm", Output() / "cut.cfm"}) {
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"spool", "remove", "cut"},
          std::vector<std::string>{"spool", "repair", "cut", "--remove"}}) {
      WriteInterruptedMove(place, GoneProcess());
      fs::resize_file(Output() / "run/p0002/page.pgm", 3);  // so that it can't be finished
      const CommandResult result = m_Command.Run(words);
      EXPECT_EQ(result.status, 0) << result.error;
      EXPECT_EQ(result.output, "removed cut\n");
      EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM"), Names());
      EXPECT_EQ(m_Command.NamesIn("Queue/rip/System/c-out"), Names());
    }
  }
}

TEST_F(SpoolRecord, a_removed_job_that_is_a_link_takes_no_pages_along) {
  const ScratchDirectory elsewhere;
  WriteInterruptedMove(elsewhere.Path("real"), GoneProcess());
  fs::create_directory_symlink(elsewhere.Path("real"), Spool() / "cut.cfm");
  EXPECT_EQ(m_Command.Run({"spool", "remove", "cut"}).status, 0);
  EXPECT_TRUE(elsewhere.Has("real/p0001/page.pgm"));
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/System/c-out/run"), Names{"p0002"});
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM"), Names());
}

TEST_F(SpoolRecord, a_job_whose_mover_still_runs_is_left_to_it) {
  WriteInterruptedMove(Spool() / "cut.cfm",
                       os::FormatIdentity(*os::IdentityOfProcess(os::CurrentProcessId())));
  ExpectIncomplete("cut", "its pages are being moved");
  EXPECT_EQ(m_Command.Run({"spool", "repair", "cut"}).status, 1);
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM/cut.cfm"), (Names{".kept-unfinished", "p0001"}));
}

TEST_F(SpoolRecord, a_note_that_names_somebody_elses_directory_takes_nothing_from_it) {
  WriteInterruptedMove(Spool() / "cut.cfm", GoneProcess());
  const ScratchDirectory elsewhere;
  WritePage(elsewhere.Path("p0002"), 2);
  fs::remove_all(Output() / "run");
  std::ifstream stream(Spool() / "cut.cfm/.kept-unfinished");
  std::string text{std::istreambuf_iterator<char>(stream), {}};
  const std::string run = (Output() / "run").string();
  for (std::size_t at = text.find(run); at != text.npos; at = text.find(run))
    text.replace(at, run.size(), elsewhere.Path());
  Write(Spool() / "cut.cfm/.kept-unfinished", text);
  EXPECT_EQ(m_Command.Run({"spool", "repair", "cut"}).status, 1);
  EXPECT_TRUE(elsewhere.Has("p0002/page.pgm"));
}

TEST_F(SpoolRecord, pages_that_can_not_come_to_the_spool_stay_and_the_command_says_where) {
  // While the job is made, its name in the spool becomes a directory that holds something.
  m_Command.WriteOdalis(
      "cat >/dev/null\necho x > \"$RASTREL_HOME/Queue/rip/CFM/job.cfm/foreign\"\n");
  const CommandResult result = m_Command.Run({"print", "job.ps", "--spool"});
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.error.find("the pages can't be moved to the spool"), result.error.npos)
      << result.error;
  EXPECT_NE(result.error.find((Output() / "job.cfm").string()), result.error.npos) << result.error;
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/System/c-out/job.cfm"),
            (Names{".kept", "p0001", "p0002"}));
  fs::remove(Spool() / "job.cfm/foreign");
  EXPECT_EQ(m_Command.Run({"spool", "repair", "job"}).output, "finished job\n");
  m_Command.WriteUsualChildren();
  ExpectPrintable("job", 2);
}

// A spool on a file system in memory, where the RIP's pages are not.
TEST_F(SpoolRecord, a_spool_on_another_file_system_gets_whole_jobs) {
  const MemoryScratchDirectory other;
  struct statfs here {};
  struct statfs there {};
  ASSERT_EQ(::statfs(m_Command.Root().c_str(), &here) + ::statfs(other.Path().c_str(), &there), 0);
  if (here.f_type == there.f_type) GTEST_SKIP() << "there is no other file system";
  fs::remove_all(Spool());
  fs::create_directory_symlink(other.Path(), Spool());
  const CommandResult result = m_Command.Run({"print", "job.ps", "--spool"});
  ASSERT_EQ(result.status, 0) << result.error;
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM"), Names{"job.cfm"});
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM/job.cfm"), (Names{".kept", "p0001", "p0002"}));
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/System/c-out"), Names());
  ExpectPrintable("job", 2);
}

// The engine waits, and meanwhile the name is taken but nothing of the job can be seen.
TEST_F(SpoolRecord, a_job_under_way_is_shown_as_such_and_is_neither_repaired_nor_removed) {
  m_Command.WriteOdalis("exec sleep 600\n");
  m_Command.Start({"print", "job.ps", "--spool"}, "Start Printing");
  CommandRunner other(CommandRunner::Children::None);
  other.Set("RASTREL_HOME", m_Command.Root());
  const std::string listed = other.Run({"spool", "list"}).output;
  EXPECT_TRUE(listed.ends_with("\tincomplete: its print is under way\n")) << listed;
  EXPECT_EQ(other.Run({"spool", "repair", "job", "--remove"}).status, 1);
  const CommandResult removed = other.Run({"spool", "remove", "job"});
  EXPECT_EQ(removed.status, 3);
  EXPECT_EQ(removed.error,
            "rastrel: the job 'job' in the spool can't be removed: its print is under way\n");
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM"), Names{"job.cfm"});
  m_Command.Signal(SIGINT);
  EXPECT_EQ(m_Command.Wait().status, 4);
  EXPECT_EQ(m_Command.NamesIn("Queue/rip/CFM"), Names());
}

}  // namespace
}  // namespace rastrel::test
