#include "rastrel/platform/os/system_calls.h"

#include <sched.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/random.h>
#include <unistd.h>

#include <cstdio>

// The header of glibc 2.36 declares its functions without C linkage.
extern "C" {
#include <sys/pidfd.h>
}

namespace rastrel::os {

SystemCalls& Calls() {
  static SystemCalls calls = {
      .pipe2 = ::pipe2,
      .eventfd = ::eventfd,
      .set_pipe_size =
          [](int descriptor, int bytes) {
            // The call returns the size on new kernels and 0 on old ones.
            const int granted = ::fcntl(descriptor, F_SETPIPE_SZ, bytes);
            return granted == 0 ? ::fcntl(descriptor, F_GETPIPE_SZ) : granted;
          },
      .memory_file = ::memfd_create,
      .spawn = ::posix_spawn,
      .fork = ::fork,
      .clone = [](int (*body)(void*), void* stack, int flags,
                  void* argument) { return ::clone(body, stack, flags, argument); },
      .pidfd_open = ::pidfd_open,
      .pidfd_send_signal = ::pidfd_send_signal,
      .waitid = ::waitid,
      .poll = ::poll,
      .read = ::read,
      .write = ::write,
      .open = [](const char* path, int flags, mode_t mode) { return ::open(path, flags, mode); },
      .unlink = ::unlink,
      .rename_new =
          [](const char* path, const char* newPath) {
            return ::renameat2(AT_FDCWD, path, AT_FDCWD, newPath, RENAME_NOREPLACE);
          },
      .reserve =
          [](int descriptor, off64_t bytes) {
            return ::fallocate64(descriptor, FALLOC_FL_KEEP_SIZE, 0, bytes);
          },
      .random = [](void* bytes, size_t count) { return ::getrandom(bytes, count, 0); },
      .duplicate = [](int descriptor,
                      int lowest) { return ::fcntl(descriptor, F_DUPFD_CLOEXEC, lowest); },
      .copy_range = ::copy_file_range,
      .thread_create = ::pthread_create,
  };
  return calls;
}

}  // namespace rastrel::os
