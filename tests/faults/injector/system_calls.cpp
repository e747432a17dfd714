#include "tests/faults/injector/system_calls.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace faults {
namespace {

struct Row {
  long number;
  std::string_view name;
};

#define FAULTS_CALL(name) \
  Row { SYS_##name, #name }
constexpr std::array Rows{
    // files and directories
    FAULTS_CALL(open), FAULTS_CALL(openat), FAULTS_CALL(openat2), FAULTS_CALL(creat),
    FAULTS_CALL(close), FAULTS_CALL(read), FAULTS_CALL(pread64), FAULTS_CALL(readv),
    FAULTS_CALL(write), FAULTS_CALL(pwrite64), FAULTS_CALL(writev), FAULTS_CALL(pwritev),
    FAULTS_CALL(pwritev2), FAULTS_CALL(lseek), FAULTS_CALL(stat), FAULTS_CALL(lstat),
    FAULTS_CALL(fstat), FAULTS_CALL(newfstatat), FAULTS_CALL(statx), FAULTS_CALL(access),
    FAULTS_CALL(faccessat), FAULTS_CALL(faccessat2), FAULTS_CALL(readlink), FAULTS_CALL(readlinkat),
    FAULTS_CALL(getdents64), FAULTS_CALL(getcwd), FAULTS_CALL(chdir), FAULTS_CALL(fchdir),
    FAULTS_CALL(statfs), FAULTS_CALL(fstatfs), FAULTS_CALL(truncate), FAULTS_CALL(ftruncate),
    FAULTS_CALL(fallocate), FAULTS_CALL(copy_file_range), FAULTS_CALL(sendfile),
    FAULTS_CALL(splice), FAULTS_CALL(rename), FAULTS_CALL(renameat), FAULTS_CALL(renameat2),
    FAULTS_CALL(link), FAULTS_CALL(linkat), FAULTS_CALL(symlink), FAULTS_CALL(symlinkat),
    FAULTS_CALL(unlink), FAULTS_CALL(unlinkat), FAULTS_CALL(mkdir), FAULTS_CALL(mkdirat),
    FAULTS_CALL(rmdir), FAULTS_CALL(chmod), FAULTS_CALL(fchmod), FAULTS_CALL(fchmodat),
    FAULTS_CALL(utimensat), FAULTS_CALL(fsync), FAULTS_CALL(fdatasync), FAULTS_CALL(flock),
    FAULTS_CALL(fcntl), FAULTS_CALL(dup), FAULTS_CALL(dup2), FAULTS_CALL(dup3),
    FAULTS_CALL(memfd_create), FAULTS_CALL(inotify_init1), FAULTS_CALL(inotify_add_watch),
    // pipes, waits and messages
    FAULTS_CALL(pipe), FAULTS_CALL(pipe2), FAULTS_CALL(eventfd2), FAULTS_CALL(signalfd4),
    FAULTS_CALL(timerfd_create), FAULTS_CALL(timerfd_settime), FAULTS_CALL(epoll_create1),
    FAULTS_CALL(epoll_ctl), FAULTS_CALL(epoll_wait), FAULTS_CALL(poll), FAULTS_CALL(ppoll),
    FAULTS_CALL(select), FAULTS_CALL(pselect6), FAULTS_CALL(socket), FAULTS_CALL(socketpair),
    FAULTS_CALL(connect), FAULTS_CALL(sendto), FAULTS_CALL(recvfrom), FAULTS_CALL(sendmsg),
    FAULTS_CALL(recvmsg),
    // memory
    FAULTS_CALL(mmap), FAULTS_CALL(mremap), FAULTS_CALL(mprotect), FAULTS_CALL(brk),
    // processes and threads
    FAULTS_CALL(clone), FAULTS_CALL(clone3), FAULTS_CALL(fork), FAULTS_CALL(vfork),
    FAULTS_CALL(execve), FAULTS_CALL(execveat), FAULTS_CALL(wait4), FAULTS_CALL(waitid),
    FAULTS_CALL(pidfd_open), FAULTS_CALL(pidfd_send_signal), FAULTS_CALL(setsid),
    FAULTS_CALL(setpgid), FAULTS_CALL(setrlimit), FAULTS_CALL(prlimit64), FAULTS_CALL(prctl),
    FAULTS_CALL(getrandom)};
#undef FAULTS_CALL

}  // namespace

std::optional<std::string_view> CallName(long number) {
  const auto* row = std::ranges::find(Rows, number, &Row::number);
  if (row == Rows.end()) return {};
  return row->name;
}

bool StopAtCalls() {
  // load the number; a jump to the last line for each call of the table; allow; stop.
  std::vector<sock_filter> lines{
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<unsigned>(offsetof(seccomp_data, nr)))};
  for (std::size_t index = 0; index < Rows.size(); ++index) {
    const auto toStop = static_cast<unsigned char>(Rows.size() - index);
    lines.push_back(
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(Rows[index].number), toStop, 0));
  }
  lines.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  lines.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
  const sock_fprog program{static_cast<unsigned short>(lines.size()), lines.data()};
  return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

}  // namespace faults
