#include "rastrel/platform/mfc/sync.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <thread>
#include <vector>

#include "rastrel/platform/mfc/window.h"
#include "rastrel/platform/os/system_calls.h"
#include "rastrel/platform/os/wait.h"

namespace os = rastrel::os;

namespace {

int NoDescriptor(unsigned, int) {
  errno = EMFILE;
  return -1;
}

}  // namespace

TEST(CSemaphore, counts_from_its_initial_to_its_maximum) {
  CSemaphore semaphore(1, 2);
  EXPECT_TRUE(semaphore.Unlock());
  EXPECT_FALSE(semaphore.Unlock());
  EXPECT_TRUE(semaphore.Lock());
  EXPECT_TRUE(semaphore.Lock());
  EXPECT_EQ(os::SemaphoreCount(semaphore.m_hObject), 0U);
  EXPECT_TRUE(semaphore.Unlock());
}

TEST(CSemaphore, a_count_given_back_first_is_found_by_a_later_wait) {
  CSemaphore semaphore(0, 1);
  EXPECT_TRUE(semaphore.Unlock());
  const std::array handles = {semaphore.m_hObject};
  EXPECT_EQ(os::WaitForAny(handles), os::WaitSignaledBase);
}

TEST(CSemaphore, threads_that_give_back_at_once_never_pass_the_maximum) {
  for (int round = 0; round < 50; ++round) {
    CSemaphore semaphore(0, 1);
    std::atomic<int> given{0};
    {
      std::vector<std::jthread> threads;
      for (int count = 0; count < 4; ++count)
        threads.emplace_back([&] { given += semaphore.Unlock() ? 1 : 0; });
    }
    EXPECT_EQ(given, 1);
    EXPECT_EQ(os::SemaphoreCount(semaphore.m_hObject), 1U);
  }
}

TEST(CSemaphore, without_a_descriptor_everything_fails) {
  const os::SystemCallsGuard guard;
  os::Calls().eventfd = NoDescriptor;
  CSemaphore semaphore;
  EXPECT_EQ(semaphore.m_hObject, INVALID_HANDLE_VALUE);
  EXPECT_FALSE(semaphore.Lock());
  EXPECT_FALSE(semaphore.Unlock());
  CSingleLock lock(&semaphore, true);
  EXPECT_FALSE(lock.IsLocked());
}

TEST(CSingleLock, holds_the_count_until_it_is_unlocked_or_destroyed) {
  CSemaphore semaphore(1, 1);
  {
    CSingleLock lock(&semaphore, true);
    EXPECT_TRUE(lock.IsLocked());
    EXPECT_EQ(os::SemaphoreCount(semaphore.m_hObject), 0U);
    EXPECT_TRUE(lock.Unlock());
    EXPECT_FALSE(lock.Unlock());
    EXPECT_FALSE(lock.IsLocked());
    EXPECT_TRUE(lock.Lock());
  }
  EXPECT_EQ(os::SemaphoreCount(semaphore.m_hObject), 1U);
  CSingleLock none(&semaphore);
  EXPECT_FALSE(none.IsLocked());
  EXPECT_FALSE(none.Unlock());
}

TEST(CSingleLock, of_threads_that_unlock_at_once_one_does) {
  for (int round = 0; round < 50; ++round) {
    CSemaphore semaphore(1, 1);
    CSingleLock lock(&semaphore, true);
    std::atomic<int> unlocked{0};
    {
      std::vector<std::jthread> threads;
      for (int count = 0; count < 4; ++count)
        threads.emplace_back([&] { unlocked += lock.Unlock() ? 1 : 0; });
    }
    EXPECT_EQ(unlocked, 1);
  }
}

TEST(CSingleLock, without_a_semaphore_nothing_is_held) {
  CSingleLock lock(nullptr, true);
  EXPECT_FALSE(lock.Lock());
  EXPECT_FALSE(lock.IsLocked());
}

TEST(CWnd, messages_are_taken_in_the_order_they_were_posted) {
  CWnd window;
  EXPECT_FALSE(window.TakeMessage());
  EXPECT_TRUE(window.PostMessage(32890, 1, -2));
  EXPECT_TRUE(window.PostMessage(32891, 3, 4));
  const auto first = window.TakeMessage();
  ASSERT_TRUE(first);
  EXPECT_EQ(first->message, 32890U);
  EXPECT_EQ(first->wParam, 1U);
  EXPECT_EQ(first->lParam, -2);
  ASSERT_TRUE(window.TakeMessage());
  EXPECT_FALSE(window.TakeMessage());
}

TEST(CWnd, its_handle_is_signalled_while_messages_wait) {
  CWnd window;
  EXPECT_EQ(os::SemaphoreCount(window.GetMessageHandle()), 0U);
  EXPECT_TRUE(window.PostMessage(1, 0, 0));
  EXPECT_TRUE(window.PostMessage(2, 0, 0));
  EXPECT_EQ(os::SemaphoreCount(window.GetMessageHandle()), 2U);
  ASSERT_TRUE(window.TakeMessage());
  EXPECT_EQ(os::SemaphoreCount(window.GetMessageHandle()), 1U);
  ASSERT_TRUE(window.TakeMessage());
  EXPECT_EQ(os::SemaphoreCount(window.GetMessageHandle()), 0U);
}

TEST(CWnd, a_host_that_read_the_handle_itself_still_gets_its_messages) {
  CWnd window;
  EXPECT_TRUE(window.PostMessage(1, 0, 0));
  EXPECT_TRUE(os::AcquireSemaphoreHandle(window.GetMessageHandle()));
  EXPECT_TRUE(window.TakeMessage());
}

TEST(CWnd, no_message_of_many_threads_is_lost) {
  CWnd window;
  {
    std::vector<std::jthread> threads;
    for (unsigned thread = 0; thread < 4; ++thread)
      threads.emplace_back([&window, thread] {
        for (unsigned count = 0; count < 1000; ++count) window.PostMessage(thread, count, 0);
      });
  }
  std::array<std::uintptr_t, 4> next{};
  while (const auto message = window.TakeMessage())
    EXPECT_EQ(message->wParam, next.at(message->message)++);
  for (const std::uintptr_t count : next) EXPECT_EQ(count, 1000U);
}

TEST(CWnd, without_a_descriptor_messages_still_arrive) {
  const os::SystemCallsGuard guard;
  os::Calls().eventfd = NoDescriptor;
  CWnd window;
  EXPECT_EQ(window.GetMessageHandle(), INVALID_HANDLE_VALUE);
  EXPECT_TRUE(window.PostMessage(1, 0, 0));
  EXPECT_TRUE(window.TakeMessage());
}
