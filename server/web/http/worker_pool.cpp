#include "server/web/http/worker_pool.h"

#include <utility>

#include "rastrel/platform/os/thread.h"

namespace rastrel::server::web {

WorkerPool::WorkerPool(std::size_t threads, std::size_t waiting)
    : m_Count(threads), m_WaitingLimit(waiting) {}

WorkerPool::~WorkerPool() {
  {
    const std::lock_guard lock(m_Mutex);
    m_Stop = true;
  }
  m_Changed.notify_all();
  for (const auto& thread : m_Threads) thread->Join();
}

Expected<void> WorkerPool::Start() {
  for (std::size_t index = 0; index < m_Count; ++index) {
    auto thread = os::Thread::Start([this] { Run(); });
    if (thread) m_Threads.push_back(std::move(thread));
  }
  if (m_Threads.empty()) return FailureOf("there is no thread to answer requests");
  return {};
}

bool WorkerPool::Post(std::function<void()> work) {
  {
    const std::lock_guard lock(m_Mutex);
    if (m_Stop || m_Waiting.size() >= m_WaitingLimit) return false;
    m_Waiting.push_back(std::move(work));
  }
  m_Changed.notify_one();
  return true;
}

void WorkerPool::Run() {
  std::unique_lock lock(m_Mutex);
  for (;;) {
    m_Changed.wait(lock, [this] { return m_Stop || !m_Waiting.empty(); });
    if (m_Waiting.empty()) return;
    const auto work = std::move(m_Waiting.front());
    m_Waiting.pop_front();
    lock.unlock();
    work();
    lock.lock();
  }
}

}  // namespace rastrel::server::web
