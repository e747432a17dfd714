#include "server/web/http/event_stream.h"

#include <algorithm>
#include <utility>

namespace rastrel::server::web {

bool EventStream::Send(std::string_view text) {
  std::function<void()> wake;
  bool sent = false;
  {
    const std::lock_guard lock(m_Mutex);
    if (!m_Open) return false;
    if (m_Waiting.size() - m_Taken + text.size() > WaitingLimit) {
      m_Open = false;
      m_Waiting.clear();
      m_Taken = 0;
    } else {
      m_Waiting.erase(0, std::exchange(m_Taken, 0));
      m_Waiting += text;
      sent = true;
    }
    wake = m_Wake;
  }
  if (wake) wake();
  return sent;
}

void EventStream::Close() {
  std::function<void()> wake;
  {
    const std::lock_guard lock(m_Mutex);
    m_Open = false;
    wake = m_Wake;
  }
  if (wake) wake();
}

void EventStream::Drop() {
  {
    const std::lock_guard lock(m_Mutex);
    m_Waiting.clear();
    m_Taken = 0;
  }
  Close();
}

void EventStream::Abandon() {
  const std::lock_guard lock(m_Mutex);
  m_Open = false;
  m_Wake = nullptr;
  m_Waiting.clear();
  m_Taken = 0;
}

bool EventStream::IsOpen() const {
  const std::lock_guard lock(m_Mutex);
  return m_Open;
}

std::size_t EventStream::WaitingBytes() const {
  const std::lock_guard lock(m_Mutex);
  return m_Waiting.size() - m_Taken;
}

void EventStream::SetWake(std::function<void()> wake) {
  bool isDue = false;
  {
    const std::lock_guard lock(m_Mutex);
    m_Wake = wake;
    isDue = !m_Open || m_Waiting.size() > m_Taken;
  }
  if (isDue && wake) wake();
}

std::size_t EventStream::Take(char* target, std::size_t limit) {
  const std::lock_guard lock(m_Mutex);
  const std::size_t bytes = std::min(limit, m_Waiting.size() - m_Taken);
  std::copy_n(m_Waiting.data() + m_Taken, bytes, target);
  m_Taken += bytes;
  if (m_Taken == m_Waiting.size()) {
    m_Waiting.clear();
    m_Taken = 0;
  }
  return bytes;
}

bool EventStream::IsDone() const {
  const std::lock_guard lock(m_Mutex);
  return !m_Open && m_Waiting.size() == m_Taken;
}

std::string EventText(long long id, std::string_view event, std::string_view data) {
  std::string text;
  if (id != 0) text += "id: " + std::to_string(id) + "\n";
  if (!event.empty()) text += "event: " + std::string(event) + "\n";
  for (;;) {
    const std::size_t end = data.find_first_of("\r\n");
    text += "data: " + std::string(data.substr(0, end)) + "\n";
    if (end == data.npos) return text + "\n";
    data.remove_prefix(end + (data.substr(end).starts_with("\r\n") ? 2 : 1));
  }
}

}  // namespace rastrel::server::web
