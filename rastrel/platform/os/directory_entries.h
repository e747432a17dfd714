#pragma once

#include <dirent.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"

namespace rastrel::os {

/// One name in a directory, as bytes: it need not be UTF-8.
struct DirectoryEntry {
  std::string name;
  unsigned char type = DT_UNKNOWN;  ///< DT_ constant; unknown if the file system has no type
};

/// Reads a directory piece by piece, so that one with millions of names costs no more memory than
/// one piece. Owns the descriptor.
class DirectoryReader {
 public:
  /// Opens `name` below the open directory `parent` (or AT_FDCWD). With `followLink` unset a link
  /// is a failure.
  [[nodiscard]] static Expected<DirectoryReader> Open(int parent, const char* name,
                                                      bool followLink);

  /// The directory's descriptor, for calls on its entries.
  [[nodiscard]] int Descriptor() const { return ::dirfd(m_Stream.get()); }

  /// Stores the next entries, unsorted and without "." and ".."; none at the end. The Failure
  /// has no `where`.
  [[nodiscard]] Expected<void> ReadPiece(std::vector<DirectoryEntry>& entries);

 private:
  static constexpr std::size_t PieceEntries = 65536;
  struct Closer {
    void operator()(DIR* stream) const { ::closedir(stream); }
  };
  explicit DirectoryReader(DIR* stream) : m_Stream(stream) {}

  std::unique_ptr<DIR, Closer> m_Stream;
};

}  // namespace rastrel::os
