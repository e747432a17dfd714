#include "rastrel/platform/os/thread.h"

#include <new>
#include <utility>

#include "rastrel/platform/os/system_calls.h"

namespace rastrel::os {

std::unique_ptr<Thread> Thread::Start(std::function<void()> body) noexcept {
  std::unique_ptr<Thread> thread(new (std::nothrow) Thread);
  if (!thread) return nullptr;
  thread->m_Body = std::move(body);
  const auto run = [](void* context) noexcept -> void* {
    static_cast<Thread*>(context)->m_Body();
    return nullptr;
  };
  if (Calls().thread_create(&thread->m_Thread, nullptr, run, thread.get()) != 0) return nullptr;
  return thread;
}

void Thread::Join() noexcept { pthread_join(m_Thread, nullptr); }

}  // namespace rastrel::os
