#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "rastrel/export.h"

/// A stream of bytes that an archive stands on.
class RASTREL_API CFile {
 public:
  /// How Open opens; combined with |. modeCreate implies modeWrite.
  enum OpenFlags : unsigned { modeRead = 0x0000, modeWrite = 0x0001, modeCreate = 0x1000 };

  CFile() = default;
  virtual ~CFile();
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;

  /// Opens a file by library path (UTF-8 on disk, both separators, drive letters). modeCreate makes
  /// or truncates it. False if it can't be opened; errno tells why.
  [[nodiscard]] virtual bool Open(const wchar_t* path, unsigned flags);
  /// Reads up to `count` bytes; returns how many, fewer only at the end or on a failure.
  virtual unsigned Read(void* bytes, unsigned count);
  /// Writes `count` bytes; false if not all could be written.
  [[nodiscard]] virtual bool Write(const void* bytes, unsigned count);
  /// Closes; a second call does nothing.
  virtual void Close();

 private:
  int m_Descriptor = -1;
};

/// A file in memory. Reading starts at the first byte and follows what was written.
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

  /// All that was written. Valid until the next write.
  [[nodiscard]] const std::vector<std::uint8_t>& Bytes() const { return m_Bytes; }

 private:
  std::vector<std::uint8_t> m_Bytes;
  std::size_t m_Position = 0;
};
