#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/file.h"
#include "rastrel/platform/mfc/string.h"

/// The exception of a failing archive: the only one of this library's interface.
class RASTREL_API CArchiveException : public std::exception {
 public:
  /// The framework's codes.
  enum Cause : int {
    none = 0,
    genericException = 1,
    readOnly = 2,   ///< a write to an archive that reads
    endOfFile = 3,  ///< a read past the end
    writeOnly = 4,  ///< a read from an archive that writes
    badIndex = 5,
    badClass = 6,
    badSchema = 7
  };

  /// An exception with that cause.
  explicit CArchiveException(Cause cause) : m_cause(cause) {}
  ~CArchiveException() override;
  /// The cause in English; a static text.
  [[nodiscard]] const char* what() const noexcept override;

  int m_cause;  ///< one of Cause
};

/// Raises a CArchiveException with that cause.
[[noreturn]] RASTREL_API void AfxThrowArchiveException(int cause);

/// The host's serialisation stream: little-endian numbers and length-prefixed text, to or from a
/// CFile. It goes in one direction. Used by one thread at a time.
///
/// A failure raises a CArchiveException and leaves the target of a read as it was:
///
///   endOfFile         a read past the end
///   readOnly          a write to an archive that loads
///   writeOnly         a read from an archive that stores
///   genericException  a write that the file did not accept
class RASTREL_API CArchive {
 public:
  /// The direction.
  enum Mode : unsigned { store = 0, load = 1 };

  /// `mode` is one of Mode. The file is not owned; it must be open and must outlive the archive.
  CArchive(CFile* file, unsigned mode);
  /// The same, reading through a buffer of that many bytes: the file is then read further than the
  /// archive is. Below 1, and for an archive that stores, as without it.
  CArchive(CFile* file, unsigned mode, int bufferSize);
  /// Closes. A write that fails here is lost: call Close to learn of it.
  ~CArchive();
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;

  /// The direction that it was opened for.
  [[nodiscard]] bool IsLoading() const { return m_Mode == load; }
  [[nodiscard]] bool IsStoring() const { return m_Mode == store; }

  /// Reads up to `count` raw bytes and returns the number read, which is less only at the end.
  unsigned Read(void* bytes, unsigned count);
  /// The bytes that all reads so far have taken.
  [[nodiscard]] std::uint64_t GetBytesRead() const { return m_BytesRead; }
  /// Writes `count` raw bytes. They may be buffered until Close.
  void Write(const void* bytes, unsigned count);
  /// Writes the buffered bytes to the file, which stays open. The destructor calls it too.
  void Close();

  // Numbers: 1, 2, 4 or 8 bytes, little-endian; doubles as IEEE 754 binary64.
  CArchive& operator<<(std::uint8_t value);
  CArchive& operator<<(std::uint16_t value);
  CArchive& operator<<(std::int32_t value);
  CArchive& operator<<(std::uint32_t value);
  CArchive& operator<<(std::int64_t value);
  CArchive& operator<<(double value);
  /// A boolean is one byte, 0 or 1.
  CArchive& operator<<(bool value);
  CArchive& operator>>(std::uint8_t& value);
  CArchive& operator>>(std::uint16_t& value);
  CArchive& operator>>(std::int32_t& value);
  CArchive& operator>>(std::uint32_t& value);
  CArchive& operator>>(std::int64_t& value);
  CArchive& operator>>(double& value);
  /// Any byte except 0 is true.
  CArchive& operator>>(bool& value);

  /// Wide text, without a terminator:
  ///
  ///     +----------+-------------------+--------------------+
  ///     | FF FE FF | length, in 16-bit | UTF-16LE units     |
  ///     |          | units; 1, 3 or    |                    |
  ///     |          | 7 bytes           |                    |
  ///     +----------+-------------------+--------------------+
  ///
  /// AfxWriteStringLength has the forms of the length.
  CArchive& operator<<(const CString& text);
  /// Reads wide text. Without the tag FF FE FF the characters are one byte each, in Windows-1252.
  /// Memory grows with the bytes that the stream has, never with the length that it claims.
  CArchive& operator>>(CString& text);

 private:
  void ReadExactly(void* bytes, std::size_t count);
  unsigned TakeBuffered(char* bytes, unsigned count);
  template <typename Value>
  void Put(Value value);
  template <typename Value>
  void Get(Value& value);

  CFile* m_File;
  unsigned m_Mode;
  std::string m_Pending;  // buffered for the file
  std::string m_ReadBuffer;
  std::size_t m_Buffered = 0;  // bytes of the file in the buffer
  std::size_t m_Taken = 0;     // of them, those that were read
  std::uint64_t m_BytesRead = 0;
};

/// Writes the length of a text, in characters of its encoding:
///
///     below 255     | length, 8 bits |
///     below 0xFFFE  | FF | length, 16 bits |
///     any other     | FF | FF FF | length, 32 bits |
///
/// With `unicode`, the tag FF FE FF comes first.
RASTREL_API void AfxWriteStringLength(CArchive& archive, std::uint32_t length, bool unicode);
/// Reads such a length. `characterSize` becomes 2 if the tag is there, otherwise 1.
RASTREL_API std::uint32_t AfxReadStringLength(CArchive& archive, int& characterSize);

namespace rastrel::mfc {

/// Writes the library's own narrow text, without a terminator:
///
///     +--------------------+-------+
///     | length in bytes    | UTF-8 |
///     | 32 bits            |       |
///     +--------------------+-------+
RASTREL_API void WriteNarrowText(CArchive& archive, const std::wstring& text);
/// Reads such a text. Fewer bytes than the length says raise CArchiveException(endOfFile), and
/// `text` stays.
RASTREL_API void ReadNarrowText(CArchive& archive, std::wstring& text);

}  // namespace rastrel::mfc
