#include "rastrel/platform/os/tree_workers.h"

#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

#include "rastrel/platform/os/thread.h"

namespace rastrel::os {

TreeWorkers::TreeWorkers() : m_Free(std::clamp(std::thread::hardware_concurrency(), 1U, 4U) - 1) {}

unsigned TreeWorkers::TakeHelpers(std::size_t useful) {
  unsigned available = m_Free.load(std::memory_order_relaxed);
  unsigned taken;
  do {
    taken = static_cast<unsigned>(std::min<std::size_t>(available, useful));
  } while (!m_Free.compare_exchange_weak(available, available - taken, std::memory_order_relaxed));
  return taken;
}

bool TreeWorkers::ForEach(std::size_t count, std::size_t worthwhile,
                          const std::function<bool(std::size_t)>& work) {
  std::atomic<std::size_t> next{0};
  std::atomic<bool> failed{false};
  const auto run = [&] {
    while (!failed.load(std::memory_order_relaxed)) {
      const std::size_t index = next.fetch_add(1, std::memory_order_relaxed);
      if (index >= count) return;
      if (!work(index)) failed.store(true, std::memory_order_relaxed);
    }
  };
  const unsigned taken = count >= worthwhile && count > 1 ? TakeHelpers(count - 1) : 0;
  std::vector<std::unique_ptr<Thread>> helpers;
  for (unsigned started = 0; started < taken; ++started)
    if (auto helper = Thread::Start(run)) helpers.push_back(std::move(helper));
  run();
  for (const auto& helper : helpers) helper->Join();
  m_Free.fetch_add(taken, std::memory_order_relaxed);
  return !failed.load(std::memory_order_relaxed);
}

}  // namespace rastrel::os
