#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace PrintingThread {

/// A block of texts end to end, each with a null behind it, closed by one more null: the form in
/// which an environment travels to a child.
class Args {
 public:
  Args();
  virtual ~Args();
  Args(const Args&) = delete;
  Args& operator=(const Args&) = delete;

  /// Appends a text. Where the memory can't be had the buffer becomes null, and this text and all
  /// later ones are dropped without a word.
  void Add(std::string_view text);

  /// The block; null after a failed Add. Valid until the next one.
  [[nodiscard]] const char* Data() const { return m_pBuffer; }
  /// Bytes used, without the final null.
  [[nodiscard]] std::uint64_t Used() const { return m_Used; }

  /// Where the memory comes from. For tests of its failing.
  static void* (*s_Reallocate)(void* block, std::size_t bytes);

 private:
  char* m_pBuffer;
  std::uint64_t m_Used = 0;
  std::uint64_t m_Capacity = 1;
};

}  // namespace PrintingThread
