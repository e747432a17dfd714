#include "server/web/http/connection_watch.h"

#include <sys/socket.h>

#include <algorithm>
#include <utility>

#include "rastrel/platform/os/thread.h"

namespace rastrel::server::web {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds LookInterval{250};

}  // namespace

ConnectionWatch::ConnectionWatch(const Limits& limits) : m_Limits(limits) {}

ConnectionWatch::~ConnectionWatch() {
  if (!m_Thread) return;
  {
    const std::lock_guard lock(m_Mutex);
    m_Stop = true;
  }
  m_Stopped.notify_all();
  m_Thread->Join();
}

Expected<void> ConnectionWatch::Start() {
  m_Thread = os::Thread::Start([this] { Run(); });
  if (!m_Thread) return FailureOf("there is no thread for the watch of connections");
  return {};
}

ConnectionWatch::Connection* ConnectionWatch::Add(int socket, std::string address) {
  const std::lock_guard lock(m_Mutex);
  Connection& connection = m_Connections.emplace_back();
  connection.address = std::move(address);
  connection.socket = socket;
  connection.since = Clock::now();
  return &connection;
}

void ConnectionWatch::Remove(Connection* connection) {
  const std::lock_guard lock(m_Mutex);
  m_Connections.remove_if([&](const Connection& one) { return &one == connection; });
}

void ConnectionWatch::Enter(Connection* connection, Phase phase) {
  const std::lock_guard lock(m_Mutex);
  connection->phase = phase;
  connection->since = Clock::now();
  connection->bytes = 0;
}

void ConnectionWatch::AddBytes(Connection* connection, std::int64_t bytes) {
  const std::lock_guard lock(m_Mutex);
  connection->bytes += bytes;
}

std::size_t ConnectionWatch::Count() {
  const std::lock_guard lock(m_Mutex);
  return m_Connections.size();
}

void ConnectionWatch::Run() {
  std::unique_lock lock(m_Mutex);
  while (!m_Stop) {
    EndSlow();
    m_Stopped.wait_for(lock, LookInterval);
  }
}

// The socket is closed by its owner only after Remove, so that it is no other's meanwhile.
void ConnectionWatch::EndSlow() {
  const auto now = Clock::now();
  for (const Connection& one : m_Connections) {
    milliseconds limit = m_Limits.headTime;
    if (one.phase == Phase::Answer) continue;
    if (one.phase == Phase::Body)
      limit = m_Limits.bodyTime +
              milliseconds(one.bytes * 1000 / std::max<std::int64_t>(1, m_Limits.bodyRate));
    if (now - one.since > limit) static_cast<void>(::shutdown(one.socket, SHUT_RDWR));
  }
}

}  // namespace rastrel::server::web
