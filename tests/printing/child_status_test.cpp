// The effect of a child's exit status and misbehaviour on its job.

#include <gtest/gtest.h>

#include <unistd.h>

#include <fstream>

#include "rastrel/platform/os/system_calls.h"
#include "tests/support/print_fixture.h"

using rastrel::test::GoodEngine;
using rastrel::test::GoodRip;
using rastrel::test::Hang;
using rastrel::test::HasChildren;
using rastrel::test::Lines;

namespace {

struct Row {
  const char* ending;  // of the child's script
  int status;          // in the job log
  const char* error;   // reported to the ticket; null: none
  const char* end;     // status and error of the ticket
};

class ChildStatus : public rastrel::test::PrintTest {
 protected:
  [[nodiscard]] Lines ToldLines() const { return m_Ticket.m_Told.All(); }
  void Renew() {
    m_Ticket.SetDefaults();
    m_Ticket.Attach();
    m_Ticket.SetJobFile(Root().Wide("job/sign.ps"));
    m_Told = m_Ticket.m_Told.Count();
  }
  /// The reports since Renew.
  [[nodiscard]] Lines News() const {
    const Lines all = ToldLines();
    return {all.begin() + static_cast<std::ptrdiff_t>(m_Told), all.end()};
  }
  [[nodiscard]] Lines NewErrors() const { return ErrorsIn(News()); }
  [[nodiscard]] bool Has(const std::string& line) const {
    const Lines lines = News();
    return std::find(lines.begin(), lines.end(), line) != lines.end();
  }
  void CheckRow(const Row& row, const char* who) {
    const std::string status = std::to_string(row.status);
    EXPECT_TRUE(Has(std::string("Log ") + who + " exited with status " + status)) << row.ending;
    EXPECT_EQ(NewErrors(), row.error == nullptr ? Lines{} : Lines{row.error}) << row.ending;
    EXPECT_EQ(End(), row.end) << row.ending;
    EXPECT_FALSE(HasChildren()) << row.ending;
  }

