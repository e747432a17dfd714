#include "tests/faults/injector/call_detail.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <span>

#include "tests/faults/injector/traced_memory.h"

namespace faults {
namespace {

bool IsOneOf(std::string_view name, std::span<const std::string_view> names) {
  return std::ranges::find(names, name) != names.end();
}

constexpr std::string_view PathFirst[] = {
    "open",  "creat",  "stat", "lstat",  "access", "readlink", "chdir",    "statfs",
    "rmdir", "rename", "link", "unlink", "mkdir",  "chmod",    "truncate", "execve"};
constexpr std::string_view PathSecond[] = {"openat",    "openat2",    "newfstatat", "statx",
                                           "faccessat", "faccessat2", "readlinkat", "renameat",
                                           "renameat2", "linkat",     "unlinkat",   "mkdirat",
                                           "fchmodat",  "utimensat",  "execveat"};
constexpr std::string_view DescriptorFirst[] = {
    "close",     "read",     "pread64", "readv",      "write",     "pwrite64", "writev",
    "pwritev",   "lseek",    "fstat",   "getdents64", "fchdir",    "fstatfs",  "ftruncate",
    "fallocate", "sendfile", "fchmod",  "fsync",      "fdatasync", "flock",    "fcntl",
    "dup",       "dup2",     "dup3",    "sendto",     "recvfrom",  "sendmsg",  "recvmsg"};

std::string RawDetail(pid_t task, std::string_view name, const user_regs_struct& registers) {
  if (IsOneOf(name, PathFirst)) return TextAt(task, registers.rdi);
  if (IsOneOf(name, PathSecond)) {
    const std::string path = TextAt(task, registers.rsi);
    if (!path.empty()) return path;
    return PathOfDescriptor(task, static_cast<int>(registers.rdi));
  }
  if (IsOneOf(name, DescriptorFirst))
    return PathOfDescriptor(task, static_cast<int>(registers.rdi));
  if (name == "copy_file_range" || name == "splice")
    return PathOfDescriptor(task, static_cast<int>(registers.rdx));
  if (name == "mmap" && (registers.r10 & MAP_ANONYMOUS) == 0)
    return PathOfDescriptor(task, static_cast<int>(registers.r8));
  return {};
}

bool MakesFile(std::string_view name, const user_regs_struct& registers) {
  return (name == "openat" && (registers.rdx & O_CREAT) != 0) ||
         (name == "open" && (registers.rsi & O_CREAT) != 0);
}

std::string_view ControlName(std::uint64_t operation) {
  switch (operation) {
    case F_DUPFD:
    case F_DUPFD_CLOEXEC: return " (duplicate)";
    case F_GETFD:
    case F_SETFD:
    case F_GETFL:
    case F_SETFL: return " (flags)";
    case F_SETLK:
    case F_SETLKW:
    case F_OFD_SETLK:
    case F_OFD_SETLKW: return " (lock)";
    case F_SETPIPE_SZ:
    case F_GETPIPE_SZ: return " (size)";
    default: return "";
  }
}

}  // namespace

std::string DetailOf(pid_t task, std::string_view name, const user_regs_struct& registers) {
  std::string detail = RawDetail(task, name, registers);
  std::ranges::replace_if(
      detail, [](char letter) { return letter == '\t' || letter == '\n'; }, ' ');
  if (MakesFile(name, registers)) detail += " (make)";
  if (name == "fcntl") detail += ControlName(registers.rsi);
  return detail;
}

}  // namespace faults
