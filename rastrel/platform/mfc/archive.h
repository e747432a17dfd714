#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <string>

#include "rastrel/export.h"
#include "rastrel/platform/mfc/file.h"
#include "rastrel/platform/mfc/string.h"

/// What a failing archive raises; the only exceptions of this library's interface.
class RASTREL_API CArchiveException : public std::exception {
 public:
  /// The framework's numbers.
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
  /// English words for the cause; static text.
  [[nodiscard]] const char* what() const noexcept override;

  int m_cause;  ///< one of Cause
};

/// Raises a CArchiveException with that cause.
[[noreturn]] RASTREL_API void AfxThrowArchiveException(int cause);

/// The host's serialisation stream: little-endian numbers and length-prefixed text, to or from a
/// CFile. Used by one thread.
///
/// A read past the end raises CArchiveException(endOfFile) and leaves the target as it was; so does
/// a read or write against the archive's mode (writeOnly, readOnly), and a write that the file does
/// not take raises genericException.
class RASTREL_API CArchive {
 public:
  /// Which way it goes.
  enum Mode : unsigned { store = 0, load = 1 };

  /// The file is not owned and must outlive the archive.
  CArchive(CFile* file, unsigned mode);
  /// Closes, without an exception.
  ~CArchive();
  CArchive(const CArchive&) = delete;
  CArchive& operator=(const CArchive&) = delete;

  /// Whether it was opened to read, or to write.
  [[nodiscard]] bool IsLoading() const { return m_Mode == load; }
  [[nodiscard]] bool IsStoring() const { return m_Mode == store; }

  /// Reads up to `count` raw bytes; returns how many there were.
  unsigned Read(void* bytes, unsigned count);
  /// Writes raw bytes.
  void Write(const void* bytes, unsigned count);
  /// Hands over what is buffered. Called by the destructor too.
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
  /// Any byte but 0 is true.
  CArchive& operator>>(bool& value);

  /// Wide text: FF FE FF, the length in 16-bit units in one of the three forms of
  /// AfxWriteStringLength, then the units, UTF-16LE, with no terminator.
  CArchive& operator<<(const CString& text);
  /// Wide text as above; without the tag the characters are one byte each, in Windows-1252. Memory
  /// grows with the bytes that are really there, never with the length that the stream claims.
  CArchive& operator>>(CString& text);

 private:
  void ReadExactly(void* bytes, std::size_t count);
  template <typename Value>
  void Put(Value value);
  template <typename Value>
  void Get(Value& value);

  CFile* m_File;
  unsigned m_Mode;
  std::string m_Pending;  // written and not yet handed to the file
};

/// Writes the length of a text: one byte below 255; else FF and 16 bits below 0xFFFE; else FF, FFFF
/// and 32 bits. With `unicode`, the tag FF FE FF stands first.
RASTREL_API void AfxWriteStringLength(CArchive& archive, std::uint32_t length, bool unicode);
/// Reads such a length. `characterSize` becomes 2 where the tag stood, 1 without it.
RASTREL_API std::uint32_t AfxReadStringLength(CArchive& archive, int& characterSize);

namespace rastrel::mfc {

/// The library's own narrow text: a 32-bit byte length, then that many bytes of UTF-8, with no
/// terminator.
RASTREL_API void WriteNarrowText(CArchive& archive, const std::wstring& text);
/// Reads it. Fewer bytes than the length says: CArchiveException(endOfFile), `text` as it was.
RASTREL_API void ReadNarrowText(CArchive& archive, std::wstring& text);

}  // namespace rastrel::mfc
