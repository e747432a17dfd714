#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace rastrel::readers {

/// The text made of a spreadsheet, in UTF-8. It grows at its end without being moved, and frees the
/// memory of bytes taken off its end. One thread.
class SheetText {
 public:
  /// An empty text of at most `limit` bytes.
  explicit SheetText(std::size_t limit) : m_Limit(limit) {}

  [[nodiscard]] std::size_t Size() const { return m_Size; }
  /// Whether more was appended than the limit allows. The bytes beyond it were dropped.
  [[nodiscard]] bool IsOverLimit() const { return m_IsOverLimit; }

  void Append(std::string_view bytes) {
    if (bytes.empty() || bytes.size() > m_Room) return AppendSlowly(bytes);
    std::memcpy(m_End, bytes.data(), bytes.size());
    Advance(bytes.size());
  }
  void Append(char byte) {
    if (m_Room == 0) return AppendSlowly(std::string_view(&byte, 1));
    *m_End = byte;
    Advance(1);
  }
  /// Appends the same byte `count` times.
  void Append(std::size_t count, char byte);

  /// Takes all bytes of the set off the end.
  void TrimRight(std::string_view set);
  /// Cuts after the first `size` bytes, and forgets that the limit was passed.
  /// REQUIRES: there are as many.
  void Truncate(std::size_t size);
  void Clear() { Truncate(0); }

  /// Begin and end of the text without the whitespace at both ends; equal if there is nothing else.
  /// Whitespace is space, tab, line feed, vertical tab, form feed, carriage return.
  [[nodiscard]] std::pair<std::size_t, std::size_t> TrimmedRange() const;

  /// Calls `take` with the bytes from `begin` to `end` in pieces, until it returns false. False if
  /// it did.
  template <typename Take>
  bool ForEachPiece(std::size_t begin, std::size_t end, const Take& take) const {
    while (begin < end) {
      const std::size_t inBlock = begin % BlockSize;
      const std::size_t count = std::min(end - begin, BlockSize - inBlock);
      if (!take(std::string_view(m_Blocks[begin / BlockSize].get() + inBlock, count))) return false;
      begin += count;
    }
    return true;
  }

 private:
  static constexpr std::size_t BlockSize = std::size_t{256} << 10;

  void Advance(std::size_t count) {
    m_End += count;
    m_Room -= count;
    m_Size += count;
  }
  void AppendSlowly(std::string_view bytes);
  [[nodiscard]] bool TakeRoom(std::size_t wanted);
  [[nodiscard]] char At(std::size_t index) const {
    return m_Blocks[index / BlockSize][index % BlockSize];
  }

  std::vector<std::unique_ptr<char[]>> m_Blocks;  // all full but the last that is in use
  char* m_End = nullptr;                          // in that one
  std::size_t m_Room = 0;                         // from there to its end, within the limit
  std::size_t m_Size = 0;
  std::size_t m_Limit;
  bool m_IsOverLimit = false;
};

/// The whitespace that SheetText::TrimmedRange leaves out.
inline constexpr std::string_view Whitespace = " \t\n\v\f\r";

}  // namespace rastrel::readers
