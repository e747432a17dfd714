#include "rastrel/platform/os/thread.h"

#include <gtest/gtest.h>

#include <ctime>
#include <memory>
#include <thread>
#include <vector>

#include "rastrel/platform/os/clock.h"
#include "rastrel/platform/os/recursive_lock.h"
#include "rastrel/platform/os/shared_word.h"
#include "rastrel/platform/os/system_calls.h"
#include "tests/support/environment_guard.h"

namespace os = rastrel::os;

TEST(Thread, runs_its_body_once_before_join_returns) {
  int runs = 0;
  const auto thread = os::Thread::Start([&] { ++runs; });
  ASSERT_NE(thread, nullptr);
  thread->Join();
  EXPECT_EQ(runs, 1);
}

TEST(Thread, a_system_without_threads_gives_null) {
  const os::SystemCallsGuard guard;
  os::Calls().thread_create = [](pthread_t*, const pthread_attr_t*, void* (*)(void*), void*) {
    return EAGAIN;
  };
  bool ran = false;
  EXPECT_EQ(os::Thread::Start([&] { ran = true; }), nullptr);
  EXPECT_FALSE(ran);
}

TEST(RecursiveLock, its_holder_may_enter_again_and_others_wait_for_the_last_leave) {
  os::RecursiveLock lock;
  lock.Enter();
  lock.Enter();
  os::SharedWord<bool> entered = false;
  std::jthread other([&] {
    lock.Enter();
    entered = true;
    lock.Leave();
  });
  lock.Leave();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_FALSE(entered.Load());
  lock.Leave();
  other.join();
  EXPECT_TRUE(entered.Load());
}

TEST(RecursiveLock, keeps_threads_apart) {
  os::RecursiveLock lock;
  long sum = 0;
  {
    std::vector<std::jthread> threads;
    for (int count = 0; count < 4; ++count)
      threads.emplace_back([&] {
        for (int round = 0; round < 10'000; ++round) {
          lock.Enter();
          lock.Enter();
          ++sum;
          lock.Leave();
          lock.Leave();
        }
      });
  }
  EXPECT_EQ(sum, 40'000);
}

TEST(RecursiveLock, may_be_destroyed_while_it_is_held) {
  auto lock = std::make_unique<os::RecursiveLock>();
  lock->Enter();
  lock.reset();
}

TEST(SharedWord, reads_assigns_and_copies_like_its_value) {
  struct Record {
    os::SharedWord<int> number = 5;
  };
  Record one;
  one.number = 7;
  Record two = one;
  EXPECT_EQ(two.number, 7);
  two.number = 8;
  one = two;
  EXPECT_EQ(one.number.Load(), 8);
  EXPECT_EQ(sizeof(os::SharedWord<int>), sizeof(int));
}

TEST(CurrentLocalTime, is_the_present_moment_in_local_time) {
  const rastrel::test::EnvironmentGuard zone("TZ", "IST-05:30");
  ::tzset();
  const std::time_t before = std::time(nullptr);
  const os::LocalTime now = os::CurrentLocalTime();
  const std::time_t after = std::time(nullptr);
  std::tm parts{};
  parts.tm_year = now.year - 1900;
  parts.tm_mon = now.month - 1;
  parts.tm_mday = now.day;
  parts.tm_hour = now.hour;
  parts.tm_min = now.minute;
  parts.tm_sec = now.second;
  const std::time_t told = ::timegm(&parts) - (5 * 60 + 30) * 60;
  EXPECT_GE(told, before);
  EXPECT_LE(told, after);
}

TEST(MonotonicNanoseconds, goes_forward_in_nanoseconds) {
  const std::int64_t begin = os::MonotonicNanoseconds();
  std::this_thread::sleep_for(std::chrono::milliseconds(10));
  const std::int64_t passed = os::MonotonicNanoseconds() - begin;
  EXPECT_GE(passed, 10'000'000);
  EXPECT_LT(passed, 10'000'000'000);
}
