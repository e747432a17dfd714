#pragma once

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>

#include <cstddef>

namespace rastrel::os {

/// The calls of the machine whose failure this folder reports and a test could not otherwise bring
/// about. Code of this folder makes them through Calls(); tests put failing ones in their place.
struct SystemCalls {
  int (*pipe2)(int descriptors[2], int flags);
  int (*eventfd)(unsigned count, int flags);
  int (*set_pipe_size)(int descriptor, int bytes);  ///< returns the size granted, or -1
  int (*memory_file)(const char* name, unsigned flags);
  int (*spawn)(pid_t* id, const char* path, const posix_spawn_file_actions_t* actions,
               const posix_spawnattr_t* attributes, char* const arguments[],
               char* const environment[]);  ///< returns an error number
  pid_t (*fork)();
  int (*clone)(int (*body)(void*), void* stack, int flags, void* argument);
  int (*pidfd_open)(pid_t id, unsigned flags);
  int (*pidfd_send_signal)(int process, int signal, siginfo_t* info, unsigned flags);
  int (*waitid)(idtype_t type, id_t id, siginfo_t* info, int options);
  int (*poll)(pollfd* entries, nfds_t count, int milliseconds);
  ssize_t (*read)(int descriptor, void* bytes, size_t count);
  ssize_t (*write)(int descriptor, const void* bytes, size_t count);
  int (*open)(const char* path, int flags, mode_t mode);
  int (*unlink)(const char* path);
  int (*rename_new)(const char* path, const char* newPath);  ///< fails where newPath exists
  int (*reserve)(int descriptor, off64_t bytes);  ///< blocks beyond the end; the size stays
  ssize_t (*random)(void* bytes, size_t count);
  int (*duplicate)(int descriptor, int lowest);  ///< close-on-exec copy, at `lowest` or above
  ssize_t (*copy_range)(int source, off64_t* sourceOffset, int target, off64_t* targetOffset,
                        size_t count, unsigned flags);
  int (*thread_create)(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                       void* argument);  ///< returns an error number
};

/// The calls in force: the machine's own unless a test replaced some.
SystemCalls& Calls();

/// Puts the present calls back when it goes out of scope. For tests; not to be used while other
/// threads run through Calls().
class SystemCallsGuard {
 public:
  SystemCallsGuard() : m_Saved(Calls()) {}
  ~SystemCallsGuard() { Calls() = m_Saved; }
  SystemCallsGuard(const SystemCallsGuard&) = delete;
  SystemCallsGuard& operator=(const SystemCallsGuard&) = delete;

 private:
  SystemCalls m_Saved;
};

}  // namespace rastrel::os
