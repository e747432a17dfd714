#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::os {
class Thread;
}

namespace rastrel::server::web {

/// A bounded number of threads that answer requests, and a bounded number of requests that wait for
/// them. Any thread.
class WorkerPool {
 public:
  WorkerPool(std::size_t threads, std::size_t waiting);
  /// Does all that waits, then ends.
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  /// Fails if there is not a single thread to be had.
  [[nodiscard]] Expected<void> Start();
  /// False if as many wait as may; the work is not done then.
  [[nodiscard]] bool Post(std::function<void()> work);

 private:
  void Run();

  const std::size_t m_Count;
  const std::size_t m_WaitingLimit;
  std::mutex m_Mutex;
  std::condition_variable m_Changed;
  std::deque<std::function<void()>> m_Waiting;
  bool m_Stop = false;
  std::vector<std::unique_ptr<os::Thread>> m_Threads;
};

}  // namespace rastrel::server::web
