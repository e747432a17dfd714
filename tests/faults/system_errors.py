"""Which errors each call is made to fail with: those that it can have on a machine in trouble."""

import errno

_BY_CALL = {
    "EMFILE": "openat open openat2 pipe pipe2 socketpair socket eventfd2 signalfd4 timerfd_create "
              "epoll_create1 inotify_init1 memfd_create dup dup2 dup3 pidfd_open",
    "EIO": "openat open read pread64 readv write pwrite64 writev pwritev pwritev2 close lseek stat "
           "lstat fstat newfstatat statx access faccessat faccessat2 readlink readlinkat "
           "getdents64 statfs fstatfs truncate ftruncate copy_file_range sendfile splice rename "
           "renameat renameat2 unlink unlinkat rmdir chmod fchmod fchmodat utimensat fsync "
           "fdatasync chdir fchdir",
    "EINTR": "read pread64 readv write pwrite64 writev poll ppoll select pselect6 epoll_wait wait4 "
             "waitid flock recvfrom sendto recvmsg sendmsg connect getrandom",
    "ENOSPC": "write pwrite64 writev pwritev pwritev2 mkdir mkdirat link linkat symlink symlinkat "
              "rename renameat renameat2 fallocate copy_file_range ftruncate inotify_add_watch "
              "epoll_ctl fsync fdatasync creat",
    "ENOMEM": "mmap mremap mprotect brk poll ppoll execve execveat getcwd recvmsg sendmsg "
              "timerfd_settime",
    "EAGAIN": "clone clone3 fork vfork",
    "ENOLCK": "flock",
    "EPERM": "setsid setpgid setrlimit prlimit64 prctl pidfd_send_signal",
}
# By what the call is for; flags are refused by a sandbox at most.
FCNTL_ERRORS = {"(duplicate)": "EMFILE", "(lock)": "ENOLCK"}


def errors_of(call, detail):
    """Names of the errors, for a call whose detail is as the injector tells it."""
    if call in ("openat", "open"):
        return ("ENOSPC", "EMFILE") if detail.endswith("(make)") else ("EMFILE", "EIO")
    if call == "fcntl":
        return (FCNTL_ERRORS.get(detail.rpartition(" ")[2], "EPERM"),)
    if call in ("write", "writev") and detail.startswith(("pipe:", "socket:", "anon_inode:")):
        return ("EIO", "EINTR")
    return tuple(name for name, calls in _BY_CALL.items() if call in calls.split())


def number_of(name):
    return getattr(errno, name)
