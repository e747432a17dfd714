#include "tests/faults/injector/journal.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <fstream>
#include <optional>
#include <sstream>
#include <vector>

#include "tests/faults/injector/traced_memory.h"

namespace faults {
namespace {

/// Which arguments of a call are what; -1 is none. A directory of -1 beside a path is the present
/// one.
struct Arguments {
  int directory = -1;
  int path = -1;
  int secondDirectory = -1;
  int secondPath = -1;
};

std::optional<Arguments> NamesOf(long number) {
  switch (number) {
    case SYS_open:
    case SYS_creat:
    case SYS_mkdir:
    case SYS_rmdir:
    case SYS_unlink:
    case SYS_truncate:
    case SYS_chmod: return Arguments{-1, 0, -1, -1};
    case SYS_openat:
    case SYS_openat2:
    case SYS_mkdirat:
    case SYS_unlinkat:
    case SYS_fchmodat: return Arguments{0, 1, -1, -1};
    case SYS_rename:
    case SYS_link: return Arguments{-1, 0, -1, 1};
    case SYS_renameat:
    case SYS_renameat2:
    case SYS_linkat: return Arguments{0, 1, 2, 3};
    case SYS_symlink: return Arguments{-1, 1, -1, -1};
    case SYS_symlinkat: return Arguments{1, 2, -1, -1};
    default: return {};
  }
}

bool ChangesByDescriptor(long number) {
  switch (number) {
    case SYS_write:
    case SYS_writev:
    case SYS_pwrite64:
    case SYS_pwritev:
    case SYS_pwritev2:
    case SYS_copy_file_range:
    case SYS_sendfile:
    case SYS_splice:
    case SYS_ftruncate:
    case SYS_fallocate:
    case SYS_fchmod:
    case SYS_fsync:
    case SYS_fdatasync:
    case SYS_mmap: return true;
    default: return false;
  }
}

std::uint64_t Argument(const user_regs_struct& registers, int index) {
  switch (index) {
    case 0: return registers.rdi;
    case 1: return registers.rsi;
    case 2: return registers.rdx;
    case 3: return registers.r10;
    case 4: return registers.r8;
    default: return registers.r9;
  }
}

int IntArgument(const user_regs_struct& registers, int index) {
  return static_cast<int>(Argument(registers, index));
}

std::string PathArgument(pid_t task, const user_regs_struct& registers, int directory, int path) {
  return AbsolutePath(task, directory < 0 ? AT_FDCWD : IntArgument(registers, directory),
                      TextAt(task, Argument(registers, path)));
}

std::string DescriptorFile(pid_t task, int descriptor) {
  return "/proc/" + std::to_string(task) + "/fd/" + std::to_string(descriptor);
}

std::optional<struct stat> StatusOf(const std::string& path, bool follow) {
  struct stat status {};
  const int result = follow ? ::stat(path.c_str(), &status) : ::lstat(path.c_str(), &status);
  if (result != 0) return {};
  return status;
}

std::string Octal(mode_t mode) {
  std::ostringstream text;
  text << std::oct << (mode & 07777U);
  return text.str();
}

std::int64_t PositionOf(pid_t task, int descriptor) {
  std::ifstream file("/proc/" + std::to_string(task) + "/fdinfo/" + std::to_string(descriptor));
  std::string word;
  std::int64_t position = 0;
  file >> word >> position;
  return position;
}

int OpenFlags(const user_regs_struct& registers) {
  switch (static_cast<long>(registers.orig_rax)) {
    case SYS_open: return IntArgument(registers, 1);
    case SYS_openat: return IntArgument(registers, 2);
    case SYS_creat: return O_CREAT | O_WRONLY | O_TRUNC;
    default: return 0;
  }
}

bool IsOpening(long number) {
  return number == SYS_open || number == SYS_openat || number == SYS_creat || number == SYS_openat2;
}

}  // namespace

Journal::Journal(std::string directory, const std::string& file)
    : m_Directory(std::move(directory)),
      m_Lines(file, std::ios::binary),
      m_Data(file + ".data", std::ios::binary) {}

bool Journal::IsBelow(const std::string& path) const { return path.starts_with(m_Directory + "/"); }

bool Journal::MayChange(const user_regs_struct& registers) {
  const auto number = static_cast<long>(registers.orig_rax);
  if (number == SYS_mmap)
    return (registers.r10 & MAP_SHARED) != 0 && (registers.rdx & PROT_WRITE) != 0 &&
           (registers.r10 & MAP_ANONYMOUS) == 0;
  if (number == SYS_open || number == SYS_openat)
    return (OpenFlags(registers) & (O_CREAT | O_TRUNC | O_TMPFILE)) != 0;
  return NamesOf(number).has_value() || ChangesByDescriptor(number);
}

PendingChange Journal::Begin(pid_t task, const user_regs_struct& registers) {
  PendingChange change{registers, {}, {}, false};
  const auto names = NamesOf(static_cast<long>(registers.orig_rax));
  if (!names) return change;
  change.from = PathArgument(task, registers, names->directory, names->path);
  if (names->secondPath >= 0)
    change.to = PathArgument(task, registers, names->secondDirectory, names->secondPath);
  change.existed = StatusOf(change.from, false).has_value();
  return change;
}

void Journal::End(pid_t task, const PendingChange& change, std::int64_t result) {
  if (result < 0) return;
  const auto number = static_cast<long>(change.registers.orig_rax);
  if (IsOpening(number))
    OpenedFile(task, change, static_cast<int>(result));
  else if (NamesOf(number))
    NamedChange(change, task);
  else
    DescriptorChange(change, task, result);
  m_Lines.flush();
  m_Data.flush();
}

void Journal::OpenedFile(pid_t task, const PendingChange& change, int descriptor) {
  const std::string path = PathOfDescriptor(task, descriptor);
  const auto status = StatusOf(DescriptorFile(task, descriptor), true);
  if (!IsBelow(path) || !status || !S_ISREG(status->st_mode)) return;
  const int flags = OpenFlags(change.registers);
  if ((flags & O_TMPFILE) == O_TMPFILE)
    m_Lines << "unnamed\t" << status->st_ino << '\t' << Octal(status->st_mode) << '\n';
  else if (!change.existed)
    m_Lines << "create\t" << path << '\t' << status->st_ino << '\t' << Octal(status->st_mode)
            << '\n';
  else if ((flags & O_TRUNC) != 0)
    m_Lines << "length\t" << status->st_ino << "\t0\n";
}

void Journal::Written(pid_t task, int descriptor, std::int64_t offset, std::int64_t length) {
  const auto status = StatusOf(DescriptorFile(task, descriptor), true);
  if (!status || !S_ISREG(status->st_mode) || length <= 0) return;
  // The bytes are read back from the file, so that it does not matter which call brought them.
  const int file = ::open(DescriptorFile(task, descriptor).c_str(), O_RDONLY | O_CLOEXEC);
  std::vector<char> bytes(static_cast<std::size_t>(length));
  const bool complete = file >= 0 && ::pread(file, bytes.data(), bytes.size(), offset) == length;
  if (file >= 0) ::close(file);
  if (!complete) {
    m_Lines << "unknown\tbytes that can't be read back\n";
    return;
  }
  m_Lines << "write\t" << status->st_ino << '\t' << offset << '\t' << length << '\n';
  m_Data.write(bytes.data(), length);
}

void Journal::Resized(pid_t task, int descriptor) {
  if (const auto status = StatusOf(DescriptorFile(task, descriptor), true))
    m_Lines << "length\t" << status->st_ino << '\t' << status->st_size << '\n';
}

void Journal::NamedChange(const PendingChange& change, pid_t task) {
  if (!IsBelow(change.from) && !IsBelow(change.to)) return;
  const user_regs_struct& registers = change.registers;
  switch (static_cast<long>(registers.orig_rax)) {
    case SYS_mkdir:
    case SYS_mkdirat: m_Lines << "mkdir\t" << change.from << '\n'; return;
    case SYS_rmdir: m_Lines << "rmdir\t" << change.from << '\n'; return;
    case SYS_unlink: m_Lines << "unlink\t" << change.from << '\n'; return;
    case SYS_unlinkat:
      m_Lines << ((registers.rdx & AT_REMOVEDIR) != 0 ? "rmdir\t" : "unlink\t") << change.from
              << '\n';
      return;
    case SYS_rename:
    case SYS_renameat: m_Lines << "rename\t" << change.from << '\t' << change.to << '\n'; return;
    case SYS_renameat2:
      m_Lines << ((registers.r8 & RENAME_EXCHANGE) != 0 ? "exchange\t" : "rename\t") << change.from
              << '\t' << change.to << '\n';
      return;
    case SYS_symlink:
    case SYS_symlinkat:
      m_Lines << "symlink\t" << change.from << '\t' << TextAt(task, registers.rdi) << '\n';
      return;
    default: break;
  }
  const auto status = StatusOf(change.to.empty() ? change.from : change.to, false);
  if (!status) return;
  if (!change.to.empty())
    m_Lines << "name\t" << change.to << '\t' << status->st_ino << '\n';
  else if (registers.orig_rax == SYS_truncate)
    m_Lines << "length\t" << status->st_ino << '\t' << status->st_size << '\n';
  else
    m_Lines << "mode\t" << status->st_ino << '\t' << Octal(status->st_mode) << '\n';
}

void Journal::DescriptorChange(const PendingChange& change, pid_t task, std::int64_t result) {
  const user_regs_struct& registers = change.registers;
  const auto number = static_cast<long>(registers.orig_rax);
  int descriptor = IntArgument(registers, 0);
  if (number == SYS_copy_file_range || number == SYS_splice) descriptor = IntArgument(registers, 2);
  if (number == SYS_mmap) descriptor = IntArgument(registers, 4);
  if (!IsBelow(PathOfDescriptor(task, descriptor))) return;
  const auto status = StatusOf(DescriptorFile(task, descriptor), true);
  if (!status) return;
  switch (number) {
    case SYS_fsync:
    case SYS_fdatasync: m_Lines << "sync\t" << status->st_ino << '\n'; return;
    case SYS_ftruncate:
    case SYS_fallocate: Resized(task, descriptor); return;
    case SYS_fchmod:
      m_Lines << "mode\t" << status->st_ino << '\t' << Octal(status->st_mode) << '\n';
      return;
    case SYS_mmap: m_Lines << "unknown\tshared memory of a file\n"; return;
    case SYS_pwrite64:
    case SYS_pwritev:
    case SYS_pwritev2:
      Written(task, descriptor, static_cast<std::int64_t>(registers.r10), result);
      return;
    case SYS_copy_file_range:
    case SYS_splice:
      if (registers.r10 != 0) {
        m_Lines << "unknown\ta copy to a place of its own\n";
        return;
      }
      [[fallthrough]];
    default: Written(task, descriptor, PositionOf(task, descriptor) - result, result); return;
  }
}

}  // namespace faults
