#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "rastrel/platform/os/thread.h"

namespace rastrel::odalis {

/// Threads that run tasks in the order in which they were given. Without a thread, since one was
/// asked for or the system has none to give, a task runs at once in the caller.
class WorkerPool {
 public:
  /// `threads`: at most so many run at a time; 0: as many as there are processors for this process.
  explicit WorkerPool(unsigned threads = 0);
  /// Waits for the end of every task.
  ~WorkerPool();
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  /// The number of tasks that run at the same time; 1: in the caller.
  [[nodiscard]] unsigned Width() const;

  /// Runs the task, which must not throw. Who gives tasks limits their number.
  void Run(std::function<void()> task);

 private:
  void Work();

  std::mutex m_Mutex;
  std::condition_variable m_Changed;
  std::deque<std::function<void()>> m_Tasks;
  bool m_Ending = false;
  std::vector<std::unique_ptr<os::Thread>> m_Threads;
};

/// Counts tasks that have begun to be wanted and are not done.
class TaskGroup {
 public:
  explicit TaskGroup(WorkerPool& pool) : m_Pool(pool) {}
  /// Waits.
  ~TaskGroup() { Wait(); }
  TaskGroup(const TaskGroup&) = delete;
  TaskGroup& operator=(const TaskGroup&) = delete;

  /// Runs a task of the group in the pool. It must not throw.
  void Run(std::function<void()> task);
  /// Waits until all of them are done.
  void Wait();

 private:
  WorkerPool& m_Pool;
  std::mutex m_Mutex;
  std::condition_variable m_Done;
  unsigned m_Running = 0;
};

}  // namespace rastrel::odalis