  std::size_t m_Told = 0;
};

// A signal's number counts from 128 on, as shells count.
TEST_F(ChildStatus, of_the_rip_becomes_the_error_of_its_row) {
  constexpr Row rows[] = {{"exit 0", 0, nullptr, "active: no error"},
                          {"exit 1", 1, "rip: rip status 1", "holding: rip status 1"},
                          {"exit 2", 2, "rip: rip status 2", "holding: rip status 2"},
                          {"exit 3", 3, "rip: rip status 3", "holding: rip status 3"},
                          {"exit 4", 4, "rip: rip exit", "holding: rip exit"},
                          {"exit 255", 255, "rip: rip exit", "holding: rip exit"},
                          {"kill -9 $$", 137, "rip: rip exit", "holding: rip exit"},
                          {"kill -TERM $$", 143, "rip: rip exit", "holding: rip exit"},
                          {"kill -HUP $$", 129, "rip: rip exit", "holding: rip exit"}};
  for (const Row& row : rows) {
    Rip(std::string(GoodRip) + row.ending + "\n");
    Renew();
    Print();
    CheckRow(row, "Rip");
  }
}

TEST_F(ChildStatus, of_an_installing_rip_is_good_for_0_and_1_alone) {
  constexpr Row rows[] = {{"exit 0", 0, nullptr, "active: no error"},
                          {"exit 1", 1, nullptr, "active: no error"},
                          {"exit 2", 2, "rip: rip status 2", "holding: rip status 2"},
                          {"exit 3", 3, "rip: rip status 3", "holding: rip status 3"},
                          {"exit 4", 4, "rip: rip exit", "holding: rip exit"},
                          {"exit 255", 255, "rip: rip exit", "holding: rip exit"}};
  for (const Row& row : rows) {
    Rip(std::string(row.ending) + "\n");
    Renew();
    m_Ticket.SetRIPInstallJob();
    Print();
    CheckRow(row, "Rip");
  }
}

TEST_F(ChildStatus, of_the_output_engine_becomes_the_error_of_its_row) {
  constexpr Row rows[] = {{"exit 0", 0, nullptr, "active: no error"},
                          {"exit 1", 1, "odalis: odalis status 1", "holding: odalis status 1"},
                          {"exit 2", 2, "odalis: odalis status 2", "holding: odalis status 2"},
                          {"exit 3", 3, "odalis: odalis exit", "holding: odalis exit"},
                          {"exit 4", 4, "odalis: odalis exit", "holding: odalis exit"},
                          {"exit 255", 255, "odalis: odalis exit", "holding: odalis exit"},
                          {"kill -9 $$", 137, "odalis: odalis exit", "holding: odalis exit"},
                          {"kill -SEGV $$", 139, "odalis: odalis exit", "holding: odalis exit"}};
  for (const Row& row : rows) {
    Engine(GoodEngine + std::string(row.ending) + "\n");
    Renew();
    Print();
    CheckRow(row, "Odalis");
  }
}

TEST_F(ChildStatus, has_a_text_below_255_and_only_a_number_above) {
  Rip("exit 4\n");
  Print();
  const Lines lines = m_Ticket.m_Told.Behind("Log ");
  EXPECT_NE(std::find(lines.begin(), lines.end(), "(*v*)RIP exited abnormally"), lines.end());
  CString text;
  EXPECT_EQ(m_Ticket.GetErrorText(text), JTE_RIP_EXIT);

  Rip("exit 1\n");
  Renew();
  Print();
  EXPECT_FALSE(Has("Log (*v*)Unknown error"));
  EXPECT_EQ(m_Ticket.GetErrorText(text), JTE_RIP_STATUS_1);
  EXPECT_EQ(text, L"(*v*)Unknown error");
}

TEST_F(ChildStatus, two_of_the_engine_leaves_only_its_status_line_in_the_job_log) {
  GivePages();
  Engine("cat > /dev/null; exit 2\n");
  Print();
  EXPECT_EQ(m_Ticket.m_Told.Behind("Log "),
            (Lines{"START: Print Job Thread", "(*v*)Processing Started", "CFM exists. Odalis only.",
                   "(*v*)Start Printing", "Odalis exited with status 2", "(*v*)Printing complete",
                   "Printing done", "(*v*)Processing Completed"}));
  CString text;
  EXPECT_EQ(m_Ticket.GetErrorText(text), JTE_ODALIS_STATUS_2);
  EXPECT_EQ(text, L"(*v*)Unknown error");
}

class ChildMisbehaves : public ChildStatus {};

TEST_F(ChildMisbehaves, by_telling_of_an_error_and_ending_well_the_job_is_held_and_goes_on) {
  Rip("echo 'ERROR: ERROR' >&2\n" + std::string(GoodRip));
  Print();
  EXPECT_EQ(m_Ticket.m_Told.Stages(), "started, ripping, ripped, printing, printed, completed");
  EXPECT_EQ(Errors(), Lines{"rip: undefined"});
  EXPECT_EQ(End(), "holding: undefined");
  EXPECT_TRUE(Root().Has("engine.input"));
}

TEST_F(ChildMisbehaves, by_the_message_of_an_error_alone_the_job_ends_well) {
  Rip("echo 'ERROR: Out of memory' >&2; echo 'WARNING: Font' >&2\n" + std::string(GoodRip));
  Print();
  EXPECT_EQ(Errors(), Lines{"\"Out of memory\" rip"});
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(ChildMisbehaves, by_closing_its_standard_error_early_the_job_goes_on) {
  Rip("echo 'INFO: READY' >&2; exec 2>&-\n" + std::string(GoodRip));
  Engine("exec 2>&-\n" + std::string(GoodEngine));
  Print();
  EXPECT_EQ(m_Ticket.m_Told.Behind("Info 257"), Lines{" rip"});
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(ChildMisbehaves, by_closing_its_standard_output_early_there_are_no_pages) {
  Rip("exec >&-; mkdir -p \"$RASTREL_HOME/pages\"\n");
  Print();
  EXPECT_EQ(End(), "holding: spool invalid");
}

TEST_F(ChildMisbehaves, by_flooding_its_standard_error_every_line_arrives) {
  Rip("yes 'WARNING: too much to say about this page' | head -n 40000 >&2\n" +
      std::string(GoodRip));
  Print();
  EXPECT_EQ(m_Ticket.m_Told.Behind("Warning ").size(), 40'000U);
  EXPECT_EQ(m_Ticket.m_Status.Load(), JS_ACTIVE);
}

TEST_F(ChildMisbehaves, by_flooding_with_one_endless_line_nothing_is_reported) {
  Rip("head -c 20000000 /dev/zero | tr '\\0' x >&2\n" + std::string(GoodRip));
  Print();
  EXPECT_TRUE(m_Ticket.m_Told.Behind("Log [Rip]").empty());
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(ChildMisbehaves, by_writing_bytes_that_are_no_text_the_log_has_replacement_text) {
  Rip("printf '\\377\\376WARNING\\n' >&2\n" + std::string(GoodRip));
  Print();
  EXPECT_EQ(m_Ticket.m_Told.Behind("Log [Rip]"), Lines{"\xEF\xBF\xBD\xEF\xBF\xBDWARNING"});
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(ChildMisbehaves, by_writing_pages_that_are_none_they_are_invalid) {
  for (const char* text : {"nonsense", "begin := once\\n", "begin end", ">> begin := x",
                           "\\000begin := once\\nid := a\\ndir := /b/\\ntitle := c\\nend\\n"}) {
    Rip(std::string("printf '") + text + "'\n");
    Renew();
    Print();
    EXPECT_EQ(End(), "holding: spool invalid") << text;
  }
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr const char* MuchText = "4000000";
#else
constexpr const char* MuchText = "64000000";
#endif

TEST_F(ChildMisbehaves, by_writing_64_megabytes_that_are_no_pages_they_are_invalid) {
  Rip(std::string("yes 'no := page' | head -c ") + MuchText + "\n");
  Print();
  EXPECT_EQ(End(), "holding: spool invalid");
  EXPECT_FALSE(HasChildren());
}

TEST_F(ChildMisbehaves, by_leaving_a_grandchild_with_its_pipes_the_job_waits_for_its_output) {
  Rip("(sleep 0.2\necho 'INFO: SPOOLING' >&2\n" + std::string(GoodRip) + ") &\nexit 0\n");
  Engine(
      "cat > \"$RASTREL_HOME/engine.input\"\n(sleep 0.1; echo 'INFO: FLUSHING' >&2) &\nexit 0\n");
  Print();
  EXPECT_EQ(End(), "active: no error");
  EXPECT_EQ(m_Ticket.m_Told.Behind("Info 262"), Lines{" rip"});
  EXPECT_EQ(m_Ticket.m_Told.Behind("Info 260"), Lines{" odalis"});
}

std::string writtenMark;

TEST_F(ChildMisbehaves, by_ignoring_its_input_the_job_ends_by_its_status) {
  writtenMark = Root().Path("written");
  const rastrel::os::SystemCallsGuard guard;
  rastrel::os::Calls().write = [](int descriptor, const void* bytes, std::size_t count) {
    const ssize_t written = ::write(descriptor, bytes, count);
    if (std::string_view(static_cast<const char*>(bytes), count).starts_with(">> --"))
      std::ofstream(writtenMark).flush();
    return written;
  };
  Engine("until [ -e \"$RASTREL_HOME/written\" ]; do sleep 0.01; done; exit 0\n");
  Print();
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(ChildMisbehaves, by_writing_to_its_standard_output_nobody_gets_it) {
  Engine(
      "cat > /dev/null; trap '' PIPE; printf 'begin := once\\n' 2> /dev/null || "
      "touch \"$RASTREL_HOME/refused\"; exit 0\n");
  Print();
  EXPECT_EQ(End(), "active: no error");
  EXPECT_TRUE(Root().Has("refused"));
}

TEST_F(ChildMisbehaves, by_dying_of_its_own_broken_pipe_it_ended_abnormally) {
  Engine("cat > /dev/null; exec yes\n");
  Print();
  EXPECT_EQ(m_Ticket.m_Told.Behind("Log Odalis"), Lines{" exited with status 141"});
  EXPECT_EQ(End(), "holding: odalis exit");
}

TEST_F(ChildMisbehaves, by_being_no_program_the_rip_can_not_be_started) {
  Root().Write("Queue/rip/corerast.exe", "neither script nor program");
  MakeExecutable("Queue/rip/corerast.exe");
  Print();
  EXPECT_EQ(m_Ticket.m_Told.Stages(), "started, ripping, ripped, completed");
  EXPECT_EQ(End(), "holding: rip not started");
  EXPECT_TRUE(HasLogged("[Print]: Didn't start the rip"));
  EXPECT_TRUE(HasLogged("[Print]: Couldn't start rip"));
  EXPECT_EQ(Tree("job"), Lines{"sign.ps"});
}

TEST_F(ChildMisbehaves, by_not_being_executable_the_engine_can_not_be_started) {
  std::filesystem::permissions(Root().Path("Queue/rip/coreodalis.exe"),
                               std::filesystem::perms::owner_read);
  Print();
  EXPECT_EQ(m_Ticket.m_Told.Stages(), "started, ripping, ripped, printing, printed, completed");
  EXPECT_EQ(End(), "holding: odalis not started");
  EXPECT_TRUE(HasLogged("[Print]: Didn't start odalis"));
  EXPECT_TRUE(HasLogged("[Print]: Couldn't start odalis"));
  EXPECT_FALSE(Root().Has("pages"));
}

TEST_F(ChildMisbehaves, by_reading_late_the_engine_still_gets_a_text_of_20_megabytes) {
  GivePages();
  constexpr int PageText = 80;  // at least, for two pages
  m_Ticket.m_Copies = 20'000'000 / PageText;
  Engine("sleep 0.3; wc -c > \"$RASTREL_HOME/size\"\n");
  Print();
  EXPECT_EQ(End(), "active: no error");
  const std::string page =
      "begin := reprint  \n\tid := QueueCMF2Generator   \n\tdir := " + Root().Path("kept/") +
      "   \n\ttitle := A   \n\tcopies := 1   \nend   \n";
  const std::string head =
      ">> -- C-Format 2.0 -- <<\n>> Generated by queue on <<\n>> Copies: 250000 <<\n";
  EXPECT_EQ(std::stoull(Root().Read("size")), head.size() + 250'000 * 2 * page.size());
}

TEST_F(ChildMisbehaves, by_never_reading_a_long_text_it_can_be_aborted) {
  GivePages();
  m_Ticket.m_Copies = 250'000;
  Engine("echo 'INFO: READY' >&2\n" + std::string(Hang));
  AbortAt("Info 257 odalis");
  Print();
  EXPECT_EQ(m_Ticket.m_Told.Stages(), "started, printing, printed, aborted");
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_FALSE(HasChildren());
}

TEST_F(ChildMisbehaves, by_hanging_it_can_be_aborted) {
  Rip("echo 'INFO: READY' >&2\n" + std::string(Hang));
  AbortAt("Info 257 rip");
  Print();
  EXPECT_EQ(m_Ticket.m_Told.Stages(), "started, ripping, ripped, aborted");
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_FALSE(HasChildren());
}

TEST_F(ChildMisbehaves, by_ignoring_signals_it_can_be_aborted) {
  Rip("trap '' TERM HUP INT QUIT PIPE\necho 'INFO: READY' >&2\n" + std::string(Hang));
  AbortAt("Info 257 rip");
  Print();
  EXPECT_EQ(End(), "holding: aborted");
  EXPECT_FALSE(HasChildren());
}

}  // namespace
