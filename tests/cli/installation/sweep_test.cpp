#include "cli/installation/sweep.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/installation/job_directory.h"
#include "rastrel/platform/os/owned_directory.h"
#include "rastrel/platform/os/owner.h"
#include "rastrel/platform/os/process.h"
#include "tests/support/library_fixture.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

class SweepTest : public test::LibraryTest {
 protected:
  SweepTest() {
    for (const char* place : {"jobs", "Queue/rip/CFM", "Queue/rip/System/c-out"})
      fs::create_directories(Root().Path(place));
  }
  [[nodiscard]] const test::ScratchDirectory& Root() const { return m_Library.Directory(); }
  [[nodiscard]] static os::ProcessIdentity Own() {
    return *os::IdentityOfProcess(os::CurrentProcessId());
  }
  // Another process that had this one's id.
  [[nodiscard]] static os::ProcessIdentity Gone() {
    os::ProcessIdentity identity = Own();
    --identity.start;
    return identity;
  }
  void GiveOwner(const std::string& directory, const os::ProcessIdentity& owner) const {
    fs::create_directories(Root().Path(directory));
    ASSERT_TRUE(os::WriteOwner(Root().Path(directory), owner));
  }
  [[nodiscard]] Names In(const std::string& directory) const {
    Names names;
    for (const auto& entry : fs::directory_iterator(Root().Path(directory)))
      names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
  }
};

TEST_F(SweepTest, takes_what_a_process_that_has_ended_has_left) {
  GiveOwner("jobs/123-1", Gone());
  Root().Write("jobs/123-1/sign.ps", "%!PS");
  GiveOwner("Queue/rip/System/c-out/run", Gone());
  Root().Write("Queue/rip/System/c-out/run/p0001/page.ppm", "P6");
  GiveOwner("Queue/rip/CFM/sign.cfm", Gone());
  GiveOwner("Queue/rip/CFM/.copy-123", Gone());
  Root().Write("Queue/rip/CFM/.copy-123/p0001/page.ppm", "P6");
  SweepLeftovers();
  EXPECT_EQ(In("jobs"), Names());
  EXPECT_EQ(In("Queue/rip/System/c-out"), Names());
  EXPECT_EQ(In("Queue/rip/CFM"), Names());
}

TEST_F(SweepTest, leaves_what_belongs_to_a_process_that_runs_or_can_not_be_looked_at) {
  os::ProcessIdentity elsewhere = Gone();
  elsewhere.machine += "-two";
  GiveOwner("jobs/123-1", Own());
  GiveOwner("jobs/123-2", elsewhere);
  GiveOwner("Queue/rip/CFM/sign.cfm", Own());
  SweepLeftovers();
  EXPECT_EQ(In("jobs"), (Names{"123-1", "123-2"}));
  EXPECT_EQ(In("Queue/rip/CFM"), Names{"sign.cfm"});
}

TEST_F(SweepTest, leaves_what_names_no_owner) {
  Root().Write("jobs/123-1/sign.ps", "%!PS");
  Root().Write("jobs/kept-123-1/sign.psp", "%!PS");
  Root().Write("jobs/123-2/.owner", "nobody\n");
  Root().Write("Queue/rip/System/c-out/run/p0001/page.ppm", "P6");
  Root().Write("Queue/rip/System/c-out/sign.cfm/.kept-unfinished", "x");
  Root().Write("Queue/rip/vkabcdef.ps", "%!PS");
  Root().Write("Queue/rip/vkabcdef.cfm/p0001/page.ppm", "P6");
  SweepLeftovers();
  EXPECT_EQ(In("jobs"), (Names{"123-1", "123-2", "kept-123-1"}));
  EXPECT_EQ(In("Queue/rip/System/c-out"), (Names{"run", "sign.cfm"}));
  EXPECT_EQ(In("Queue/rip"), (Names{"CFM", "System", "vkabcdef.cfm", "vkabcdef.ps"}));
}

TEST_F(SweepTest, leaves_pages_that_came_to_the_spool_under_a_name_that_was_taken) {
  GiveOwner("Queue/rip/CFM/sign.cfm", Gone());
  Root().Write("Queue/rip/CFM/sign.cfm/p0001/page.ppm", "P6");
  SweepLeftovers();
  EXPECT_EQ(Root().Read("Queue/rip/CFM/sign.cfm/p0001/page.ppm"), "P6");
}

TEST_F(SweepTest, follows_no_link) {
  GiveOwner("elsewhere", Gone());
  Root().Write("elsewhere/file", "x");
  for (const char* link : {"jobs/123-1", "Queue/rip/System/c-out/run", "Queue/rip/CFM/.copy-1"})
    fs::create_directory_symlink(Root().Path("elsewhere"), Root().Path(link));
  SweepLeftovers();
  EXPECT_EQ(Root().Read("elsewhere/file"), "x");
}

