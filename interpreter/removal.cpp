#include "interpreter/removal.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace rastrel::interpreter {
namespace {

// Each level takes a descriptor and a buffer. A directory that lies deeper is moved up.
constexpr int MaximumDepth = 32;
constexpr std::size_t EntryBytes = 2048;
constexpr int MaximumRounds = 1000;  // somebody may go on making files
constexpr unsigned MaximumMoves = 1'000'000;

// One removal. The kernel's directory entries are read directly, since opendir takes memory.
class Removal {
 public:
  // Empties the directory; returns the first error's number.
  int Empty(int directory, int depth) noexcept {
    int error = 0;
    // An entry that is removed while the directory is read may hide another, hence the rounds.
    bool removed = true;
    for (int round = 0; removed && round < MaximumRounds; ++round) {
      if (lseek(directory, 0, SEEK_SET) < 0) return errno;
      removed = false;
      error = EmptyOnce(directory, depth, removed);
    }
    return error;
  }

  int Remove(int parent, const char* name, int depth) noexcept {
    if (unlinkat(parent, name, 0) == 0 || errno == ENOENT) return 0;
    if (errno != EISDIR && errno != EPERM) return errno;
    if (depth > MaximumDepth) return MoveUp(parent, name);
    const int directory = openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (directory < 0) return errno == ENOENT ? 0 : errno;
    if (depth == 0) m_Top = directory;
    const int error = Empty(directory, depth + 1);
    close(directory);
    if (unlinkat(parent, name, AT_REMOVEDIR) == 0 || errno == ENOENT) return 0;
    return error != 0 ? error : errno;
  }

 private:
  // As the kernel writes it: a name that ends with a zero byte, padded to the next entry.
  //
  //   0        8          16       18     19
  //   | inode  | offset   | length | type | name ...
  static constexpr std::size_t LengthAt = 16;
  static constexpr std::size_t NameAt = 19;

  int EmptyOnce(int directory, int depth, bool& removed) noexcept {
    alignas(8) char entries[EntryBytes];
    int first = 0;
    while (true) {
      const long count = syscall(SYS_getdents64, directory, entries, sizeof entries);
      if (count < 0) return errno;
      if (count == 0) return first;
      for (long at = 0; at < count;) {
        const char* const name = entries + at + NameAt;
        std::uint16_t length = 0;
        std::memcpy(&length, entries + at + LengthAt, sizeof length);
        at += length;
        if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
        const int error = Remove(directory, name, depth);
        if (error == 0) removed = true;
        if (first == 0) first = error;
      }
    }
  }

  // Into the directory that is being removed, where a later round finds it.
  int MoveUp(int parent, const char* name) noexcept {
    for (unsigned attempt = 0; attempt < MaximumMoves; ++attempt) {
      char target[] = "moved-00000000";
      unsigned rest = m_Moved++;
      for (std::size_t digit = sizeof target - 2; rest > 0 && digit >= 6; --digit, rest /= 10) {
        target[digit] = static_cast<char>('0' + rest % 10);
      }
      if (syscall(SYS_renameat2, parent, name, m_Top, target, NoReplace) == 0) return 0;
      if (errno != EEXIST) return errno;
    }
    return EEXIST;
  }

  static constexpr unsigned NoReplace = 1;  // RENAME_NOREPLACE of <linux/fs.h>

  int m_Top = -1;
  unsigned m_Moved = 0;
};

}  // namespace

int RemoveAll(const char* path) noexcept { return Removal().Remove(AT_FDCWD, path, 0); }

}  // namespace rastrel::interpreter
