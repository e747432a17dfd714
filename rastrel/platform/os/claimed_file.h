#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "rastrel/platform/os/expected.h"

namespace rastrel::os {

/// A file whose name belongs to one object, while it lives, against all others of this process and,
/// where the file system has extended attributes, of other processes. No descriptor stays open.
/// Move-only; a moved-from one does nothing. Any thread.
class ClaimedFile {
 public:
  /// Makes a new file, by native path, with mode 0666 less the umask. EEXIST if anything has the
  /// name, a link included.
  [[nodiscard]] static Expected<ClaimedFile> Create(std::string path);
  /// Takes a file that is there: a regular one that begins with `head`, is no link and may be read
  /// and written, and that nobody who is alive claims. EEXIST for anything else, ENOENT if nothing
  /// has the name.
  [[nodiscard]] static Expected<ClaimedFile> TakeOver(std::string path, std::string_view head);
  /// Gives the claim up. The file stays.
  ~ClaimedFile();
  ClaimedFile(ClaimedFile&& other) noexcept;
  ClaimedFile& operator=(ClaimedFile&&) = delete;
  ClaimedFile(const ClaimedFile&) = delete;
  ClaimedFile& operator=(const ClaimedFile&) = delete;

  /// Puts `content` in place of the file's. EEXIST if the name leads to another file by now. On a
  /// failure the file has as much as the disk took.
  [[nodiscard]] Expected<void> Write(std::string_view content);
  /// Removes the file, unless the name leads to another one by now, and gives the claim up. Fails
  /// if it is still there. Afterwards the object does nothing.
  [[nodiscard]] Expected<void> Remove();

 private:
  /// A file, whatever its name.
  struct Identity {
    std::uint64_t device = 0;
    std::uint64_t node = 0;
    bool operator==(const Identity&) const = default;
  };
  struct Claims;

  ClaimedFile(std::string path, Identity file) : m_Path(std::move(path)), m_File(file) {}
  [[nodiscard]] static Identity IdentityOf(const struct stat& state);
  [[nodiscard]] static Identity IdentityOf(int descriptor);

  std::string m_Path;  // native; empty if moved from or removed
  Identity m_File;
};

}  // namespace rastrel::os
