// The folder of a job's kept pages, and the failure if it can't be had.

#include <gtest/gtest.h>

#include "tests/support/print_fixture.h"

using rastrel::test::Lines;

namespace {

class SpooledJob : public rastrel::test::PrintTest {
 protected:
  SpooledJob() { RequestSpool(); }
  [[nodiscard]] Lines Spool() const { return Tree("Queue/rip/CFM"); }
  void ExpectFailure() {
    EXPECT_EQ(m_Ticket.m_Told.Stages(),
              "started, ripping, ripped, printing, printed, spooling, spooled, completed");
    EXPECT_EQ(Errors(), Lines{"system: spool output"});
    EXPECT_EQ(End(), "holding: spool output");
    EXPECT_TRUE(HasLogged("[Print]: CFM spooling failed. Deleting CFM. Aborting."));
    const Lines lines = m_Ticket.m_Told.Behind("Log ");
    EXPECT_EQ(Lines(lines.end() - 4, lines.end()),
              (Lines{"CFM Spooling failed. Deleting CFM. Aborting.", "(*v*)Can't spool output",
                     "Printing done", "(*v*)Processing Completed"}));
    EXPECT_TRUE(m_Ticket.m_CFMFile.Entries.empty());
    EXPECT_EQ(Tree("job"), Lines{"sign.ps"});
  }
};

const Lines BothPages = {"sign.cfm/", "sign.cfm/A/", "sign.cfm/A/pixels", "sign.cfm/B/",
                         "sign.cfm/B/pixels"};

TEST_F(SpooledJob, makes_a_directory_of_the_job_files_name) {
  Print();
  EXPECT_EQ(Spool(), BothPages);
}

TEST_F(SpooledJob, drops_the_last_extension_alone) {
  Root().Write("job/sign.v2.ps", "%!PS\n");
  m_Ticket.SetJobFile(Root().Wide("job/sign.v2.ps"));
  Print();
  EXPECT_EQ(Spool().front(), "sign.v2.cfm/");
}

TEST_F(SpooledJob, takes_a_directory_that_is_there_already_and_writes_over_its_pages) {
  Root().Write("Queue/rip/CFM/sign.cfm/A/old", "old");
  Root().Write("Queue/rip/CFM/sign.cfm/C/other", "other");
  Print();
  EXPECT_EQ(End(), "active: no error");
  EXPECT_EQ(Spool(), (Lines{"sign.cfm/", "sign.cfm/A/", "sign.cfm/A/pixels", "sign.cfm/B/",
                            "sign.cfm/B/pixels", "sign.cfm/C/", "sign.cfm/C/other"}));
}

TEST_F(SpooledJob, makes_a_read_only_directory_writable) {
  std::filesystem::create_directory(Root().Path("Queue/rip/CFM/sign.cfm"));
  std::filesystem::permissions(Root().Path("Queue/rip/CFM/sign.cfm"), std::filesystem::perms(0555));
  Print();
  EXPECT_EQ(End(), "active: no error");
  EXPECT_EQ(Spool(), BothPages);
  EXPECT_EQ(std::filesystem::status(Root().Path("Queue/rip/CFM/sign.cfm")).permissions(),
            std::filesystem::perms(0755));
}

TEST_F(SpooledJob, reports_a_directory_that_it_can_not_ask_and_goes_on) {
  std::filesystem::remove_all(Root().Path("Queue/rip/CFM"));
  Root().Write("Queue/rip/CFM", "a file where the spool should be");
  Print();
  EXPECT_TRUE(HasLogged("[Print] Warning: Can't check attributes on '" + SpoolDirectory() +
                        "', errno: " + std::to_string(ENOTDIR) + "|"));
  ExpectFailure();
}

TEST_F(SpooledJob, reports_attributes_that_it_can_not_set_and_goes_on) {
  // A directory of the kernel's, read-only for everybody, whose mode nobody may change.
  std::filesystem::create_directory_symlink("/proc/self/fd", Root().Path("Queue/rip/CFM/sign.cfm"));
  Print();
  EXPECT_TRUE(
      HasLogged("[Print] Warning: Failed to set attributes on '" + SpoolDirectory() + "'|"));
  ExpectFailure();
}

TEST_F(SpooledJob, whose_destination_is_a_file_fails_and_deletes_its_pages) {
  Root().Write("Queue/rip/CFM/sign.cfm", "in the way");
  Print();
  ExpectFailure();
  EXPECT_FALSE(Root().Has("pages"));
  EXPECT_EQ(Root().Read("Queue/rip/CFM/sign.cfm"), "in the way");
}

TEST_F(SpooledJob, of_which_one_page_can_not_be_moved_keeps_none) {
  Rip("mkdir -p \"$RASTREL_HOME/pages/A\"\n"
      "for title in A B; do printf 'begin := once\\nid := p\\ndir := %s/\\ntitle := %s\\nend\\n' "
      "\"$RASTREL_HOME/pages\" $title; done\n");
  Print();
  ExpectFailure();
  EXPECT_EQ(Spool(), Lines{});
}

TEST_F(SpooledJob, without_a_spool_root_makes_it) {
  std::filesystem::remove_all(Root().Path("Queue/rip/CFM"));
  Print();
  EXPECT_EQ(End(), "active: no error");
  EXPECT_EQ(Spool(), BothPages);
}

}  // namespace
