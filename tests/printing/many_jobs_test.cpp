// Many jobs in one process: a job releases everything that it takes.

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <thread>

#include "tests/support/child_signal.h"
#include "tests/support/print_fixture.h"

using rastrel::test::ChildSignal;
using rastrel::test::HasChildren;
using rastrel::test::Lines;
using rastrel::test::OpenDescriptors;
using rastrel::test::Threads;
using rastrel::test::ThreadsSettled;

namespace {

constexpr int Jobs = 200;
constexpr int AtOnce = 8;
constexpr int WarmUp = 16;

class ManyJobs : public rastrel::test::PrintTest {
 protected:
  ManyJobs() {
    // Pages of their own for each run, and reports on both streams.
    Rip(R"(pages="$RASTREL_HOME/pages.$$"
mkdir -p "$pages/A"
echo 'INFO: READY' >&2
printf 'begin := once\nid := p1\ndir := %s/\ntitle := A\nend\n' "$pages"
)");
    Engine("echo 'PROGRESS: 50%' >&2; cat > /dev/null\n");
  }
  /// Prints one job of its own name to its end, again and again; false if one did not end well.
  [[nodiscard]] bool PrintRepeatedly(int number, int times) const {
    const std::string name = "job/sign-" + std::to_string(number) + ".ps";
    Root().Write(name, "%!PS\n");
    for (; times > 0; --times) {
      CJobTicket ticket;
      ticket.OpenLog([](const wchar_t*) {});
      ticket.SetJobFile(Root().Wide(name));
      if (!ticket.PrintJob()) return false;
      ticket.EndPrint();
      if (ticket.m_Status != JS_ACTIVE || ticket.m_Error != JTE_NONE) return false;
    }
    return true;
  }
  [[nodiscard]] bool PrintAtOnce(int times) const {
    std::vector<std::thread> workers;
    std::atomic<bool> good = true;
    for (int worker = 0; worker < AtOnce; ++worker)
      workers.emplace_back([this, worker, times, &good] {
        if (!PrintRepeatedly(worker, times)) good = false;
      });
    for (std::thread& worker : workers) worker.join();
    return good;
  }
  /// No page, no prefix: the job files alone.
  void ExpectNoFilesLeft(std::size_t jobs) const {
    EXPECT_EQ(Tree("job").size(), jobs);
    for (const auto& entry : std::filesystem::directory_iterator(Root().Path("."))) {
      EXPECT_FALSE(entry.path().filename().string().starts_with("pages")) << entry.path();
    }
  }
};

std::size_t ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  std::size_t size = 0;
  std::size_t resident = 0;
  statm >> size >> resident;
  return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

struct Holdings {
  std::size_t descriptors = OpenDescriptors();
  std::size_t threads = Threads();
  std::size_t allocated =
      ::mallinfo2().uordblks;  // 0 under a sanitizer, which has its own leak check
  std::size_t resident = ResidentBytes();
};

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool CountsMemory = false;  // a sanitizer keeps freed memory for a while
#else
constexpr bool CountsMemory = true;
#endif

// A job that kept as much as its smallest buffer, 1 KiB, would show in the allocated bytes. The
// resident size may change with the allocator's caches for threads.
constexpr std::size_t AllocatedSlack = 100 << 10;
constexpr std::size_t ResidentSlack = 4 << 20;

void ExpectFlat(const Holdings& before) {
  EXPECT_FALSE(HasChildren());
  EXPECT_EQ(OpenDescriptors(), before.descriptors);
  // A joined thread may count for an instant more: then there were too many before.
  EXPECT_LE(ThreadsSettled(before.threads), before.threads);
  if (!CountsMemory) return;
  const Holdings after;
  EXPECT_LT(after.allocated, before.allocated + AllocatedSlack);
  EXPECT_LT(after.resident, before.resident + ResidentSlack);
}

TEST_F(ManyJobs, one_after_the_other_keep_nothing) {
  ASSERT_TRUE(PrintRepeatedly(0, WarmUp));
  const Holdings before;
  EXPECT_TRUE(PrintRepeatedly(0, Jobs));
  ExpectFlat(before);
  ExpectNoFilesLeft(2);  // the fixture's own and this one
}

TEST_F(ManyJobs, eight_at_a_time_keep_nothing) {
  ASSERT_TRUE(PrintAtOnce(WarmUp / AtOnce));
  const Holdings before;
  EXPECT_TRUE(PrintAtOnce(Jobs / AtOnce));
  ExpectFlat(before);
  ExpectNoFilesLeft(AtOnce + 1);
}

TEST_F(ManyJobs, eight_at_a_time_of_which_some_are_aborted_keep_nothing) {
  ASSERT_TRUE(PrintAtOnce(WarmUp / AtOnce));
  const Holdings before;
  std::vector<std::thread> workers;
  std::atomic<int> wrong = 0;
  for (int worker = 0; worker < AtOnce; ++worker) {
    workers.emplace_back([this, worker, &wrong] {
      const std::string name = "job/sign-" + std::to_string(worker) + ".ps";
      for (int time = 0; time < 5; ++time) {
        CJobTicket ticket;
        ticket.OpenLog([](const wchar_t*) {});
        ticket.SetJobFile(Root().Wide(name));
        if (!ticket.PrintJob()) ++wrong;
        std::this_thread::sleep_for(std::chrono::milliseconds(worker + time));
        if (time % 2 == 0) ticket.GetPrintThread()->Abort();
        ticket.EndPrint();
        const bool aborted = ticket.m_Status == JS_HOLDING && ticket.m_Error == JTE_ABNORMAL;
        const bool well = ticket.m_Status == JS_ACTIVE && ticket.m_Error == JTE_NONE;
        if (!well && !(aborted && time % 2 == 0)) ++wrong;
      }
    });
  }
  for (std::thread& worker : workers) worker.join();
  EXPECT_EQ(wrong, 0);
  ExpectFlat(before);
}

// Hosts that leave no child to anybody else.

TEST_F(ManyJobs, of_a_host_that_ignores_the_signal_of_children_succeed) {
  REQUIRE_REAPERS();
  const ChildSignal ignored(SIG_IGN);
  EXPECT_TRUE(PrintAtOnce(Jobs / AtOnce));
}

TEST_F(ManyJobs, of_a_host_that_wants_no_zombies_succeed) {
  REQUIRE_REAPERS();
  const ChildSignal noZombies(SIG_DFL, SA_NOCLDWAIT);
  EXPECT_TRUE(PrintAtOnce(Jobs / AtOnce));
}

TEST_F(ManyJobs, of_a_host_that_waits_for_every_child_succeed) {
  REQUIRE_REAPERS();
  std::atomic<bool> over = false;
  std::thread other([&over] {
    while (!over)
      if (::waitpid(-1, nullptr, 0) < 0) ::usleep(100);
  });
  EXPECT_TRUE(PrintAtOnce(Jobs / AtOnce));
  over = true;
  other.join();
}

TEST_F(ManyJobs, that_fail_keep_nothing) {
  Engine("cat > /dev/null; exit 2\n");
  const auto fail = [this] {
    CJobTicket ticket;
    ticket.OpenLog([](const wchar_t*) {});
    ticket.SetJobFile(Root().Wide("job/sign.ps"));
    EXPECT_TRUE(ticket.PrintJob());
    ticket.EndPrint();
    EXPECT_EQ(ticket.m_Error.Load(), JTE_ODALIS_STATUS_2);
  };
  for (int job = 0; job < WarmUp; ++job) fail();
  const Holdings before;
  for (int job = 0; job < 100; ++job) fail();
  ExpectFlat(before);
  ExpectNoFilesLeft(1);
}

}  // namespace
