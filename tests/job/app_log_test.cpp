#include "rastrel/job/app_log.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <ctime>
#include <filesystem>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/process.h"
#include "tests/support/forked_child.h"
#include "tests/support/library_fixture.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/test_host.h"
#include "tests/support/wait_until.h"

namespace {

using rastrel::test::ForkedChild;
using rastrel::test::LibraryRoot;
using rastrel::test::LibraryTest;
using rastrel::test::TestHost;

class AppLog : public LibraryTest {};

constexpr const char* CleanedNone = "0 old log(s) cleaned up\r\n";

std::string DateNow() {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  ::localtime_r(&now, &parts);
  char text[128];
  std::strftime(text, sizeof text, "%d/%m/%Y, %H:%M:%S", &parts);
  return text;
}

TEST_F(AppLog, the_file_is_named_after_the_process_in_the_rip_directory) {
  CAppLog::Instance();
  EXPECT_TRUE(
      m_Library.Directory().Has("Queue/rip/Rastrel-" + std::to_string(::getpid()) + ".log"));
}

TEST_F(AppLog, the_file_is_the_owners_alone) {
  CAppLog::Instance();
  struct stat state {};
  ASSERT_EQ(::stat(m_Library.Directory().Path(LibraryRoot::LogName()).c_str(), &state), 0);
  EXPECT_EQ(state.st_mode & 0777U, 0600U);
}

TEST_F(AppLog, a_file_of_the_same_process_id_is_written_over) {
  m_Library.Directory().Write(LibraryRoot::LogName(), std::string(10'000, 'x'));
  CAppLog::Instance();
  EXPECT_EQ(CleanedNone, m_Library.LogTexts());
}

TEST_F(AppLog, an_entry_has_the_moment_and_the_thread_in_front) {
  const std::size_t mark = m_Library.LogMark();
  const std::string before = DateNow();
  CAppLog::Instance().Write("text");
  const std::string after = DateNow();
  char thread[32];
  std::snprintf(thread, sizeof thread, "[%4u]", rastrel::os::CurrentThreadId());
  const std::string entry = m_Library.Log().substr(mark);
  const std::string tail = std::string("]") + thread + "text";
  EXPECT_TRUE(entry == "[" + before + tail || entry == "[" + after + tail) << entry;
}

// Those of the framework's FormatV, and not those of formatstringT: -42 is "00-42" there.
TEST_F(AppLog, printf_follows_the_rules_of_printf) {
  const std::size_t mark = m_Library.LogMark();
  CAppLog::Instance().Printf(L"%05d|%+d|%.3d|%#x|%*d", -42, 5, 5, 255U, 4, 7);
  EXPECT_EQ(m_Library.LogTextsBehind(mark), "-0042|+5|005|0xff|   7\r\n");
}

TEST_F(AppLog, entries_stand_one_behind_the_other_and_only_printf_ends_a_line) {
  const std::size_t mark = m_Library.LogMark();
  CAppLog& log = CAppLog::Instance();
  log.Write("[Print]: Rip failed");
  log.Write("na\xC3\xAFve \xFF");  // unchanged, well-formed or not
  log.Write(L"Gr\u00fc\u00dfe \U0001F5A8");
  log.Printf(L"%i of %s, %u", -3, std::wstring(L"four"), 5U);
  log.Write("next");
  EXPECT_EQ(m_Library.LogTextsBehind(mark),
            "[Print]: Rip failed"
            "na\xC3\xAFve \xFF"
            "Gr\xC3\xBC\xC3\x9F"
            "e \xF0\x9F\x96\xA8"
            "-3 of four, 5\r\n"
            "next");
  EXPECT_EQ(
      [&] {
        int heads = 0;
        const std::string entries = m_Library.Log().substr(mark);
        for (std::size_t at = 0; at < entries.size(); ++at)
          heads += LibraryRoot::HeadLength(std::string_view(entries).substr(at)) > 0 ? 1 : 0;
        return heads;
      }(),
      5);
}

TEST_F(AppLog, an_empty_text_writes_the_head_alone) {
  const std::size_t mark = m_Library.LogMark();
  CAppLog::Instance().Write("");
  CAppLog::Instance().Write(L"");
  const std::string entries = m_Library.Log().substr(mark);
  const std::size_t head = LibraryRoot::HeadLength(entries);
  EXPECT_LT(0U, head);
  EXPECT_EQ(2 * head, entries.size());
}

TEST_F(AppLog, a_deleted_log_leaves_its_file_and_the_next_use_truncates_it) {
  CAppLog::Instance().Write("first");
  CAppLog::DeleteInstance();
  EXPECT_NE(std::string::npos, m_Library.Log().find("first"));
  CAppLog::Instance().Write("second");
  EXPECT_EQ(std::string(CleanedNone) + "second", m_Library.LogTexts());
}

TEST_F(AppLog, deletion_closes_the_file) {
  CExePaths::Instance();
  const std::size_t before = rastrel::test::OpenDescriptors();
  for (int round = 0; round < 20; ++round) {
    CAppLog::Instance().Write("x");
    CAppLog::DeleteInstance();
  }
  CAppLog::DeleteInstance();
  EXPECT_EQ(before, rastrel::test::OpenDescriptors());
}

TEST_F(AppLog, a_log_that_takes_no_more_sends_the_text_alone_to_standard_error) {
  // A descriptor that refuses to write is in the log's place.
  CExePaths::Instance();
  const std::size_t lowest = [] {
    const int probe = ::dup(0);
    ::close(probe);
    return static_cast<std::size_t>(probe);
  }();
  CAppLog::Instance();
  const int full = ::open("/dev/full", O_WRONLY);
  ASSERT_LE(0, ::dup2(full, static_cast<int>(lowest)));
  ::close(full);
  testing::internal::CaptureStderr();
  CAppLog::Instance().Write(L"lost?");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "lost?");
}

TEST_F(AppLog, eight_threads_write_their_entries_whole) {
  constexpr int threads = 8;
  constexpr int entries = 200;
  const std::size_t mark = m_Library.LogMark();
  std::vector<std::thread> writers;
  for (int writer = 0; writer < threads; ++writer)
    writers.emplace_back([writer] {
      for (int entry = 0; entry < entries; ++entry)
        CAppLog::Instance().Printf(L"writer %i entry %i end", writer, entry);
    });
  for (std::thread& writer : writers) writer.join();
  const std::string log = m_Library.Log().substr(mark);
  std::vector<int> next(threads, 0);
  std::size_t at = 0;
  while (at < log.size()) {
    const std::size_t head = LibraryRoot::HeadLength(std::string_view(log).substr(at));
    ASSERT_LT(0U, head);
    const std::size_t end = log.find("\r\n", at);
    int writer = -1;
    int entry = -1;
    int length = 0;
    const std::string text = log.substr(at + head, end - at - head);
    ASSERT_EQ(std::sscanf(text.c_str(), "writer %d entry %d end%n", &writer, &entry, &length), 2)
        << text;
    ASSERT_EQ(text.size(), static_cast<std::size_t>(length));
    EXPECT_EQ(next.at(static_cast<std::size_t>(writer))++, entry);
    at = end + 2;
  }
  for (const int count : next) EXPECT_EQ(entries, count);
}

TEST_F(AppLog, the_first_uses_of_several_threads_make_one_log) {
  for (int round = 0; round < 20; ++round) {
    LibraryRoot::Forget();
    std::vector<std::thread> users;
    std::atomic<CAppLog*> first = nullptr;
    std::atomic<int> others = 0;
    for (int user = 0; user < 4; ++user)
      users.emplace_back([&] {
        CAppLog* expected = nullptr;
        CAppLog* const mine = &CAppLog::Instance();
        if (!first.compare_exchange_strong(expected, mine) && expected != mine) ++others;
      });
    for (std::thread& user : users) user.join();
    EXPECT_EQ(others, 0);
  }
}

TEST_F(AppLog, two_processes_have_two_files_and_neither_removes_the_others) {
  ForkedChild child([this](ForkedChild::Side& side) {
    CAppLog::Instance().Write("child");
    side.Tell("ready");
    side.Await();
    return m_Library.Log().ends_with("child") ? 0 : 1;
  });
  EXPECT_EQ(child.Hear(5), "ready");
  CAppLog::Instance().Write("parent");
  EXPECT_EQ(std::string(CleanedNone) + "parent", m_Library.LogTexts());
  const std::string name = "Queue/rip/Rastrel-" + std::to_string(child.Id()) + ".log";
  EXPECT_TRUE(m_Library.Directory().Read(name).ends_with("child"));
  child.Release();
  EXPECT_EQ(child.Exit(), 0);
  // Its owner is gone: the next process clears it away.
  LibraryRoot::Forget();
  CAppLog::Instance();
  EXPECT_FALSE(m_Library.Directory().Has(name));
  EXPECT_EQ(m_Library.LogTexts(), "1 old log(s) cleaned up\r\n");
}

// A process whose RIP directory does not exist. Standard error goes to the parent.
class UnopenableLog : public AppLog {
 protected:
  void SetUp() override {
    m_Host.m_Settings[{L"Debug", L"CmdlineQpath"}] = m_Library.Directory().Wide("nowhere");
  }
  TestHost m_Host;
};

TEST_F(UnopenableLog, the_first_thread_goes_on_logging_to_standard_error) {
  ForkedChild child([](ForkedChild::Side&) {
    CAppLog::Instance().Write("one");
    CAppLog::Instance().Write(L"two");
    CAppLog::Instance().Printf(L"%i", 3);
    return 0;
  });
  EXPECT_EQ(child.Exit(), 0);
  EXPECT_EQ(child.StandardError(),
            "Can't open rip directory. Oops.0 old log(s) cleaned up\r\nonetwo3\r\n");
  EXPECT_FALSE(m_Library.Directory().Has("nowhere"));
}

TEST_F(UnopenableLog, a_program_may_take_the_lost_texts_and_the_reason) {
  ForkedChild child([](ForkedChild::Side&) {
    CAppLog::SetLostTextHandler([](std::string_view text, const rastrel::Failure& why) {
      rastrel::os::WriteToStandardError(std::string(text) + " <" + why.what + " " +
                                        std::to_string(why.error) + ">\n");
    });
    CAppLog::Instance().Write("one");
    return 0;
  });
  EXPECT_EQ(child.Exit(), 0);
  // The directory does not exist.
  EXPECT_NE(child.StandardError().find("\none <open 2>\n"), std::string::npos)
      << child.StandardError();
}

TEST_F(UnopenableLog, another_thread_that_logs_waits_for_ever) {
  ForkedChild child([](ForkedChild::Side& side) {
    CAppLog::Instance().Write("first");
    std::atomic<int> stage = 0;
    std::thread([&stage] {
      stage = 1;
      CAppLog::Instance().Write("never");
      stage = 2;
    }).detach();
    EXPECT_TRUE(rastrel::test::WaitUntil([&] { return stage != 0; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    CAppLog::Instance().Write(" still");
    side.Tell("ready");
    side.Await();
    return stage == 1 ? 0 : 1;
  });
  EXPECT_EQ(child.Hear(5), "ready");
  child.Release();
  EXPECT_EQ(child.Exit(), 0);
  EXPECT_TRUE(child.StandardError().ends_with("first still")) << child.StandardError();
}

TEST_F(UnopenableLog, can_be_deleted_while_its_lock_stays_entered) {
  ForkedChild child([](ForkedChild::Side&) {
    for (int round = 0; round < 3; ++round) {
      CAppLog::Instance().Write("x");
      CAppLog::DeleteInstance();
    }
    return 0;
  });
  EXPECT_EQ(child.Exit(), 0);
}

}  // namespace
