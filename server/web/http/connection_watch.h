#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string>

#include "rastrel/platform/os/expected.h"
#include "server/web/http/limits.h"

namespace rastrel::os {
class Thread;
}

namespace rastrel::server::web {

/// Ends connections whose requests come too slowly: a sender that gives a byte now and then is
/// never idle. Any thread.
class ConnectionWatch {
 public:
  enum class Phase {
    Head,    ///< a request's headers are waited for
    Body,    ///< its body
    Answer,  ///< its answer is made and sent: has no limit here
  };
  /// A connection. Its fields but the first two are the watch's own.
  struct Connection {
    std::string address;     ///< the peer's, "local" for a Unix socket
    bool isRefused = false;  ///< a peer of a Unix socket that is another user
    int socket = -1;
    Phase phase = Phase::Head;
    std::chrono::steady_clock::time_point since{};
    std::int64_t bytes = 0;
  };

  explicit ConnectionWatch(const Limits& limits);
  ~ConnectionWatch();
  ConnectionWatch(const ConnectionWatch&) = delete;
  ConnectionWatch& operator=(const ConnectionWatch&) = delete;

  [[nodiscard]] Expected<void> Start();

  /// The connection is valid until Remove. REQUIRES: the socket stays open until then.
  [[nodiscard]] Connection* Add(int socket, std::string address);
  void Remove(Connection* connection);
  void Enter(Connection* connection, Phase phase);
  void AddBytes(Connection* connection, std::int64_t bytes);
  /// Connections at present.
  [[nodiscard]] std::size_t Count();

 private:
  void Run();
  void EndSlow();

  const Limits m_Limits;
  std::mutex m_Mutex;
  std::condition_variable m_Stopped;
  bool m_Stop = false;
  std::list<Connection> m_Connections;
  std::unique_ptr<os::Thread> m_Thread;
};

}  // namespace rastrel::server::web
