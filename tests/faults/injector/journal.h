#pragma once

#include <sys/types.h>
#include <sys/user.h>

#include <cstdint>
#include <fstream>
#include <string>

/// The changes that a run makes to files below one directory, in order, so that every state between
/// can be made again.
namespace faults {

/// A call that may change a file, as it was when it began.
struct PendingChange {
  user_regs_struct registers{};
  std::string from;  ///< absolute path that the call names, or that is given up
  std::string to;    ///< the second path of a rename or a link
  bool existed = false;
};

/// Writes one line a change, its fields parted by tabs; a file is named by its inode's number.
///
///     create  PATH INODE MODE      a file of that name came to be, empty
///     unnamed INODE MODE           a file without a name did (O_TMPFILE)
///     write   INODE OFFSET LENGTH  the bytes follow those of earlier lines in the data file
///     length  INODE LENGTH         the file was cut or made longer
///     mode    INODE MODE           octal
///     name    PATH INODE           a further name (link), or the first of one without
///     rename  FROM TO
///     exchange FROM TO
///     unlink  PATH
///     mkdir   PATH
///     rmdir   PATH
///     symlink PATH TARGET
///     sync    INODE
///     unknown WORDS                a change that this list can't say
class Journal {
 public:
  /// Changes below `directory` go to `file`, bytes to `file`.data.
  Journal(std::string directory, const std::string& file);

  /// Whether the call of these registers may change files.
  [[nodiscard]] static bool MayChange(const user_regs_struct& registers);
  /// At the call's beginning, while the task is stopped.
  [[nodiscard]] static PendingChange Begin(pid_t task, const user_regs_struct& registers);
  /// At its end; `result` is the call's.
  void End(pid_t task, const PendingChange& change, std::int64_t result);

 private:
  [[nodiscard]] bool IsBelow(const std::string& path) const;
  void OpenedFile(pid_t task, const PendingChange& change, int descriptor);
  void Written(pid_t task, int descriptor, std::int64_t offset, std::int64_t length);
  void Resized(pid_t task, int descriptor);
  void NamedChange(const PendingChange& change, pid_t task);
  void DescriptorChange(const PendingChange& change, pid_t task, std::int64_t result);

  std::string m_Directory;
  std::ofstream m_Lines;
  std::ofstream m_Data;
};

}  // namespace faults
