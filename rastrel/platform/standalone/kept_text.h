#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>

/// The text of a file that is read far more often than it changes.
namespace rastrel::standalone {

/// Keeps the text of one file as long as the file is the same: by device, inode, size, and times of
/// the last change of content and of state. Any thread.
///
/// A change within the same tick of the file system's clock may leave all of these equal, so the
/// text of a file that changed in the two seconds before it was read is not kept.
class KeptText {
 public:
  /// Distinguishes one state of a file from another.
  struct State {
    std::string path;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    std::int64_t modified = 0;  ///< nanoseconds since 1970
    std::int64_t changed = 0;   ///< of content, owner or mode; nanoseconds since 1970
    bool operator==(const State&) const = default;
  };

  /// The text of the file at a native path, of at most `limit` bytes; null if it can't be read.
  [[nodiscard]] std::shared_ptr<const std::string> Read(const std::string& path,
                                                        std::uint64_t limit);

 private:
  std::mutex m_Mutex;
  State m_State;
  std::shared_ptr<const std::string> m_Text;  // null while none is kept
};

}  // namespace rastrel::standalone
