#include "rastrel/platform/os/signals.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "rastrel/platform/os/system_calls.h"
#include "tests/support/error_number.h"
#include "tests/support/open_descriptors.h"

namespace rastrel::os {
namespace {

sigset_t PresentMask() {
  sigset_t mask;
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  return mask;
}

// Puts mask and dispositions back, which the class under test leaves as they are on purpose.
class StopSignalsTest : public ::testing::Test {
 protected:
  StopSignalsTest() : m_Mask(PresentMask()), m_Hangup(::signal(SIGHUP, SIG_DFL)) {}
  ~StopSignalsTest() override {
    ::signal(SIGHUP, m_Hangup);
    pthread_sigmask(SIG_SETMASK, &m_Mask, nullptr);
  }
  [[nodiscard]] Expected<std::unique_ptr<StopSignals>> Start() {
    return StopSignals::Start([this](int signal) {
      const std::lock_guard<std::mutex> guard(m_Mutex);
      m_Taken.push_back(signal);
      m_Changed.notify_all();
    });
  }
  void WaitForCount(std::size_t count) {
    std::unique_lock<std::mutex> lock(m_Mutex);
    m_Changed.wait(lock, [&] { return m_Taken.size() >= count; });
  }
  std::vector<int> m_Taken;

 private:
  sigset_t m_Mask;
  sighandler_t m_Hangup;
  std::mutex m_Mutex;
  std::condition_variable m_Changed;
};

TEST_F(StopSignalsTest, each_signal_becomes_a_call) {
  const auto signals = Start();
  ASSERT_TRUE(signals);
  std::size_t count = 0;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGINT}) {
    ::kill(::getpid(), signal);
    WaitForCount(++count);
  }
  EXPECT_EQ(m_Taken, std::vector<int>({SIGINT, SIGTERM, SIGHUP, SIGINT}));
}

TEST_F(StopSignalsTest, one_that_was_ignored_stays_ignored) {
  ::signal(SIGHUP, SIG_IGN);
  const auto signals = Start();
  ASSERT_TRUE(signals);
  ::kill(::getpid(), SIGHUP);
  ::kill(::getpid(), SIGTERM);
  WaitForCount(1);
  EXPECT_EQ(m_Taken, std::vector<int>({SIGTERM}));
}

TEST_F(StopSignalsTest, ends_without_a_signal_and_holds_nothing_afterwards) {
  const std::size_t before = test::OpenDescriptors();
  { const auto signals = Start(); }
  EXPECT_TRUE(m_Taken.empty());
  EXPECT_EQ(test::OpenDescriptors(), before);
}

TEST_F(StopSignalsTest, without_a_thread_or_a_semaphore_all_is_as_before) {
  const std::size_t before = test::OpenDescriptors();
  {
    const SystemCallsGuard guard;
    Calls().thread_create = [](pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) {
      return EAGAIN;
    };
    EXPECT_FALSE(Start());
  }
  {
    const SystemCallsGuard guard;
    Calls().eventfd = [](unsigned, int) {
      errno = EMFILE;
      return -1;
    };
    EXPECT_EQ(test::ErrorNumber(Start()), EMFILE);
  }
  const sigset_t mask = PresentMask();
  EXPECT_EQ(sigismember(&mask, SIGINT), 0);
  EXPECT_EQ(test::OpenDescriptors(), before);
}

}  // namespace
}  // namespace rastrel::os
