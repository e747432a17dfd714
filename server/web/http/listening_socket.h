#pragma once

#include <string>

#include "rastrel/platform/os/expected.h"
#include "rastrel/platform/os/file_descriptor.h"

namespace rastrel::server::web {

/// A Unix socket at this native path, for this user alone (0600). A socket that a process left
/// there is replaced; anything else is a failure, and so is a path that is too long for a socket.
/// The caller keeps others from serving the same path.
[[nodiscard]] Expected<os::FileDescriptor> ListenLocally(const std::string& path);

/// A TCP socket at the first address of a host's name or number. Port 0 is any free one.
[[nodiscard]] Expected<os::FileDescriptor> ListenAt(const std::string& host, int port);

/// The port of a TCP socket; 0 if it has none.
[[nodiscard]] int PortOf(int socket);

/// Whether a host's name or number is this machine's own: "localhost", "127.*", "::1".
[[nodiscard]] bool IsLoopback(const std::string& host);

}  // namespace rastrel::server::web
