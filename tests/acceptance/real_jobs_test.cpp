// Whole jobs through the real RIP and the real output engine. Every check here is of the files and
// messages after EndPrint has returned.

#include "tests/acceptance/real_root.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/threads.h"

namespace rastrel::test {
namespace {

TEST(RealJob, two_pages_become_two_files_and_nothing_else_remains) {
  const RealRoot root;
  const auto before = root.Content();
  CJobTicket ticket;
  RealRoot::Fill(ticket, root.Job("sign.ps"));
  ASSERT_TRUE(ticket.PrintJob());
  ticket.EndPrint();
  EXPECT_EQ(ticket.m_Error, JTE_NONE);
  EXPECT_EQ(ticket.m_Status, JS_ACTIVE);
  EXPECT_EQ(root.Delivered(), (std::set<std::string>{"sign-1.tif", "sign-2.tif"}));
  EXPECT_EQ(root.Content(), before);
  EXPECT_EQ(root.Processes(), 0);
}

TEST(RealJob, a_root_and_a_job_whose_names_hold_the_formats_own_words_print) {
  const RealRoot root("weekend > begin");
  CJobTicket ticket;
  RealRoot::Fill(ticket, root.Job("legend begin > end.ps"));
  ASSERT_TRUE(ticket.PrintJob());
  ticket.EndPrint();
  EXPECT_EQ(ticket.m_Error, JTE_NONE);
  EXPECT_EQ(root.Delivered(),
            (std::set<std::string>{"legend begin > end-1.tif", "legend begin > end-2.tif"}));
}

// Small pages, so that it is the list that is long.
std::string JobOfPages(unsigned count) {
  return "%!PS\n<< /PageSize [9 9] >> setpagedevice\n1 1 " + std::to_string(count) +
         " { pop 0 setgray 2 2 4 4 rectfill showpage } for\n";
}

// The page list comes in pieces of 1,024 bytes that are decoded one by one, so a letter of the
// root's that the list held would be cut from some number of pages on.
TEST(RealJob, all_pages_of_a_root_with_letters_beyond_ascii_are_delivered) {
  struct Row {
    const char* root;
    unsigned pages;
  };
  for (const Row row : {Row{"gr\xC3\xBC\xC3\x9F", 40},
                        {"\xE5\xB0\x8F\xE7\xAC\xA0\xE5\x8E\x9F", 25},
                        {"\xF0\x9F\x96\xA8\xF0\x9F\x96\xA8", 1},
                        {"a\xF0\x9F\x96\xA8\xF0\x9F\x96\xA8", 300}}) {
    const RealRoot root(row.root);
    const auto before = root.Content();
    CJobTicket ticket;
    RealRoot::Fill(ticket, root.Job("sign.ps", JobOfPages(row.pages)));
    ASSERT_TRUE(ticket.PrintJob());
    ticket.EndPrint();
    EXPECT_EQ(ticket.m_Error, JTE_NONE) << row.root;
    EXPECT_EQ(root.Delivered().size(), row.pages) << row.root;
    auto after = root.Content();
    after.erase("drive_r");  // the link that the list names the pages by
    EXPECT_EQ(after, before) << row.root;
  }
}

TEST(RealJob, a_spooled_job_in_a_root_with_letters_beyond_ascii_prints_again) {
  const RealRoot root("gr\xC3\xBC\xC3\x9F \xF0\x9F\x96\xA8");
  CJobTicket ticket;
  RealRoot::Fill(ticket, root.Job("sign.ps", JobOfPages(40)));
  ticket.m_JobData.SpoolRequested = true;
  ticket.m_JobData.SpoolAllowed = true;
  ASSERT_TRUE(ticket.PrintJob());
  ticket.EndPrint();
  ASSERT_EQ(ticket.m_Error, JTE_NONE);
  ASSERT_EQ(ticket.m_CFMFile.Entries.size(), 40U);
  const EnvironmentGuard path("PATH", "/nonexistent");
  ticket.m_Status = JS_IDLE;
  ASSERT_TRUE(ticket.PrintJob());
  ticket.EndPrint();
  EXPECT_EQ(ticket.m_Error, JTE_NONE);
}

TEST(RealJob, a_spooled_job_prints_again_without_an_interpreter) {
  const RealRoot root;
  CJobTicket ticket;
  RealRoot::Fill(ticket, root.Job("sign.ps"));
  ticket.m_JobData.SpoolRequested = true;
  ticket.m_JobData.SpoolAllowed = true;
  ASSERT_TRUE(ticket.PrintJob());
  ticket.EndPrint();
  ASSERT_EQ(ticket.m_Error, JTE_NONE);
  ASSERT_EQ(ticket.m_CFMFile.Entries.size(), 2U);

  // Page 2 alone, twice, to another printer, with no program to be found.
  const EnvironmentGuard path("PATH", "/nonexistent");
  const EnvironmentGuard printer("RASTREL_PRINTER", "PNG files");
  ticket.m_Status = JS_IDLE;
  ticket.m_Pages = {1};
  ticket.m_Copies = 2;
  ASSERT_TRUE(ticket.PrintJob());
  ticket.EndPrint();
  EXPECT_EQ(ticket.m_Error, JTE_NONE);
  EXPECT_EQ(root.Delivered(),
            (std::set<std::string>{"sign-1.tif", "sign-2.tif", "sign-2.png", "sign-2-2.png"}));
  EXPECT_EQ(ticket.m_CFMFile.Entries.size(), 2U);
}

TEST(RealJob, a_job_that_fails_in_the_interpreter_leaves_no_pages) {
  const RealRoot root;
  const auto before = root.Content();
  CJobTicket ticket;
  RealRoot::Fill(ticket, root.Job("bad.ps", "%!PS\nshowpage\nthis-is-no-operator\n"));
  ASSERT_TRUE(ticket.PrintJob());
  ticket.EndPrint();
  EXPECT_EQ(ticket.m_Status, JS_HOLDING);
  EXPECT_EQ(ticket.m_Error, JTE_RIP_STATUS_1);
  EXPECT_EQ(root.Content(), before);
  EXPECT_EQ(root.Delivered(), std::set<std::string>{});
}

TEST(RealJob, the_test_page_prints_from_a_program_that_only_links_the_library) {
  const RealRoot root;
  ASSERT_TRUE(TestPrint());
  EXPECT_EQ(root.Delivered(), std::set<std::string>{"testpage-1.tif"});
}

// The moments are spread over the time of a whole job, and a little beyond. How long a job takes
// changes with what else the machine does, so the time follows the rounds: shorter after an abort
// that came too late, longer after one in time. About two of three are in time at any speed.
TEST(RealJob, an_abort_at_any_moment_leaves_no_child_thread_descriptor_or_file) {
  const RealRoot root;
  const std::string job = root.Job("sign.ps");
  const auto measure = std::chrono::steady_clock::now();
  {
    CJobTicket ticket;
    RealRoot::Fill(ticket, job);
    ASSERT_TRUE(ticket.PrintJob());
    ticket.EndPrint();
  }
  std::chrono::duration<double> whole = std::chrono::steady_clock::now() - measure;
  const auto before = root.Content();
  const std::size_t descriptors = OpenDescriptors();
  const std::size_t threads = Threads();
  unsigned random = 2463534242U;
  constexpr int Aborts = 120;
  constexpr int MaximumRounds = 2000;
  int aborted = 0;
  for (int round = 0; aborted < Aborts && round < MaximumRounds; ++round) {
    random ^= random << 13;
    random ^= random >> 17;
    random ^= random << 5;
    CJobTicket ticket;
    RealRoot::Fill(ticket, job);
    ASSERT_TRUE(ticket.PrintJob());
    std::this_thread::sleep_for(whole * (random % 1100 / 1000.0));
    ticket.GetPrintThread()->Abort();
    ticket.EndPrint();
    // Either the abort came too late and the job is done, or it is held as aborted; never between.
    if (ticket.m_Status == JS_ACTIVE) {
      EXPECT_EQ(ticket.m_Error, JTE_NONE);
      whole *= 0.9;
    } else {
      EXPECT_EQ(ticket.m_Status, JS_HOLDING);
      EXPECT_EQ(ticket.m_Error, JTE_ABNORMAL);
      ++aborted;
      whole *= 1.05;
    }
    EXPECT_FALSE(ticket.GetCFMFileExists());
    ASSERT_EQ(root.Content(), before) << "round " << round;
    ASSERT_EQ(root.Processes(), 0) << "round " << round;
    ASSERT_EQ(OpenDescriptors(), descriptors) << "round " << round;
    ASSERT_LE(ThreadsSettled(threads), threads) << "round " << round;
  }
  EXPECT_EQ(aborted, Aborts);
  for (const std::string& name : root.Delivered()) EXPECT_TRUE(name.ends_with(".tif")) << name;
}

TEST(RealJob, eight_jobs_at_once_do_not_touch_each_others_pages) {
  const RealRoot root;
  const auto before = root.Content();
  const std::size_t descriptors = OpenDescriptors();
  constexpr int Lanes = 8;
  constexpr int Rounds = 4;
  std::vector<std::string> jobs;
  for (int lane = 0; lane < Lanes; ++lane)
    jobs.push_back(root.Job("job" + std::to_string(lane) + ".ps"));
  for (int round = 0; round < Rounds; ++round) {
    std::vector<CJobTicket> tickets(Lanes);
    for (std::size_t lane = 0; lane < Lanes; ++lane) {
      RealRoot::Fill(tickets[lane], jobs[lane]);
      ASSERT_TRUE(tickets[lane].PrintJob());
    }
    for (CJobTicket& ticket : tickets) {
      ticket.EndPrint();
      EXPECT_EQ(ticket.m_Error, JTE_NONE);
    }
  }
  EXPECT_EQ(root.Delivered().size(), static_cast<std::size_t>(Lanes * Rounds * 2));
  EXPECT_EQ(root.Content(), before);
  EXPECT_EQ(OpenDescriptors(), descriptors);
  EXPECT_EQ(root.Processes(), 0);
}

}  // namespace
}  // namespace rastrel::test
