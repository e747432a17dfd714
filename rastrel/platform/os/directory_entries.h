#pragma once

#include <dirent.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace rastrel::os {

/// One name in a directory, as bytes: it need not be UTF-8.
struct DirectoryEntry {
  std::string name;
  unsigned char type = DT_UNKNOWN;  ///< DT_ constant; unknown where the file system does not tell
};

/// Reads a directory piece by piece, so that one with millions of names costs no more memory than
/// one piece. Owns the descriptor.
class DirectoryReader {
 public:
  /// Opens `name` below the open directory `parent` (or AT_FDCWD). With `followLink` unset a link
  /// is a failure. IsOpen tells success; errno says why not.
  DirectoryReader(int parent, const char* name, bool followLink);

  [[nodiscard]] bool IsOpen() const { return m_Stream != nullptr; }
  /// The directory's descriptor, for calls on what it holds. REQUIRES: open.
  [[nodiscard]] int Descriptor() const { return ::dirfd(m_Stream.get()); }

  /// The next entries but "." and "..", without their order; `entries` empty at the end. False with
  /// errno set if the directory can't be read on.
  [[nodiscard]] bool ReadPiece(std::vector<DirectoryEntry>& entries);

 private:
  static constexpr std::size_t PieceEntries = 65536;
  struct Closer {
    void operator()(DIR* stream) const { ::closedir(stream); }
  };
  std::unique_ptr<DIR, Closer> m_Stream;
};

}  // namespace rastrel::os
