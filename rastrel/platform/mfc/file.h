#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "rastrel/export.h"

/// A stream of bytes, on disk or (in a derived class) elsewhere, that an archive reads or writes.
/// Used by one thread at a time.
class RASTREL_API CFile {
 public:
  /// The flags of Open, combined with |. modeCreate implies modeWrite.
  enum OpenFlags : unsigned { modeRead = 0x0000, modeWrite = 0x0001, modeCreate = 0x1000 };

  CFile() = default;
  virtual ~CFile();
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;

  /// Opens a file by its library path (platform/os/path.h), which must not be null, in place of one
  /// that is open. modeWrite alone opens an existing file, at its start, and keeps its content;
  /// modeCreate makes or truncates it. False with errno set, and no file is open, if it can't be
  /// opened.
  [[nodiscard]] virtual bool Open(const wchar_t* path, unsigned flags);
  /// Reads up to `count` bytes and returns the number read, which is less only at the end or on a
  /// failure; 0 if no file is open.
  virtual unsigned Read(void* bytes, unsigned count);
  /// Writes `count` bytes. False with errno set if not all could be written, or if no file is open.
  [[nodiscard]] virtual bool Write(const void* bytes, unsigned count);
  /// Closes the file. A second call does nothing. The destructor closes too.
  virtual void Close();

 private:
  int m_Descriptor = -1;
};

/// A file in memory. Writes are appended. Reads start at the first byte and may go up to the last
/// byte written.
class RASTREL_API CMemFile : public CFile {
 public:
  CMemFile() = default;
  /// A file that holds these bytes.
  explicit CMemFile(std::vector<std::uint8_t> bytes) : m_Bytes(std::move(bytes)) {}
  ~CMemFile() override;

  /// Always false: a memory file has no path.
  [[nodiscard]] bool Open(const wchar_t* path, unsigned flags) override;
  unsigned Read(void* bytes, unsigned count) override;
  [[nodiscard]] bool Write(const void* bytes, unsigned count) override;
  /// Goes back to the first byte.
  void Close() override;

  /// All bytes of the file. Valid until the next write.
  [[nodiscard]] const std::vector<std::uint8_t>& Bytes() const { return m_Bytes; }

 private:
  std::vector<std::uint8_t> m_Bytes;
  std::size_t m_Position = 0;
};
