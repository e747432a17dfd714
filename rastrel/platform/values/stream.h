#pragma once

/// The host's stream of document data.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/file.h"

/// Thrown by a CStream that fails.
class RASTREL_API CStreamException : public std::exception {
 public:
  /// The reason.
  enum Cause : int {
    endOfFile = 1,    ///< a read came up short
    writeFailed = 2,  ///< the file did not take all bytes
    noBlock = 3,      ///< a block was closed that was never opened
  };

  /// An exception with that cause.
  explicit CStreamException(Cause cause) : m_cause(cause) {}
  ~CStreamException() override;
  /// The cause in English; static text.
  [[nodiscard]] const char* what() const noexcept override;

  Cause m_cause;  ///< the reason
};

/// The host's stream of document data: bytes, little-endian numbers, and blocks that carry their
/// length. A stream reads or writes a CFile that it does not own: one of the two, and on one
/// thread. It keeps a buffer, so nothing else may use the file meanwhile. After an exception it
/// must not be used.
///
/// A block is a length and that many bytes. Blocks nest:
///
///     +------------------+--------------------------------------------------+
///     | length: 8 bytes, | content                                          |
///     | little-endian    |   ... +------------------+-------------------+   |
///     |                  |       | length           | content           |   |
///     |                  |   ... +------------------+-------------------+   |
///     +------------------+--------------------------------------------------+
///                        |<------- as many bytes as the length says ------->|
///
/// A writer collects the outermost open block in memory, and sets its length when it is closed. A
/// reader that closes a block skips the rest of it, so that a later writer may append to a block. A
/// reader that reads beyond a block's end is not stopped, and closing the block then skips nothing.
class RASTREL_API CStream {
 public:
  /// The file must outlive the stream.
  explicit CStream(CFile* file);
  /// Flushes, without an exception. A block that was never closed is dropped.
  virtual ~CStream();
  CStream(const CStream&) = delete;
  CStream& operator=(const CStream&) = delete;

  /// Reads `count` bytes; throws endOfFile if there are fewer.
  void Read(void* bytes, std::size_t count);
  /// Appends `count` bytes; throws writeFailed, here or before Flush returns, if they don't reach
  /// the file.
  void Write(const void* bytes, std::size_t count);
  /// Writes all bytes outside open blocks to the file. Throws writeFailed.
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
  /// Text: 4 bytes with the number of UTF-16 code units, then the units, without a terminator.
  /// Memory grows with the units that are there, and not with the number. Throws as Read and Write
  /// do.
  [[nodiscard]] std::wstring ReadText();
  void WriteText(const std::wstring& text);

  /// Opens a block to write.
  void OpenWriteBlock();
  /// Closes the block opened last; throws noBlock if none is open, and writeFailed.
  void CloseWriteBlock();
  /// Opens a block to read; throws endOfFile.
  void OpenReadBlock();
  /// Closes the block opened last and skips the rest of it; throws noBlock if none is open, and
  /// endOfFile.
  void CloseReadBlock();

  /// Writes PostScript text (wide, ends with a zero) as UTF-8, without a terminator. Returns 1.
  /// Throws writeFailed. A host's own stream may override it to send the text elsewhere.
  virtual int WritePostscript(const wchar_t* text);

 private:
  void Grow(std::size_t count);
  void Fill();
  void ReadBehindBuffer(unsigned char* target, std::size_t count);
  void PassOver(std::uint64_t count);
  void GiveToFile(const unsigned char* bytes, std::size_t count);

  struct ReadBlock {
    std::uint64_t begin;  // position after the length
    std::uint64_t length;
  };

  CFile* m_File;
  // Bytes written and not yet in the file, or read from it and not yet taken (from m_Taken on).
  std::unique_ptr<unsigned char[]> m_Buffer;
  std::size_t m_Capacity = 0;
  std::size_t m_Used = 0;
  std::size_t m_Taken = 0;
  std::uint64_t m_Position = 0;            // of the byte that m_Buffer[m_Used] would be, reading
  std::vector<std::size_t> m_WriteBlocks;  // the place of each length in m_Buffer
  std::vector<ReadBlock> m_ReadBlocks;
};