TEST_F(SweepTest, takes_the_directory_of_a_killed_process_with_all_in_it) {
  const std::string path = Root().Path("jobs/1-1");
  const pid_t child = ::fork();
  if (child == 0) {
    if (os::MakeOwnedDirectory(path)) {
      fs::create_directories(path + "/package/xl");
      ::raise(SIGKILL);
    }
    ::_exit(1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_TRUE(fs::exists(path + "/package/xl"));
  SweepLeftovers();
  EXPECT_FALSE(fs::exists(path));
}

TEST_F(SweepTest, leaves_links_to_an_owner_and_whatever_else_has_that_name) {
  GiveOwner("elsewhere", Gone());
  Root().Write("elsewhere/package/xl/part", "part");
  fs::create_directory(Root().Path("jobs/2-1"));
  fs::create_symlink(Root().Path("elsewhere/.owner"), Root().Path("jobs/2-1/.owner"));
  fs::create_directories(Root().Path("jobs/3-1/.owner"));
  Root().Write("jobs/4-1", "file");
  fs::create_directory(Root().Path("jobs/5-1"));
  fs::create_directory(Root().Path("jobs/6-1"));
  ASSERT_EQ(::mkfifo(Root().Path("jobs/6-1/.owner").c_str(), 0600), 0);
  SweepLeftovers();
  EXPECT_EQ(In("jobs"), (Names{"2-1", "3-1", "4-1", "5-1", "6-1"}));
  EXPECT_EQ(Root().Read("elsewhere/package/xl/part"), "part");
}

TEST_F(SweepTest, takes_temporary_files_of_a_process_that_has_ended_alone) {
  const std::string own = os::OwnTemporaryName();
  std::string gone = own;
  const std::size_t start = gone.find('.', 9) + 1;
  gone.insert(start, "1");  // it started later than this one did
  for (const std::string& name : {own, gone, std::string(".rastrel-123-1.tmp")}) {
    Root().Write(name, "x");
    Root().Write("Queue/rip/" + name, "x");
  }
  EXPECT_TRUE(os::IsAbandonedTemporaryName(gone));
  GiveOwner("jobs/" + gone, Gone());  // of a directory that had not got its name yet
  SweepLeftovers();
  EXPECT_EQ(In("jobs"), Names());
  for (const char* place : {"", "Queue/rip/"}) {
    EXPECT_TRUE(Root().Has(place + own));
    EXPECT_FALSE(Root().Has(place + gone));
    EXPECT_TRUE(Root().Has(std::string(place) + ".rastrel-123-1.tmp"));
  }
}

TEST_F(SweepTest, removes_a_limited_number_at_a_start) {
  for (int number = 1; number <= 150; ++number)
    GiveOwner("jobs/123-" + std::to_string(number), Gone());
  SweepLeftovers();
  EXPECT_EQ(In("jobs").size(), 50U);
}

// Nobody can set back when a file was changed, so the time of the sweep is set forward.
std::chrono::system_clock::time_point InHours(int hours) {
  return std::chrono::system_clock::now() + std::chrono::hours(hours);
}

TEST_F(SweepTest, takes_the_files_of_a_conversion_a_day_later) {
  for (const char* file :
       {"vkabcdef.ps", "vkabcdef.cut", "vkabcdef_Color.bmp", "vkabcdef.cfm/.info",
        "vkabcdef.cfm/page.ppm", "vk012345.pdf", "vk012345.jhdr", "vktmpabc012"})
    Root().Write(std::string("Queue/rip/") + file, "x");
  const Names before = In("Queue/rip");
  SweepConversions(InHours(0));
  SweepConversions(InHours(23));
  EXPECT_EQ(In("Queue/rip"), before);
  SweepConversions(InHours(25));
  EXPECT_EQ(In("Queue/rip"), (Names{"CFM", "System"}));
}

TEST_F(SweepTest, leaves_other_files_of_the_rip_directory) {
  for (const char* file : {"vkabcde.ps", "vkabcdefg.ps", "vkABCDEF.ps", "vkabcde6.ps", "vkabcdef",
                           "vkabcdef.txt", "vkabcdef.ps.old", "akabcdef.ps", "sign.ps",
                           "vktmpabcdef.ps", "vktmpabcde", "Separation/vkabcdef.cfm/.info"})
    Root().Write(std::string("Queue/rip/") + file, "x");
  const Names before = In("Queue/rip");
  SweepConversions(InHours(1000));
  EXPECT_EQ(In("Queue/rip"), before);
  EXPECT_EQ(Root().Read("Queue/rip/Separation/vkabcdef.cfm/.info"), "x");
}

TEST_F(SweepTest, leaves_the_files_of_conversions_where_the_user_keeps_them) {
  Root().Write("settings.ini", "[RASTREL]\nKeep PS Files = 1\n");
  Root().Write("Queue/rip/vkabcdef.ps", "%!PS");
  SweepConversions(InHours(1000));
  EXPECT_EQ(Root().Read("Queue/rip/vkabcdef.ps"), "%!PS");
}

TEST_F(SweepTest, removes_a_link_with_a_conversion_s_name_and_not_its_target) {
  Root().Write("elsewhere/file", "x");
  fs::create_directory_symlink(Root().Path("elsewhere"), Root().Path("Queue/rip/vkabcdef.cfm"));
  fs::create_symlink(Root().Path("elsewhere/file"), Root().Path("Queue/rip/vkabcdef.ps"));
  SweepConversions(InHours(25));
  EXPECT_EQ(In("Queue/rip"), (Names{"CFM", "System"}));
  EXPECT_EQ(Root().Read("elsewhere/file"), "x");
}

TEST_F(SweepTest, own_pages_are_those_that_name_this_process) {
  GiveOwner("Queue/rip/System/c-out/own", Own());
  GiveOwner("Queue/rip/System/c-out/other", *os::IdentityOfProcess(1));
  Root().Write("Queue/rip/System/c-out/nobodys/p0001/page.ppm", "P6");
  RemoveOwnPages();
  EXPECT_EQ(In("Queue/rip/System/c-out"), (Names{"nobodys", "other"}));
}

TEST_F(SweepTest, a_job_directory_is_owned_unless_it_is_kept) {
  const auto directory = JobDirectory::Create(false);
  const auto kept = JobDirectory::Create(true);
  ASSERT_TRUE(directory && kept);
  const auto owner = os::ReadOwner(directory->Path());
  ASSERT_TRUE(owner);
  EXPECT_EQ(*owner, Own());
  EXPECT_FALSE(os::ReadOwner(kept->Path()));
}

}  // namespace
}  // namespace rastrel::cli
