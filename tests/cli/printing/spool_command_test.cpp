// Output of the commands on the spool for a job whose files were put there by hand.

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "pages/page_info.h"
#include "tests/cli/command_runner.h"

namespace rastrel::test {
namespace {

namespace fs = std::filesystem;

class SpoolCommand : public ::testing::Test {
 protected:
  SpoolCommand() {
    // The first run lays the data root out.
    EXPECT_EQ(m_Command.Run({"spool", "list"}).output, "");
    m_Command.Set("TZ", "UTC0");
  }
  // Puts a file of so many bytes into an entry, "sign.cfm/p1/page".
  void Write(const std::string& name, std::size_t bytes) const {
    const fs::path path = Spool() / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path) << std::string(bytes, 'x');
  }
  // Gives an entry the record of its pages.
  void Record(const std::string& entry, const std::string& pages) const {
    std::ofstream(Spool() / (entry + ".cfm/.kept")) << "Rastrel kept job 1\n" << pages << "end\n";
  }
  // Dates an entry: seconds since 1970.
  void Date(const std::string& entry, std::int64_t seconds) const {
    const auto time = std::chrono::sys_seconds(std::chrono::seconds(seconds));
    fs::last_write_time(Spool() / entry, std::chrono::file_clock::from_sys(time));
  }
  [[nodiscard]] fs::path Spool() const { return fs::path(m_Command.Root()) / "Queue/rip/CFM"; }

  CommandRunner m_Command{CommandRunner::Children::None};
};

// 86,399 seconds after the beginning of 1970 is the last one of its first day.
TEST_F(SpoolCommand, list_has_name_pages_bytes_and_date) {
  Write("sign.cfm/p1/page", 1000);
  Write("sign.cfm/p2/page", 234);
  Record("sign", "pages: 2\npage: 1 1000 p1\npage: 1 234 p2\n");
  Write("banner.cfm/p1/page", 5);
  Record("banner", "pages: 1\npage: 1 5 p1\n");
  Date("sign.cfm", 86'399);
  Date("banner.cfm", 86'400);
  fs::create_directory(Spool() / "going.cfm");
  Date("going.cfm", 0);
  EXPECT_EQ(m_Command.Run({"spool", "list"}).output,
            "banner\t1 page\t5 bytes\t1970-01-02 00:00:00\n"
            "going\t0 pages\t0 bytes\t1970-01-01 00:00:00\tincomplete: under way, or cut off\n"
            "sign\t2 pages\t1234 bytes\t1970-01-01 23:59:59\n");
}

TEST_F(SpoolCommand, show_rounds_a_resolution_to_hundredths) {
  pages::PageInfo info;
  info.page = 1;
  info.width = info.height = 1;
  info.color = pages::PageColor::Gray;
  info.planes = {{"Gray", "gray.tif", 0}};
  info.files = {{"gray.tif", 1, std::string(64, '1')}};
  info.xResolution = 1270.004;
  info.yResolution = 72.126;
  fs::create_directories(Spool() / "sign.cfm/p1");
  std::ofstream(Spool() / "sign.cfm/p1" / pages::PageInfoName) << pages::FormatPageInfo(info);
  const std::string output = m_Command.Run({"spool", "show", "sign"}).output;
  EXPECT_NE(output.find("\t1270 x 72.13 dpi\t"), std::string::npos) << output;
}

TEST_F(SpoolCommand, list_has_the_same_in_json) {
  Write("sign.cfm/p1/page", 1234);
  Record("sign", "pages: 1\npage: 1 1234 p1\n");
  const auto entry = nlohmann::json::parse(m_Command.Run({"spool", "list", "--json"}).output);
  EXPECT_EQ(entry["text"], "sign");
  EXPECT_EQ(entry["pages"], 1);
  EXPECT_EQ(entry["bytes"], 1234);
  EXPECT_EQ(entry["state"], "kept");
}

// The file has a first line without an end.
TEST_F(SpoolCommand, show_says_why_a_page_can_not_be_read) {
  Write("sign.cfm/p1/.info", 3);
  const std::string output = m_Command.Run({"spool", "show", "sign"}).output;
  EXPECT_NE(output.find("\np1\tread page info 'line 1: no line feed at the end': "
                        "Invalid argument (22)\n"),
            std::string::npos)
      << output;
}

TEST_F(SpoolCommand, size_is_that_of_one_or_of_all) {
  Write("sign.cfm/p1/page", 1000);
  Write("banner.cfm/p1/page", 5);
  EXPECT_EQ(m_Command.Run({"spool", "size", "sign"}).output, "1000 bytes\n");
  EXPECT_EQ(m_Command.Run({"spool", "size"}).output, "1005 bytes\n");
}

TEST_F(SpoolCommand, removing_a_job_that_is_a_link_leaves_the_directory_it_leads_to) {
  const ScratchDirectory elsewhere;
  elsewhere.Write("p1/page", "x");
  fs::create_directory_symlink(elsewhere.Path(), Spool() / "sign.cfm");
  const CommandResult result = m_Command.Run({"spool", "remove", "sign"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "removed sign\n");
  EXPECT_FALSE(fs::is_symlink(Spool() / "sign.cfm"));
  EXPECT_EQ(elsewhere.Read("p1/page"), "x");
}

}  // namespace
}  // namespace rastrel::test
