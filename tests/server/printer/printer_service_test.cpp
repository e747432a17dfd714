#include "server/printer/printer_service.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "rastrel/platform/os/private_directory.h"

namespace rastrel::server {
namespace {

using std::chrono::seconds;

constexpr seconds WaitLimit{60};

class PrinterServiceTest : public testing::Test {
 protected:
  PrinterServiceTest() : m_Place(*os::PrivateDirectory::Make("rastrel-service-")) {}

  // A program in the printer's place.
  [[nodiscard]] std::string Program(const std::string& script) const {
    const std::string path = m_Place.Path() + "/program";
    std::ofstream(path) << "#!/bin/sh\n" << script;
    ::chmod(path.c_str(), 0700);
    return path;
  }
  [[nodiscard]] PrinterService::OnMessage Keep() {
    return [this](const std::string& line) {
      const std::lock_guard lock(m_Mutex);
      m_Messages.push_back(line);
      m_Changed.notify_all();
    };
  }
  [[nodiscard]] bool HasMessages(std::size_t count) {
    std::unique_lock lock(m_Mutex);
    return m_Changed.wait_for(lock, WaitLimit, [&] { return m_Messages.size() >= count; });
  }

  os::PrivateDirectory m_Place;
  std::mutex m_Mutex;
  std::condition_variable m_Changed;
  std::vector<std::string> m_Messages;
};

TEST_F(PrinterServiceTest, StartsAProgramAgainThatEnded) {
  PrinterService service(Program("exit 3\n"), Keep());
  ASSERT_TRUE(service.Start());
  ASSERT_TRUE(HasMessages(2));
  service.Stop();
  EXPECT_EQ(m_Messages[0], "the network printer ended: status 3");
  EXPECT_EQ(m_Messages[1], "the network printer ended: status 3");
}

TEST_F(PrinterServiceTest, EndsTheProgramWhenItStops) {
  const std::string started = m_Place.Path() + "/started";
  const std::string ended = m_Place.Path() + "/ended";
  PrinterService service(
      Program("ended='" + ended + "'\ntrap 'touch \"$ended\"; exit 0' TERM\ntouch '" + started +
              "'\nwhile :; do sleep 0.05; done\n"),
      Keep());
  ASSERT_TRUE(service.Start());
  const auto limit = std::chrono::steady_clock::now() + WaitLimit;
  while (!std::filesystem::exists(started) && std::chrono::steady_clock::now() < limit)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  service.Stop();
  EXPECT_TRUE(std::filesystem::exists(ended));
  EXPECT_TRUE(m_Messages.empty());
}

TEST_F(PrinterServiceTest, AProgramThatIsNotThereIsAMessage) {
  PrinterService service(m_Place.Path() + "/none", Keep());
  ASSERT_TRUE(service.Start());
  ASSERT_TRUE(HasMessages(1));
  service.Stop();
  EXPECT_TRUE(m_Messages[0].starts_with("the network printer can't be started: "));
}

TEST(NextPauseTest, PausesGrowUntilARunIsLong) {
  EXPECT_EQ(NextPause(seconds(0), seconds(0)), seconds(1));
  EXPECT_EQ(NextPause(seconds(1), seconds(0)), seconds(2));
  EXPECT_EQ(NextPause(seconds(32), seconds(59)), seconds(60));
  EXPECT_EQ(NextPause(seconds(60), seconds(59)), seconds(60));
  EXPECT_EQ(NextPause(seconds(60), seconds(60)), seconds(1));
}

}  // namespace
}  // namespace rastrel::server
