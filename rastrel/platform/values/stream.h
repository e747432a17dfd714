#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/file.h"

/// What a failing CStream raises.
class RASTREL_API CStreamException : public std::exception {
 public:
  /// Why.
  enum Cause : int {
    endOfFile = 1,    ///< a read came up short
    writeFailed = 2,  ///< the file did not take what was written
    noBlock = 3,      ///< a block was closed that was never opened
  };

  /// An exception with that cause.
  explicit CStreamException(Cause cause) : m_cause(cause) {}
  ~CStreamException() override;
  /// English words for the cause; static text.
  [[nodiscard]] const char* what() const noexcept override;

  Cause m_cause;  ///< as it was given
};

/// The host's stream of document data: bytes, little-endian numbers, and blocks that carry their
/// length. A stream stands on a CFile that it does not own, goes one way only, and is used by one
/// thread. It keeps a buffer, so nothing else may use the file meanwhile. After an exception it is
/// of no more use.
///
/// A block is 8 bytes of length and that many bytes. Blocks nest. A writer collects the outermost
/// open block in memory; the length is that of what was written until the block is closed. A reader
/// that closes a block passes over what it did not take of it, so that a later writer may append to
/// a block; a reader that takes more than the length says reads on, and nothing is passed over.
class RASTREL_API CStream {
 public:
  /// The file must outlive the stream.
  explicit CStream(CFile* file);
  /// Flushes, without an exception. A block that was never closed is dropped.
  virtual ~CStream();
  CStream(const CStream&) = delete;
  CStream& operator=(const CStream&) = delete;

  /// Takes `count` bytes; raises endOfFile if there are fewer.
  void Read(void* bytes, std::size_t count);
  /// Appends `count` bytes; raises writeFailed, at some time before Flush returns, if they don't
  /// reach the file.
  void Write(const void* bytes, std::size_t count);
  /// Hands what was written outside open blocks to the file.
  void Flush();

  /// Numbers, little-endian; doubles as IEEE 754. Exceptions as those of Read and Write.
  [[nodiscard]] std::int32_t ReadInt32();
  [[nodiscard]] std::uint32_t ReadUInt32();
  [[nodiscard]] std::uint64_t ReadUInt64();
  [[nodiscard]] double ReadDouble();
  void WriteInt32(std::int32_t value);
  void WriteUInt32(std::uint32_t value);
  void WriteUInt64(std::uint64_t value);
  void WriteDouble(double value);
  /// Text: 4 bytes with the number of UTF-16 code units, then the units. A length that the stream
  /// merely claims costs no memory.
  [[nodiscard]] std::wstring ReadText();
  void WriteText(const std::wstring& text);

  /// Blocks, the writer's and the reader's. Closing raises noBlock if none is open.
  void OpenWriteBlock();
  void CloseWriteBlock();
  void OpenReadBlock();
  void CloseReadBlock();

  /// Writes PostScript text as UTF-8, without a terminator. Returns 1.
  virtual int WritePostscript(const wchar_t* text);

 private:
  void Grow(std::size_t count);
  void Fill();
  void ReadBehindBuffer(unsigned char* target, std::size_t count);
  void PassOver(std::uint64_t count);
  void GiveToFile(const unsigned char* bytes, std::size_t count);

  struct ReadBlock {
    std::uint64_t begin;  // position behind the length
    std::uint64_t length;
  };

  CFile* m_File;
  // Written and not yet with the file, or read and not yet taken (from m_Taken on).
  std::unique_ptr<unsigned char[]> m_Buffer;
  std::size_t m_Capacity = 0;
  std::size_t m_Used = 0;
  std::size_t m_Taken = 0;
  std::uint64_t m_Position = 0;            // of the byte that m_Buffer[m_Used] would be, reading
  std::vector<std::size_t> m_WriteBlocks;  // where the length of each stands in m_Buffer
  std::vector<ReadBlock> m_ReadBlocks;
};
