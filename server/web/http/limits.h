#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace rastrel::server::web {

/// What senders may take of this machine. Those of one door.
struct Limits {
  unsigned connections = 256;        ///< at once; more wait until one has ended
  unsigned addressConnections = 64;  ///< at once of one address; more are closed. 0: no limit
  std::size_t headBytes = 32768;     ///< memory of a request: its headers, and pieces of its body
  std::size_t smallBody = 1048576;   ///< bytes of a body that is kept in memory
  std::int64_t upload = 0;           ///< bytes of a job's file; 0: no limit
  /// From a connection's start, or the end of its last answer, to the end of the next request's
  /// headers.
  std::chrono::milliseconds headTime{20000};
  /// A body has this time and so many bytes a second more.
  std::chrono::milliseconds bodyTime{30000};
  std::int64_t bodyRate = 1024;
  /// A connection that takes or gives no byte for so long is closed.
  std::chrono::seconds idleTime{30};
};

}  // namespace rastrel::server::web
