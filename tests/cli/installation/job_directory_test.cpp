#include "cli/installation/job_directory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <string>
#include <utility>

#include "cli/installation/installation.h"
#include "cli/printing/spool.h"
#include "cli/printing/spool_transfer.h"
#include "rastrel/platform/os/path.h"
#include "tests/support/library_fixture.h"

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

// The value of an operation that has to succeed.
template <typename T>
T Made(Expected<T> result) {
  if (!result) ADD_FAILURE() << Describe(result.Error());
  return *std::move(result);
}

class JobDirectoryTest : public test::LibraryTest {
 protected:
  JobDirectoryTest() {
    EXPECT_TRUE(MakeSureOfDataRoot());
    m_Place.Write("job.ps", "%!PS\n");
  }
  [[nodiscard]] std::set<std::string> JobNames() const {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(JobsDirectory()))
      names.insert(entry.path().filename());
    return names;
  }
  test::ScratchDirectory m_Place;
};

TEST_F(JobDirectoryTest, is_named_by_the_process_and_counted) {
  const std::string process = std::to_string(::getpid());
  const JobDirectory first = Made(JobDirectory::Create(false));
  const JobDirectory second = Made(JobDirectory::Create(false));
  EXPECT_EQ(JobNames(), std::set<std::string>({process + "-1", process + "-2"}));
  EXPECT_EQ(ProcessOfJobDirectory(process + "-2"), static_cast<unsigned>(::getpid()));
}

TEST_F(JobDirectoryTest, goes_with_all_that_it_holds) {
  {
    const JobDirectory directory = Made(JobDirectory::Create(false));
    const std::string copy = Made(directory.CopyIn(m_Place.Path("job.ps"), "name.ps"));
    EXPECT_EQ(copy, directory.Path() + "/name.ps");
    EXPECT_TRUE(fs::exists(copy));
  }
  EXPECT_TRUE(JobNames().empty());
}

TEST_F(JobDirectoryTest, stays_under_another_name_if_it_is_kept) {
  { const JobDirectory directory = Made(JobDirectory::Create(true)); }
  const std::string name = "kept-" + std::to_string(::getpid()) + "-1";
  EXPECT_EQ(JobNames(), std::set<std::string>({name}));
  EXPECT_EQ(ProcessOfJobDirectory(name), 0U);
}

TEST_F(JobDirectoryTest, makes_the_copy_readable_to_this_user) {
  fs::permissions(m_Place.Path("job.ps"), fs::perms::group_read | fs::perms::owner_read);
  const JobDirectory directory = Made(JobDirectory::Create(false));
  fs::permissions(m_Place.Path("job.ps"), fs::perms::owner_read);
  const std::string copy = Made(directory.CopyIn(m_Place.Path("job.ps"), "name.ps"));
  const auto rights = fs::status(copy).permissions();
  const auto wanted = fs::perms::owner_read | fs::perms::owner_write;
  EXPECT_EQ(rights & wanted, wanted);
}

TEST_F(JobDirectoryTest, takes_a_name_that_a_library_path_can_not_spell) {
  const std::string name = m_Place.Path("back\\slash\xFF.ps");
  fs::copy(m_Place.Path("job.ps"), name);
  const JobDirectory directory = Made(JobDirectory::Create(false));
  EXPECT_TRUE(fs::exists(Made(directory.CopyIn(name, "name.ps"))));
}

TEST_F(JobDirectoryTest, a_job_that_went_meanwhile_is_bad_input) {
  const JobDirectory directory = Made(JobDirectory::Create(false));
  const std::string gone = m_Place.Path("gone.ps");
  const auto copy = directory.CopyIn(gone, "name.ps");
  ASSERT_FALSE(copy);
  EXPECT_EQ(copy.Error().code, FailureCode::BadInput);
  EXPECT_EQ(Describe(copy.Error()),
            "can't copy the job: open '" + gone + "': No such file or directory (2)");
}

TEST_F(JobDirectoryTest, a_copy_that_can_not_be_made_is_no_fault_of_the_input) {
  const JobDirectory directory = Made(JobDirectory::Create(false));
  const auto copy = directory.CopyIn(m_Place.Path("job.ps"), "no/such/folder.ps");
  ASSERT_FALSE(copy);
  EXPECT_EQ(copy.Error().code, FailureCode::Unspecified);
}

