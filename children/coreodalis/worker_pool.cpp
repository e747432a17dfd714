#include "children/coreodalis/worker_pool.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace rastrel::odalis {
namespace {

constexpr unsigned MaximumThreads = 32;

}  // namespace

WorkerPool::WorkerPool(unsigned threads) {
  if (threads == 0) threads = std::thread::hardware_concurrency();
  threads = std::min(threads, MaximumThreads);
  if (threads < 2) return;
  for (unsigned i = 0; i < threads; ++i) {
    auto thread = os::Thread::Start([this] { Work(); });
    if (!thread) break;
    m_Threads.push_back(std::move(thread));
  }
}

WorkerPool::~WorkerPool() {
  {
    const std::lock_guard lock(m_Mutex);
    m_Ending = true;
  }
  m_Changed.notify_all();
  for (const auto& thread : m_Threads) thread->Join();
}

unsigned WorkerPool::Width() const { return std::max(1u, static_cast<unsigned>(m_Threads.size())); }

void WorkerPool::Run(std::function<void()> task) {
  if (m_Threads.empty()) return task();
  {
    const std::lock_guard lock(m_Mutex);
    m_Tasks.push_back(std::move(task));
  }
  m_Changed.notify_one();
}

void WorkerPool::Work() {
  std::unique_lock lock(m_Mutex);
  while (true) {
    m_Changed.wait(lock, [this] { return m_Ending || !m_Tasks.empty(); });
    if (m_Tasks.empty()) return;
    const std::function<void()> task = std::move(m_Tasks.front());
    m_Tasks.pop_front();
    lock.unlock();
    task();
    lock.lock();
  }
}

void TaskGroup::Run(std::function<void()> task) {
  {
    const std::lock_guard lock(m_Mutex);
    ++m_Running;
  }
  m_Pool.Run([this, task = std::move(task)] {
    task();
    // Notified under the lock: whoever waits may end this group as soon as it is released.
    const std::lock_guard lock(m_Mutex);
    if (--m_Running == 0) m_Done.notify_all();
  });
}

void TaskGroup::Wait() {
  std::unique_lock lock(m_Mutex);
  m_Done.wait(lock, [this] { return m_Running == 0; });
}

}  // namespace rastrel::odalis
