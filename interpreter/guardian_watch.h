#pragma once

#include <sys/types.h>

#include <cstddef>

/// The guardian's own process, and the messages to it.
///
/// It is forked from a process that may have threads, whose locks stay locked in it for ever if
/// another thread held one. So all here is system calls: no memory of the C library's, no stream,
/// no exception.
namespace rastrel::interpreter {

/// First byte of a message.
enum class GuardianOrder : char {
  GuardPath = 'P',
  ReleasePath = 'p',
  ReleaseAllPaths = 'k',
  GuardGroup = 'G',
  ReleaseGroup = 'g',
};

/// Sends one message to the guardian. False with errno set: it is gone, or the text too long.
///
///     0       1
///     | order | path without a zero byte, or the bytes of a pid_t, or nothing |
[[nodiscard]] bool SendToGuardian(int descriptor, GuardianOrder order, const void* text,
                                  std::size_t size) noexcept;

/// The same with a process group, by its leader's id. Returns false for 1 and all below: they are
/// no single group.
[[nodiscard]] bool SendToGuardian(int descriptor, GuardianOrder order, pid_t leader) noexcept;

/// Standard streams of the process that makes the guardian, which the guardian holds open until it
/// has cleared everything away: whoever reads such a pipe to its end finds everything cleared.
enum class HeldStreams {
  None,            ///< and it reports nothing
  Error,           ///< it names there the paths that it can not remove
  OutputAndError,  ///< as Error
};

/// The body of the guardian's process, between fork and its end. Obeys the messages at the socket
/// until all copies of its other end are closed, then kills the groups, removes the paths, and
/// ends. REQUIRES: all signals are blocked. They stay so: none ends it but SIGKILL.
[[noreturn]] void RunGuardian(int socket, HeldStreams held) noexcept;

/// Removes the path with all below it. Says on standard error if it can't.
void RemoveGuarded(const char* path) noexcept;

}  // namespace rastrel::interpreter
