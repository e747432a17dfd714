#include "rastrel/platform/os/process_limits.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace rastrel::os {
namespace {

// A process that waits until it is killed.
class WaitingProcess {
 public:
  WaitingProcess() : m_Id(::fork()) {
    if (m_Id == 0)
      for (;;) ::pause();
  }
  ~WaitingProcess() {
    ::kill(m_Id, SIGKILL);
    ::waitpid(m_Id, nullptr, 0);
  }
  WaitingProcess(const WaitingProcess&) = delete;
  WaitingProcess& operator=(const WaitingProcess&) = delete;
  [[nodiscard]] std::uint32_t Id() const { return static_cast<std::uint32_t>(m_Id); }
  [[nodiscard]] rlimit Limit(__rlimit_resource resource) const {
    rlimit limit{};
    EXPECT_EQ(::prlimit(m_Id, resource, nullptr, &limit), 0);
    return limit;
  }

 private:
  pid_t m_Id;
};

TEST(ProcessLimits, each_is_set_and_those_of_0_stay) {
  const WaitingProcess process;
  const rlimit before = process.Limit(RLIMIT_FSIZE);
  ASSERT_TRUE(LimitProcess(process.Id(), {.memoryBytes = 1U << 30U, .processorSeconds = 7}));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  EXPECT_EQ(process.Limit(RLIMIT_AS).rlim_cur, 1U << 30U);
#endif
  EXPECT_EQ(process.Limit(RLIMIT_CPU).rlim_cur, 7U);
  EXPECT_EQ(process.Limit(RLIMIT_FSIZE).rlim_cur, before.rlim_cur);
  ASSERT_TRUE(LimitProcess(process.Id(), {.fileBytes = 5}));
  EXPECT_EQ(process.Limit(RLIMIT_FSIZE).rlim_cur, 5U);
}

TEST(ProcessLimits, none_is_above_that_of_the_machine) {
  const WaitingProcess process;
  const rlimit own{100, 200};
  ASSERT_EQ(::prlimit(static_cast<pid_t>(process.Id()), RLIMIT_FSIZE, &own, nullptr), 0);
  ASSERT_TRUE(LimitProcess(process.Id(), {.fileBytes = 201}));
  EXPECT_EQ(process.Limit(RLIMIT_FSIZE).rlim_cur, 200U);
}

TEST(ProcessLimits, a_process_that_is_not_there_is_a_failure) {
  const pid_t gone = ::fork();
  if (gone == 0) ::_exit(0);
  ASSERT_EQ(::waitpid(gone, nullptr, 0), gone);
  const auto limited = LimitProcess(static_cast<std::uint32_t>(gone), {.fileBytes = 5});
  ASSERT_FALSE(limited);
  EXPECT_EQ(limited.Error().error, ESRCH);
}

}  // namespace
}  // namespace rastrel::os
