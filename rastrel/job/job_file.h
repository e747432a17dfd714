#pragma once

#include <cstdint>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/object.h"
#include "rastrel/platform/mfc/string.h"

/// One file of a job, by its directory and name. Paths are library paths
/// (platform/os/path.h): both separators and drive letters are legal. Used by one thread at a time,
/// except that GetFullPath may be called by several while the fields do not change.
class RASTREL_API CJTSFile : public CObject {
 public:
  CJTSFile() = default;
  CJTSFile(const CJTSFile&) = default;
  CJTSFile& operator=(const CJTSFile&) = default;
  ~CJTSFile() override;
  RASTREL_DECLARE_DYNCREATE(CJTSFile)

  /// Writes or reads the record:
  ///
  ///     +-------------+----------------------+
  ///     | version = 1 | FileName             |
  ///     | 32 bits     | wide text (archive.h)|
  ///     +-------------+----------------------+
  ///
  /// A read of another version empties the name. The directory is not part of the record: the host
  /// sets Directory before it loads, and every occurrence of it is removed from the text read, so
  /// that a stored full path becomes the name. CArchiveException passes.
  void Serialize(CArchive& archive) override;

  /// Empties Directory and FileName. FullPath stays until the next use.
  void SetDefaults();

  /// Directory and FileName, joined without a separator between. FullPath holds the result too, and
  /// the reference is to it.
  const CString& GetFullPath();

  /// The file's size in bytes; 0 if it does not exist or can't be examined. Rebuilds FullPath.
  [[nodiscard]] std::int64_t GetSize();

  CString Directory;  ///< with its closing separator
  CString FileName;   ///< name and extension
  CString FullPath;   ///< cache of the two joined; GetFullPath rebuilds it at every call
};
