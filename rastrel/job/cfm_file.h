#pragma once

#include <cstdint>
#include <vector>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/string.h"

class CArchive;

/// One rendered page. Its data are in the directory FileName below Directory.
struct CCFMFileEntry {
  CString Directory;  ///< library path with its closing separator, or "default"
  CString FileName;   ///< the page's title
};

/// The list of a job's rendered pages. Used by one thread at a time.
class RASTREL_API CCFMFile {
 public:
  CCFMFile() = default;
  /// Copies Entries and TotalSize; BaseDirectory starts empty.
  CCFMFile(const CCFMFile& other);
  /// Replaces Entries and TotalSize. BaseDirectory stays.
  CCFMFile& operator=(const CCFMFile& other);
  virtual ~CCFMFile();

  /// Appends an entry. TotalSize does not change.
  void AddEntry(const CString& directory, const CString& fileName);

  /// The size of all pages' directories in bytes. Measured if TotalSize is 0, which then caches it;
  /// otherwise TotalSize.
  [[nodiscard]] std::int64_t GetSizeOnDisk();

  /// Removes each page's directory, then the first entry's Directory itself, and empties Entries
  /// and TotalSize. False if anything could not be removed; the rest is removed all the same.
  bool DeletePages();

  /// Moves each page's directory into `destination`, a library path with its closing separator that
  /// becomes each entry's Directory. An existing target is removed first. False at the first page
  /// that can't be moved: the pages before it are moved, it and the pages after it are not.
  [[nodiscard]] bool MovePages(const CString& destination);

  std::vector<CCFMFileEntry> Entries;  ///< in printing order
  std::int64_t TotalSize = 0;          ///< bytes; 0 means not yet known
  CString BaseDirectory;               ///< put in front of each directory that is read
};

/// Writes the list's record:
///
///     +-------------+-----------+---------+  +-----------------+--------------+
///     | version = 1 | TotalSize | count   |  | Directory       | FileName     |  count times
///     | 32 bits     | 64 bits   | 32 bits |  | narrow text     | narrow text  |
///     +-------------+-----------+---------+  +-----------------+--------------+
///
/// A directory is written without its parents. Narrow text is rastrel::mfc::WriteNarrowText's.
RASTREL_API CArchive& operator<<(CArchive& archive, const CCFMFile& file);
/// Reads such a record and appends its entries. Each directory becomes BaseDirectory, a backslash
/// and the stored text. The version is ignored. CArchiveException passes; the entries read before
/// the failure stay.
RASTREL_API CArchive& operator>>(CArchive& archive, CCFMFile& file);
