#pragma once

#include <cstdint>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/object.h"
#include "rastrel/platform/mfc/string.h"

/// One file of a job. Paths are library paths: both separators and drive letters are legal.
class RASTREL_API CJTSFile : public CObject {
 public:
  CJTSFile() = default;
  CJTSFile(const CJTSFile&) = default;
  CJTSFile& operator=(const CJTSFile&) = default;
  ~CJTSFile() override;
  RASTREL_DECLARE_DYNCREATE(CJTSFile)

  /// Writes version 1 and FileName. Reads them back; another version empties the name. The
  /// directory is not part of the record: the host sets Directory before it loads, and every
  /// occurrence of it is removed from the text that was read, so that a stored full path shrinks to
  /// the name.
  void Serialize(CArchive& archive) override;

  /// Empties Directory and FileName. FullPath stays until the next use.
  void SetDefaults();

  /// Directory and FileName joined as they stand, which FullPath then holds too.
  const CString& GetFullPath();

  /// Size in bytes; 0 if the file does not exist or can't be asked. Rebuilds FullPath.
  [[nodiscard]] std::int64_t GetSize();

  CString Directory;  ///< with its closing separator
  CString FileName;   ///< name and extension
  CString FullPath;   ///< cache of the two joined; rebuilt at every use, never trusted
};