TEST_F(JobDirectoryTest, a_place_that_is_missing_leads_to_the_doctor) {
  fs::remove(JobsDirectory());
  const auto directory = JobDirectory::Create(false);
  ASSERT_FALSE(directory);
  EXPECT_EQ(Describe(directory.Error()),
            "mkdir '" + JobsDirectory() + "/" + std::to_string(::getpid()) +
                "-1': No such file or directory (2); `rastrel doctor` tells more");
}

TEST_F(JobDirectoryTest, that_was_moved_from_removes_nothing) {
  JobDirectory first = Made(JobDirectory::Create(false));
  {
    const JobDirectory second = std::move(first);
    EXPECT_EQ(JobNames().size(), 1U);
  }
  EXPECT_TRUE(JobNames().empty());
  fs::create_directory(JobsDirectory() + "/" + std::to_string(::getpid()) + "-1");
  { const JobDirectory empty = std::move(first); }  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(JobNames().size(), 1U);
}

using SpoolReservationTest = JobDirectoryTest;

TEST_F(SpoolReservationTest, takes_the_next_free_name) {
  const SpoolReservation first = Made(SpoolReservation::Create("sign"));
  const SpoolReservation second = Made(SpoolReservation::Create("sign"));
  const SpoolReservation third = Made(SpoolReservation::Create("SIGN"));
  EXPECT_EQ(first.Name(), "sign");
  EXPECT_EQ(second.Name(), "sign-2");
  EXPECT_EQ(third.Name(), "SIGN-3");  // names that differ in case only would be one to the library
}

TEST_F(SpoolReservationTest, gives_the_name_back_unless_pages_came) {
  { const SpoolReservation unused = Made(SpoolReservation::Create("sign")); }
  EXPECT_FALSE(FindSpoolEntry("sign"));
  {
    SpoolReservation used = Made(SpoolReservation::Create("sign"));
    m_Library.Directory().Write("Queue/rip/System/c-out/sign.cfm/p1/page", "x");
    m_Library.Directory().Write("Queue/rip/System/c-out/sign.cfm/.kept",
                                "Rastrel kept job 1\npages: 1\npage: 1 1 p1\nend\n");
    CCFMFile pages;
    pages.AddEntry(L"elsewhere\\", L"p1");
    const auto published = used.Publish(pages);
    EXPECT_TRUE(published) << Describe(published.Error());
    EXPECT_EQ(pages.Entries[0].Directory, os::FromNative(used.Directory()) + L"\\");
  }
  EXPECT_TRUE(FindSpoolEntry("sign"));
}

TEST_F(SpoolReservationTest, no_text_leads_out_of_the_spool) {
  for (const char* name : {"", ".", "..", "../CFM/sign", "/", "sign/", "sign\\"})
    EXPECT_FALSE(FindSpoolEntry(name)) << name;
}

TEST_F(SpoolReservationTest, an_entry_is_found_by_the_names_that_the_list_has_and_by_no_other) {
  const test::ScratchDirectory& root = m_Library.Directory();
  const std::string spool = "Queue/rip/CFM/";
  for (const char* name : {"sign", "two words", "Schild \303\244", "a\\b", ".hidden", "", "x.cfm"})
    root.Write(spool + name + ".cfm/p1/page", "x");
  root.Write("Queue/rip/System/c-out/staged.cfm/p1/page", "x");
  root.Write(spool + "file.cfm", "x");
  root.Write(spool + "other/p1/page", "x");
  ASSERT_EQ(symlink("sign.cfm", root.Path(spool + "link.cfm").c_str()), 0);
  std::set<std::string> listed;
  for (const SpoolEntry& entry : ListSpool()) listed.insert(entry.name);
  EXPECT_TRUE(listed.contains("staged"));
  std::set<std::string> asked{
      "SIGN",  "sign.cfm", "sign/p1", "a/b",    "b", ".hidden", "file",
      "other", "link",     "..",      "./sign", "x", "hidden",  std::string("sign\0", 5)};
  asked.insert(listed.begin(), listed.end());
  for (const std::string& name : asked)
    EXPECT_EQ(FindSpoolEntry(name).has_value(), listed.contains(name)) << name;
}

}  // namespace
}  // namespace rastrel::cli
