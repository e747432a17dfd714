#pragma once

#include <cstdint>
#include <vector>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/string.h"

class CArchive;

/// One rendered page: the directory named by its page list entry, and its title. Its data lie in
/// the directory of that title below that directory.
struct CCFMFileEntry {
  CString Directory;  ///< with its closing separator, or the word "default"
  CString FileName;   ///< the title
};

/// The list of a job's rendered pages. Used by one thread at a time.
class RASTREL_API CCFMFile {
 public:
  CCFMFile() = default;
  /// Entries and TotalSize; BaseDirectory starts empty.
  CCFMFile(const CCFMFile& other);
  /// Replaces entries and TotalSize and leaves BaseDirectory as it was.
  CCFMFile& operator=(const CCFMFile& other);
  virtual ~CCFMFile();

  /// Appends an entry. TotalSize stays as it is.
  void AddEntry(const CString& directory, const CString& fileName);

  /// Bytes of all pages' directories. Measured while TotalSize is 0, remembered from then on.
  [[nodiscard]] std::int64_t GetSizeOnDisk();

  /// Removes every page's directory, then the first entry's Directory itself, and forgets all
  /// entries and the size. False if anything could not be removed; the rest is tried all the same.
  bool DeletePages();

  /// Moves every page's directory into `destination`, whose text becomes each entry's Directory. An
  /// existing target is removed first. False at the first page that can't be moved: those before it
  /// are moved, it and those behind it are where they were.
  [[nodiscard]] bool MovePages(const CString& destination);

  std::vector<CCFMFileEntry> Entries;  ///< in printing order
  std::int64_t TotalSize = 0;          ///< bytes; 0 means not yet known
  CString BaseDirectory;               ///< what stored directories stand on when they are read
};

/// Writes version 1, TotalSize, the count, and each entry's directory without its parents, and
/// title.
RASTREL_API CArchive& operator<<(CArchive& archive, const CCFMFile& file);
/// Reads and appends; each directory becomes BaseDirectory, a backslash and the stored text. The
/// version's value is not looked at. What was read whole before a failure stays.
RASTREL_API CArchive& operator>>(CArchive& archive, CCFMFile& file);
