#include "rastrel/job/log_cleanup.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "rastrel/job/app_log.h"
#include "tests/support/forked_child.h"
#include "tests/support/library_fixture.h"

namespace {

using rastrel::job::ProcessOfLog;
using rastrel::test::ForkedChild;
using rastrel::test::LibraryTest;

class LogCleanup : public LibraryTest {
 protected:
  void PutLog(const std::string& name) { m_Library.Directory().Write("Queue/rip/" + name, "old"); }
  [[nodiscard]] bool Has(const std::string& name) const {
    return m_Library.Directory().Has("Queue/rip/" + name);
  }
  // The texts of a new log: the clean-up's messages.
  [[nodiscard]] std::string Said() const {
    CAppLog::Instance();
    return m_Library.LogTexts();
  }
  [[nodiscard]] std::string RipPath() const {
    return m_Library.Directory().Path() + "/Queue\\rip\\";
  }
};

// The id of a process that ended and was reaped.
std::string DeadProcess() {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(0);
  ::waitpid(child, nullptr, 0);
  return std::to_string(child);
}

TEST(ProcessOfLog, is_the_number_between_the_first_dash_and_the_next_dot) {
  struct Row {
    const wchar_t* name;
    std::optional<std::uint32_t> process;
  };
  const Row rows[] = {{L"Rastrel-12.log", 12U},
                      {L"oldRastrel-12.log", 12U},
                      {L"Rastrel-12.log.bak", 12U},
                      {L"a.b.Rastrel-12.log", 12U},
                      {L"Rastrel-4294967295.log", 4294967295U},
                      {L"Rastrel-4294967296.log", 0U},
                      {L"Rastrel--1.log", 4294967295U},
                      {L"Rastrel-+7.log", 7U},
                      {L"Rastrel- 7.log", 7U},
                      {L"Rastrel-7x.log", 7U},
                      {L"Rastrel-007.", 7U},
                      {L"Rastrel-abc.log", std::nullopt},
                      {L"Rastrel-.log", std::nullopt},
                      {L"Rastrel-12", std::nullopt},
                      {L"my-Rastrel-12.log", std::nullopt},
                      {L"Rastrel-x7.log", std::nullopt},
                      {L"Rastrel-+-7.log", std::nullopt},
                      {L"Rastrel.log", std::nullopt},
                      {L"", std::nullopt}};
  for (const Row& row : rows) EXPECT_EQ(row.process, ProcessOfLog(row.name));
}

TEST_F(LogCleanup, the_log_of_an_ended_process_goes) {
  const std::string name = "Rastrel-" + DeadProcess() + ".log";
  PutLog(name);
  EXPECT_EQ(Said(), "1 old log(s) cleaned up\r\n");
  EXPECT_FALSE(Has(name));
}

TEST_F(LogCleanup, the_log_of_a_living_process_and_our_own_stay) {
  ForkedChild child([](ForkedChild::Side& side) {
    side.Await();
    return 0;
  });
  const std::string name = "Rastrel-" + std::to_string(child.Id()) + ".log";
  PutLog(name);
  EXPECT_EQ(Said(), "0 old log(s) cleaned up\r\n");
  EXPECT_TRUE(Has(name));
  EXPECT_TRUE(Has("Rastrel-" + std::to_string(::getpid()) + ".log"));
}

TEST_F(LogCleanup, a_name_without_a_number_stays_and_is_named) {
  PutLog("Rastrel-abc.log");
  EXPECT_EQ(Said(), "Invalid log name: 'Rastrel-abc.log'\r\n0 old log(s) cleaned up\r\n");
  EXPECT_TRUE(Has("Rastrel-abc.log"));
}

TEST_F(LogCleanup, the_prefix_may_stand_anywhere_in_the_name) {
  const std::string name = "oldRastrel-" + DeadProcess() + ".log";
  PutLog(name);
  EXPECT_EQ(Said(), "1 old log(s) cleaned up\r\n");
  EXPECT_FALSE(Has(name));
}

TEST_F(LogCleanup, an_earlier_dash_makes_the_name_invalid) {
  const std::string name = "my-Rastrel-" + DeadProcess() + ".log";
  PutLog(name);
  EXPECT_EQ("Invalid log name: '" + name + "'\r\n0 old log(s) cleaned up\r\n", Said());
  EXPECT_TRUE(Has(name));
}

TEST_F(LogCleanup, a_process_that_cannot_be_opened_counts_as_gone) {
  PutLog("Rastrel-4294967295.log");
  PutLog("Rastrel-0.log");
  PutLog("Rastrel--1.log");
  EXPECT_EQ(Said(), "3 old log(s) cleaned up\r\n");
  EXPECT_FALSE(Has("Rastrel-4294967295.log"));
  EXPECT_FALSE(Has("Rastrel-0.log"));
}

TEST_F(LogCleanup, a_file_that_cannot_be_removed_is_named_with_its_path) {
  const std::string name = "Rastrel-" + DeadProcess() + ".log";
  std::filesystem::create_directories(m_Library.Directory().Path("Queue/rip/" + name));
  EXPECT_EQ("Can't unlink '" + RipPath() + name + "'\r\n0 old log(s) cleaned up\r\n", Said());
}

TEST_F(LogCleanup, other_names_are_left_alone) {
  const std::string dead = DeadProcess();
  for (const std::string& name : {"rastrel-" + dead + ".log", "Rastrel" + dead + ".log",
                                  "Other-" + dead + ".log", std::string("corerast.exe")})
    PutLog(name);
  EXPECT_EQ(Said(), "0 old log(s) cleaned up\r\n");
  EXPECT_TRUE(Has("rastrel-" + dead + ".log"));
  EXPECT_TRUE(Has("corerast.exe"));
}

TEST_F(LogCleanup, any_extension_counts) {
  const std::string dead = DeadProcess();
  PutLog("Rastrel-" + dead + ".txt");
  PutLog("Rastrel-" + dead + ".");
  EXPECT_EQ(Said(), "2 old log(s) cleaned up\r\n");
}

TEST_F(LogCleanup, complaints_come_before_the_count) {
  PutLog("Rastrel-a.log");
  PutLog("Rastrel-b.log");
  PutLog("Rastrel-" + DeadProcess() + ".log");
  const std::string said = Said();
  EXPECT_TRUE(said.ends_with("\r\n1 old log(s) cleaned up\r\n")) << said;
  EXPECT_NE(std::string::npos, said.find("Invalid log name: 'Rastrel-a.log'\r\n"));
  EXPECT_NE(std::string::npos, said.find("Invalid log name: 'Rastrel-b.log'\r\n"));
  EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 3);
}

}  // namespace
