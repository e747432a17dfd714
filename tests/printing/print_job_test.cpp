// A whole job, from its ticket to the end: the decision tree, its reports, and its files.

#include <gtest/gtest.h>

#include <thread>

#include "rastrel/job/job_ticket.h"
#include "rastrel/prefix/ps_prefix.h"
#include "tests/support/print_fixture.h"
#include "tests/support/wait_until.h"

using rastrel::test::GoodEngine;
using rastrel::test::GoodRip;
using rastrel::test::HasChildren;
using rastrel::test::Lines;

namespace {

class PrintJob : public rastrel::test::PrintTest {
 protected:
  [[nodiscard]] Lines PagesAt(const std::string& folder) const { return Tree(folder); }
  [[nodiscard]] const rastrel::test::Transcript& Told() const { return m_Ticket.m_Told; }
};

const Lines TwoPages = {"A/", "A/pixels", "B/", "B/pixels"};
const Lines TwoPagesWithRecord = {".kept", "A/", "A/pixels", "B/", "B/pixels"};

TEST_F(PrintJob, that_ends_well_reports_its_stages_in_order) {
  Print();
  EXPECT_EQ(Told().OfTheLibrary(),
            (Lines{"Log START: Print Job Thread", "Info 7 system", "Log (*v*)Processing Started",
                   "Log CFM doesn't exist. Rip & Odalis.", "Info 1 system",
                   "Log (*v*)Start Ripping", "Log Rip exited with status 0", "Info 2 system",
                   "Log (*v*)Ripping Complete", "Info 3 system", "Log (*v*)Start Printing",
                   "Log Odalis exited with status 0", "Info 4 system", "Log (*v*)Printing complete",
                   "Log Printing done", "Info 8 system", "Log (*v*)Processing Completed"}));
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(PrintJob, that_ends_well_is_in_the_application_log) {
  Print();
  EXPECT_EQ(Logged(),
            (Lines{"[Print]: Printing thread started", "[Sign] START: Printing|",
                   "[Print]: CFM doesn't exist. Rip & Odalis.", "1", "2", "[Print]: Rip exited",
                   "3", "4", "5", "6", "[Print]: Printing thread done", "[Print]: Odalis exited",
                   "[Print]: Waiting for output thread", "[Print]: Printing thread done",
                   "[Sign] STOP: Printing|"}));
}

TEST_F(PrintJob, without_spooling_leaves_the_job_file_alone) {
  Print();
  EXPECT_EQ(Tree("job"), Lines{"sign.ps"});
  EXPECT_EQ(Root().Read("job/sign.ps"), "%!PS\nshowpage\n");
  EXPECT_FALSE(Root().Has("pages"));
  EXPECT_EQ(Tree("Queue/rip/CFM"), Lines{});
  EXPECT_TRUE(m_Ticket.m_CFMFile.Entries.empty());
}

TEST_F(PrintJob, with_spooling_reports_two_stages_more) {
  RequestSpool();
  Print();
  EXPECT_EQ(Told().Stages(),
            "started, ripping, ripped, printing, printed, spooling, spooled, completed");
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(PrintJob, with_spooling_moves_the_pages_to_the_spool) {
  RequestSpool();
  Print();
  EXPECT_EQ(PagesAt("Queue/rip/CFM/sign.cfm"), TwoPagesWithRecord);
  EXPECT_EQ(Root().Read("Queue/rip/CFM/sign.cfm/B/pixels"), "b");
  EXPECT_EQ(PagesAt("pages"), Lines{});
  EXPECT_EQ(Tree("job"), Lines{"sign.ps"});
  ASSERT_EQ(m_Ticket.m_CFMFile.Entries.size(), 2U);
  const std::string directory = SpoolDirectory() + "\\";
  EXPECT_EQ(m_Ticket.m_CFMFile.Entries[0].Directory, rastrel::os::WideFromUtf8(directory));
  EXPECT_EQ(m_Ticket.m_CFMFile.Entries[0].FileName, L"A");
  EXPECT_EQ(m_Ticket.m_CFMFile.Entries[1].FileName, L"B");
}

TEST_F(PrintJob, that_may_not_spool_though_asked_to_deletes_its_pages) {
  m_Ticket.m_JobData.SpoolRequested = true;
  Print();
  EXPECT_EQ(Told().Stages(), "started, ripping, ripped, printing, printed, completed");
  EXPECT_FALSE(Root().Has("pages"));
}

TEST_F(PrintJob, that_is_not_asked_to_spool_though_it_may_deletes_its_pages) {
  m_Ticket.m_JobData.SpoolAllowed = true;
  Print();
  EXPECT_EQ(Told().Stages(), "started, ripping, ripped, printing, printed, completed");
  EXPECT_FALSE(Root().Has("pages"));
}

TEST_F(PrintJob, printed_again_after_spooling_uses_its_pages_and_runs_no_rip) {
  RequestSpool();
  Print();
  Rip("touch \"$RASTREL_HOME/rip.ran\"; exit 1\n");
  std::filesystem::remove(Root().Path("job/sign.ps"));
  m_Ticket.m_Status = JS_IDLE;
  Print();
  EXPECT_EQ(Told().Stages(),
            "started, ripping, ripped, printing, printed, spooling, spooled, completed, started, "
            "printing, printed, completed");
  EXPECT_EQ(End(), "active: no error");
  EXPECT_FALSE(Root().Has("rip.ran"));
  EXPECT_EQ(Tree("job"), Lines{});
  EXPECT_EQ(PagesAt("Queue/rip/CFM/sign.cfm"), TwoPagesWithRecord);
}

TEST_F(PrintJob, whose_file_is_gone_prints_its_pages) {
  GivePages();
  std::filesystem::remove(Root().Path("job/sign.ps"));
  Print();
  EXPECT_EQ(Told().OfTheLibrary(),
            (Lines{"Log START: Print Job Thread", "Info 7 system", "Log (*v*)Processing Started",
                   "Log CFM exists. Odalis only.", "Info 3 system", "Log (*v*)Start Printing",
                   "Log Odalis exited with status 0", "Info 4 system", "Log (*v*)Printing complete",
                   "Log Printing done", "Info 8 system", "Log (*v*)Processing Completed"}));
  EXPECT_EQ(Logged(), (Lines{"[Print]: Printing thread started", "[Sign] START: Printing|",
                             "[Print]: CFM exists. Odalis only.", "[Print]: Odalis exited",
                             "[Print]: Waiting for output thread", "[Print]: Printing thread done",
                             "[Sign] STOP: Printing|"}));
}

TEST_F(PrintJob, with_pages_leaves_them_where_they_are) {
  GivePages();
  RequestSpool();
  Print();
  EXPECT_EQ(PagesAt("kept"), TwoPages);
  EXPECT_EQ(m_Ticket.m_CFMFile.Entries.size(), 2U);
  EXPECT_EQ(Tree("Queue/rip/CFM"), Lines{});
}

TEST_F(PrintJob, with_pages_leaves_them_also_when_the_engine_fails) {
  GivePages();
  Engine("cat > /dev/null; exit 1\n");
  Print();
  EXPECT_EQ(PagesAt("kept"), TwoPages);
  EXPECT_EQ(Errors(), Lines{"odalis: odalis status 1"});
  EXPECT_EQ(End(), "holding: odalis status 1");
}

TEST_F(PrintJob, gives_the_engine_the_rips_pages_as_reprints) {
  Print();
  const std::string pages = Root().Path("pages/");
  EXPECT_EQ(Root().Read("engine.input"),
            ">> -- C-Format 2.0 -- <<\n>> Generated by queue on <<\n>> Copies: 1 <<\n"
            "begin := reprint  \n\tid := p1   \n\tdir := " +
                pages +
                "   \n\ttitle := A   \n"
                "\tcopies := 1   \nend   \n"
                "begin := reprint  \n\tid := p2   \n\tdir := " +
                pages +
                "   \n\ttitle := B   \n"
                "\tcopies := 1   \nend   \n");
}

TEST_F(PrintJob, gives_the_engine_the_copies_and_the_pages_that_were_chosen) {
  GivePages();
  m_Ticket.m_Copies = 2;
  m_Ticket.m_Pages = {1};
  Print();
  const std::string page =
      "begin := reprint  \n\tid := QueueCMF2Generator   \n\tdir := " + Root().Path("kept/") +
      "   \n\ttitle := B   \n\tcopies := 1   \nend   \n";
  EXPECT_EQ(
      Root().Read("engine.input"),
      ">> -- C-Format 2.0 -- <<\n>> Generated by queue on <<\n>> Copies: 2 <<\n" + page + page);
}

TEST_F(PrintJob, of_no_copies_gives_the_engine_no_page) {
  GivePages();
  m_Ticket.m_Copies = 0;
  Print();
  EXPECT_EQ(Root().Read("engine.input"),
            ">> -- C-Format 2.0 -- <<\n>> Generated by queue on <<\n>> Copies: 0 <<\n");
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(PrintJob, with_a_page_chosen_that_is_not_there_can_not_be_generated) {
  m_Ticket.m_Pages = {2};
  Print();
  EXPECT_EQ(Told().Stages(), "started, ripping, ripped, completed");
  EXPECT_EQ(Errors(), Lines{"system: spool generate"});
  EXPECT_EQ(End(), "holding: spool generate");
  const Lines log = Logged();
  ASSERT_GE(log.size(), 6U);
  EXPECT_EQ(Lines(log.end() - 6, log.end()),
            (Lines{"CCFM2::Generate: Invalid page: 2|",
                   "[Print]: CFM2 Creation  failed. Deleting CFM. Aborting.",
                   "(*v*)Can't generate spool file", "[Print]: Odalis failed. Deleting CFM.",
                   "[Print]: Printing thread done", "[Sign] STOP: Printing|"}));
  const Lines lines = Told().Behind("Log ");
  EXPECT_EQ(Lines(lines.end() - 4, lines.end()),
            (Lines{"CFM2 Creation  failed. Aborting.", "(*v*)Can't generate spool file",
                   "Printing done", "(*v*)Processing Completed"}));
  EXPECT_FALSE(Root().Has("pages"));
}

TEST_F(PrintJob, with_pages_that_can_not_be_generated_keeps_them) {
  GivePages();
  m_Ticket.m_Pages = {7};
  Print();
  EXPECT_EQ(Errors(), Lines{"system: spool generate"});
  EXPECT_EQ(PagesAt("kept"), TwoPages);
}

TEST_F(PrintJob, whose_file_is_missing_ends_with_error_18) {
  std::filesystem::remove(Root().Path("job/sign.ps"));
  Print();
  EXPECT_EQ(Told().Stages(), "started, ripping, completed");
  EXPECT_EQ(End(), "holding: ps missing");
  std::wstring wide = m_Ticket.m_JobFile.GetFullPath();
  const std::string path = rastrel::os::Utf8FromWide(wide);
  EXPECT_TRUE(
      HasLogged("[Print]: Error: PostScript job '" + path + "' doesn't exist or is not readable|"));
  EXPECT_EQ(Told().Behind("Log Error: "),
            Lines{"PostScript job '" + path + "' doesn't exist or is not readable"});
  EXPECT_EQ(Tree("job"), Lines{});
}

TEST_F(PrintJob, whose_prefix_can_not_be_made_ends_with_error_15) {
  // One byte more than a file name may have, with each of the names that a prefix can have.
  const std::string name = std::string(252, 's') + ".ps";
  std::filesystem::rename(Root().Path("job/sign.ps"), Root().Path("job/" + name));
  m_Ticket.SetJobFile(Root().Wide("job/" + name));
  Print();
  EXPECT_EQ(Told().Stages(), "started, completed");
  EXPECT_EQ(End(), "holding: prefix");
  EXPECT_TRUE(HasLogged("[Print]: Prefix generation failed"));
  EXPECT_EQ(Tree("job"), Lines{name});
}

TEST_F(PrintJob, whose_prefix_throws_ends_its_thread_with_no_report) {
  class Thrower : public PSPrefix {
   public:
    using PSPrefix::PSPrefix;
    unsigned Generate() override { throw std::length_error("no extension"); }
  };
  class ThrowingTicket : public rastrel::test::RecordingTicket {
    PSPrefix* GetPrefix() override { return new Thrower(this); }
  } ticket;
  ticket.SetJobFile(Root().Wide("job/sign.ps"));
  ASSERT_TRUE(ticket.PrintJob());
  ticket.EndPrint();
  EXPECT_EQ(ticket.m_Told.Stages(), "started");
  EXPECT_EQ(ticket.m_Status.Load(), JS_ACTIVE);
  EXPECT_EQ(ticket.m_Error.Load(), JTE_NONE);
}

TEST_F(PrintJob, has_its_prefix_while_the_rip_runs_and_not_afterwards) {
  // The path reaches the RIP as library text, whose separators the shell does not know.
  Rip("cp \"$(printf '%s' \"$4\" | tr '\\\\' /)\" \"$RASTREL_HOME/prefix\"\n" +
      std::string(GoodRip));
  Print();
  EXPECT_EQ(End(), "active: no error");
  EXPECT_NE(Root().Read("prefix").find("%%Title: sign"), std::string::npos);
  EXPECT_FALSE(Root().Has("job/sign.psp"));
}

TEST_F(PrintJob, keeps_its_prefix_if_files_are_to_be_kept) {
  KeepFiles();
  Print();
  EXPECT_EQ(Tree("job"), (Lines{"sign.ps", "sign.psp"}));
}

TEST_F(PrintJob, whose_rip_writes_nothing_ends_with_error_16) {
  Rip("exit 0\n");
  Print();
  EXPECT_EQ(Told().Stages(), "started, ripping, ripped, completed");
  EXPECT_EQ(End(), "holding: spool invalid");
  EXPECT_TRUE(HasLogged("[Print]: Rip's CFM2 is invalid. Aborting."));
  const Lines lines = Told().Behind("Log ");
  EXPECT_EQ(Lines(lines.end() - 4, lines.end()),
            (Lines{"Rip's CFM2 is invalid. Aborting.", "(*v*)Invalid spool file", "Printing done",
                   "(*v*)Processing Completed"}));
}

TEST_F(PrintJob, whose_document_is_invalid_leaves_the_rips_files) {
  Rip(std::string(GoodRip) + "printf 'begin := once\\nid := p3\\nend\\n'\n");
  Print();
  EXPECT_EQ(End(), "holding: spool invalid");
  EXPECT_EQ(PagesAt("pages"), TwoPages);
  EXPECT_EQ(Tree("job"), Lines{"sign.ps"});
}

TEST_F(PrintJob, whose_rip_fails_leaves_the_rips_files) {
  Rip(std::string(GoodRip) + "exit 2\n");
  Print();
  EXPECT_EQ(Told().Stages(), "started, ripping, ripped, completed");
  EXPECT_EQ(End(), "holding: rip status 2");
  EXPECT_EQ(PagesAt("pages"), TwoPages);
  EXPECT_EQ(Tree("job"), Lines{"sign.ps"});
  EXPECT_TRUE(HasLogged("[Print]: Rip failed"));
}

TEST_F(PrintJob, whose_engine_fails_deletes_its_pages) {
  RequestSpool();
  Engine("cat > /dev/null; exit 2\n");
  Print();
  EXPECT_EQ(Told().Stages(), "started, ripping, ripped, printing, printed, completed");
  EXPECT_EQ(End(), "holding: odalis status 2");
  EXPECT_FALSE(Root().Has("pages"));
  EXPECT_EQ(Tree("Queue/rip/CFM"), Lines{});
  EXPECT_EQ(Tree("job"), Lines{"sign.ps"});
  EXPECT_TRUE(HasLogged("[Print]: Odalis failed. Deleting CFM."));
  EXPECT_TRUE(m_Ticket.m_CFMFile.Entries.empty());
}

TEST_F(PrintJob, that_installs_runs_the_rip_alone) {
  m_Ticket.SetRIPInstallJob();
  Rip("exit 1\n");
  GivePages();
  Print();
  EXPECT_EQ(Told().OfTheLibrary(),
            (Lines{"Log START: Print Job Thread", "Info 7 system", "Log (*v*)Processing Started",
                   "Info 1 system", "Log (*v*)Start Ripping", "Log Rip exited with status 1",
                   "Info 2 system", "Log (*v*)Ripping Complete", "Log Printing done",
                   "Info 8 system", "Log (*v*)Processing Completed"}));
  EXPECT_EQ(End(), "active: no error");
  EXPECT_FALSE(Root().Has("engine.input"));
  EXPECT_EQ(Tree("job"), Lines{"sign.ps"});
}

TEST_F(PrintJob, that_installs_with_a_missing_file_ends_with_error_18) {
  m_Ticket.SetRIPInstallJob();
  std::filesystem::remove(Root().Path("job/sign.ps"));
  Print();
  EXPECT_EQ(Told().Stages(), "started, ripping, completed");
  EXPECT_EQ(End(), "holding: ps missing");
}

TEST_F(PrintJob, without_both_programs_reports_the_rip_alone) {
  std::filesystem::remove(Root().Path("Queue/rip/corerast.exe"));
  std::filesystem::remove(Root().Path("Queue/rip/coreodalis.exe"));
  const std::size_t mark = m_Library.LogMark();
  EXPECT_FALSE(m_Ticket.PrintJob());
  EXPECT_EQ(Told().All(), (Lines{"Log START: Print Job Thread", "Error 1 system",
                                 "Log (*v*)RIP executable missing"}));
  EXPECT_EQ(m_Library.LogTextsBehind(mark),
            "[Print]: Rip executable not avaliable.(*v*)RIP executable missing");
  EXPECT_EQ(End(), "holding: rip missing");
  EXPECT_EQ(m_Ticket.GetPrintThread(), nullptr);
}

TEST_F(PrintJob, whose_program_others_may_change_is_refused_before_anything_runs) {
  for (const char* name : {"corerast.exe", "coreodalis.exe"}) {
    const std::string native = Root().Path("Queue/rip/") + name;
    std::filesystem::permissions(native, std::filesystem::perms(0757));
    m_Mark = m_Library.LogMark();
    m_Ticket.SetDefaults();
    EXPECT_FALSE(m_Ticket.PrintJob()) << name;
    EXPECT_EQ(m_Ticket.GetPrintThread(), nullptr);
    EXPECT_TRUE(HasLogged("[Print]: A program is not run: trust '" + native +
                          "': every user may write to it|"))
        << m_Library.Log();
    EXPECT_EQ(m_Ticket.m_Error, name[4] == 'r' ? JTE_RIP_MISSING : JTE_ODALIS_MISSING);
    std::filesystem::permissions(native, std::filesystem::perms(0755));
  }
}

TEST_F(PrintJob, without_the_output_engine_is_refused_also_if_it_only_needs_the_rip) {
  std::filesystem::remove(Root().Path("Queue/rip/coreodalis.exe"));
  m_Ticket.SetRIPInstallJob();
  const std::size_t mark = m_Library.LogMark();
  EXPECT_FALSE(m_Ticket.PrintJob());
  EXPECT_EQ(Errors(), Lines{"system: odalis missing"});
  EXPECT_EQ(m_Library.LogTextsBehind(mark),
            "[Print]: Odalis executable not avaliable.(*v*)Odalis executable missing");
  EXPECT_EQ(End(), "holding: odalis missing");
}

TEST_F(PrintJob, without_the_rip_is_refused_also_if_it_has_pages) {
  std::filesystem::remove(Root().Path("Queue/rip/corerast.exe"));
  GivePages();
  EXPECT_FALSE(m_Ticket.PrintJob());
  EXPECT_EQ(End(), "holding: rip missing");
}

TEST_F(PrintJob, without_a_ticket_does_not_start) {
  const std::size_t mark = m_Library.LogMark();
  PrintingThread::CPrintingThread thread(nullptr);
  EXPECT_FALSE(thread.Start());
  thread.Join();
  EXPECT_EQ(m_Library.LogTextsBehind(mark), "[Print]: Invalid m_pTicket");
}

TEST_F(PrintJob, that_is_not_idle_is_refused_and_nothing_changes) {
  for (const JT_STATUS status :
       {JS_RECEIVING, JS_PREPROCESSING, JS_HOLDING, JS_ACTIVE, JS_COMPLETE}) {
    m_Ticket.m_Status = status;
    EXPECT_FALSE(m_Ticket.PrintJob());
    EXPECT_EQ(m_Ticket.m_Status.Load(), status);
  }
  EXPECT_EQ(Told().Count(), 0U);
}

TEST_F(PrintJob, a_second_time_while_it_runs_is_refused_and_changes_nothing) {
  Engine("cat > /dev/null; until [ -e \"$RASTREL_HOME/go\" ]; do sleep 0.01; done\n");
  ASSERT_TRUE(m_Ticket.PrintJob());
  const auto* thread = m_Ticket.GetPrintThread();
  EXPECT_NE(thread, nullptr);
  EXPECT_EQ(m_Ticket.m_Status.Load(), JS_ACTIVE);
  EXPECT_FALSE(m_Ticket.PrintJob());
  EXPECT_EQ(m_Ticket.GetPrintThread(), thread);
  EXPECT_EQ(m_Ticket.m_Status.Load(), JS_ACTIVE);
  Root().Write("go", "");
  m_Ticket.EndPrint();
  EXPECT_EQ(End(), "active: no error");
  EXPECT_EQ(m_Ticket.GetPrintThread(), nullptr);
}

TEST_F(PrintJob, on_an_idle_ticket_whose_print_was_never_ended_holds_it) {
  ASSERT_TRUE(m_Ticket.PrintJob());
  ASSERT_TRUE(rastrel::test::WaitUntil([this] { return Told().Stages().ends_with("completed"); }));
  m_Ticket.m_Status = JS_IDLE;
  const auto* thread = m_Ticket.GetPrintThread();
  EXPECT_FALSE(m_Ticket.PrintJob());
  EXPECT_EQ(m_Ticket.m_Status.Load(), JS_HOLDING);
  EXPECT_EQ(m_Ticket.GetPrintThread(), thread);
  EXPECT_TRUE(m_Ticket.EndPrint());
  m_Ticket.HoldJob(0);
  Print();
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(PrintJob, ended_without_a_print_or_twice_is_no_matter) {
  EXPECT_TRUE(m_Ticket.EndPrint());
  Print();
  EXPECT_TRUE(m_Ticket.EndPrint());
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(PrintJob, is_waited_for_by_its_tickets_destructor) {
  Engine(std::string(GoodEngine) + "sleep 0.05; touch \"$RASTREL_HOME/ended\"\n");
  {
    CJobTicket ticket;
    ticket.OpenLog([](const wchar_t*) {});
    ticket.SetJobFile(Root().Wide("job/sign.ps"));
    ASSERT_TRUE(ticket.PrintJob());
  }
  EXPECT_TRUE(Root().Has("ended"));
  EXPECT_FALSE(HasChildren());
}

TEST_F(PrintJob, clears_the_error_of_the_last_run_when_it_starts) {
  m_Ticket.m_Error = JTE_SPOOL_INVALID;
  Print();
  EXPECT_EQ(End(), "active: no error");
}

TEST_F(PrintJob, with_a_page_without_a_title_text_is_invalid) {
  Rip("printf 'begin := once\\nid := p1\\ndir := %s/\\ntitle :=  \\nend\\n' \"$RASTREL_HOME\"\n");
  Print();
  EXPECT_EQ(End(), "holding: spool invalid");
}

TEST_F(PrintJob, writes_its_command_lines_to_the_job_log_if_files_are_to_be_kept) {
  KeepFiles();
  m_Ticket.SetPlanar(true);
  Print();
  const std::string rip = Root().Path() + "/Queue\\rip\\";
  const std::string job = rastrel::os::Utf8FromWide(m_Ticket.m_JobFile.GetFullPath());
  const std::string prefix = job.substr(0, job.size() - 3) + ".psp";
  const Lines lines = Told().Behind("Log ");
  const Lines expected = {
      " ",
      "**************Rip command line**************************",
      "\"" + rip + "corerast.exe\" \"-M\" \"-Q\" \"-m128\" \"" + prefix + "\" \"" + job + "\" ",
      "********************************************************",
      " ",
      " ",
      "***********Odalis command line**************************",
      "\"" + rip + "coreodalis.exe\" \"-M\" \"-Q\" \"-k400\" \"-N\" \"-\" \"-tp\" ",
      "******************************************************",
      " "};
  Lines found;
  for (const std::string& line : lines)
    if (line == " " || line.starts_with("***") || line.starts_with("\"")) found.push_back(line);
  EXPECT_EQ(found, expected);
}

TEST_F(PrintJob, of_a_path_without_a_dot_ends_its_thread_without_a_report) {
  Root().Write("job/sign", "%!PS\nshowpage\n");
  m_Ticket.SetJobFile(Root().Wide("job/sign"));
  ASSERT_EQ(m_Ticket.m_JobFile.GetFullPath().find(L'.'), std::wstring::npos);
  ASSERT_TRUE(m_Ticket.PrintJob());
  ASSERT_TRUE(rastrel::test::WaitUntil([this] { return m_Ticket.GetPrintThread()->HasEnded(); }));
  m_Ticket.EndPrint();
  EXPECT_EQ(Told().Stages(), "started");
  EXPECT_EQ(End(), "active: no error");
  EXPECT_NE(m_Library.Log().find("sign' has no extension, so that nothing can be printed"),
            std::string::npos);
}

TEST_F(PrintJob, of_no_file_ends_its_thread_without_a_report_and_says_so_in_the_log) {
  m_Ticket.m_JobFile = CJTSFile();
  m_Mark = m_Library.LogMark();
  ASSERT_TRUE(m_Ticket.PrintJob());
  m_Ticket.EndPrint();
  EXPECT_EQ(End(), "active: no error");
  EXPECT_TRUE(
      HasLogged("[Print]: The job file '' has no extension, so that nothing can be printed|"));
}

}  // namespace
