#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "rastrel/platform/os/byte_search.h"
#include "rastrel/platform/os/random_access_file.h"

namespace rastrel::psscan {

/// The maximum number of bytes that one reading of a line takes from the file.
inline constexpr std::size_t ReadSize = 4096;
/// The size of a line buffer: one reading, and a zero after it.
inline constexpr std::size_t BufferSize = ReadSize + 1;

/// A file as the scans read it: line by line, each line as if its reading had put up to ReadSize
/// bytes into one buffer that is never cleared, cut the text there, and gone back in the file
/// to the byte after the line's end. The buffer's old content is part of the result: a last line
/// without a line end continues with the bytes that earlier readings left there. See ReadLine for
/// the rules.
///
/// The file is read once, through a window. As long as ReadSize bytes lie ahead, a reading would
/// replace the whole buffer, so a line is a view into the window and nothing is copied; only in the
/// file's last bytes are lines really read into the buffer.
///
/// The end state is set together with the last line of the file, and stays. In it every line is the
/// buffer's text. Used by one thread at a time.
class LineReader {
 public:
  /// Starts at the file's first byte with a buffer of zeros.
  explicit LineReader(os::RandomAccessFile file);

  /// Where the next reading begins: the offset in the file.
  [[nodiscard]] std::uint64_t Tell() const { return m_Position; }
  /// Sets the offset of the next reading. Does nothing in the end state.
  void Seek(std::uint64_t position);
  [[nodiscard]] bool AtEnd() const { return m_AtEnd; }
  void SetAtEnd() { m_AtEnd = true; }
  /// True if the file could not be read at some point; the scan's result is invalid then. The end
  /// state is set too.
  [[nodiscard]] bool Failed() const { return m_Failed; }

  /// The bytes from the position on: at least `wanted` bytes (up to 2 * ReadSize) unless the file
  /// ends before. Does not move the position. Valid until the next call of a member.
  [[nodiscard]] std::string_view Ahead(std::size_t wanted);

  /// The next line, without its end. Valid until the next call of a member.
  [[nodiscard]] std::string_view NextLine();
  /// The buffer as the last reading left it, with the line's text and a zero at its start. It is
  /// the reader's own, and following readings may be made into it with ReadLine.
  [[nodiscard]] char* Buffer();

  /// Skips lines none of which begins with '%' and `first` or `second`, or with "%%" and one
  /// of the two. Stops at any line it is not sure of, and wherever lines have to be read one by
  /// one.
  void SkipLinesWithout(char first, char second);
  /// Skips lines that begin with '%', but not with "%%" and one of `letters`. None of them is
  /// empty. Stops as above.
  void SkipComments(const bool (&letters)[256]);

  /// Skips empty lines that are a run of one byte: of zeros, of CR or of LF.
  /// Stops as above.
  void SkipEmptyLines();

  /// The file's current size in bytes; 0 if it is not to be had.
  [[nodiscard]] std::uint64_t FileSize() const { return m_File.Size(); }
  /// Reads without touching window and position, as RandomAccessFile::ReadAt.
  [[nodiscard]] Expected<std::size_t> ReadAt(std::uint64_t offset, std::span<char> bytes) {
    return m_File.ReadAt(offset, bytes);
  }

 private:
  class CutLines;
  void Fill(std::size_t wanted);
  void KeepLastLine();
  std::string_view LineAtEnd();
  bool ExtendWindow();
  const char* NextStart(const char* line) const;
  const char* LastStart(const char* line, const char* limit) const;
  void MoveTo(const char* place) {
    m_Position += static_cast<std::uint64_t>(place - m_Here);
    m_Here = place;
  }

  os::RandomAccessFile m_File;
  const os::ByteSearch& m_Search = os::Search();
  std::unique_ptr<char[]> m_Storage;  // room for the rest of the last window, and the window
  char* m_End;                        // after the last byte read
  const char* m_Begin;                // the first byte that was read and is still there
  const char* m_Here;                 // the byte at m_Position; between m_Begin and m_End
  std::uint64_t m_Position = 0;
  std::size_t m_Piece;      // how much the next read asks for
  bool m_EndKnown = false;  // the file ends at m_End
  bool m_AtEnd = false;
  bool m_Failed = false;
  const char* m_LastLine = nullptr;  // the last reading, if it is in the window only
  std::size_t m_LastLength = 0;
  std::array<char, BufferSize> m_Buffer{};
};

/// Makes one reading from `in` into `buffer`, of BufferSize bytes, and moves on:
/// - up to ReadSize bytes replace the buffer's first ones; those after them stay; the last is 0;
/// - the line ends at the first CR, LF or zero in the buffer, and a 0 is put there;
/// - the next reading begins after that byte, and after the next one too if it is CR or LF
///   (so any two of them are one line end, and one empty line is swallowed);
/// - of a line that fills the whole reading, the byte after it is lost.
/// If fewer than ReadSize bytes were left and the next reading would not begin before the file's
/// end, the end state is set. In the end state nothing is read.
void ReadLine(LineReader& in, char* buffer);

}  // namespace rastrel::psscan
