#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace PrintingThread {

/// A child's environment as one block of texts:
///
///     NAME=value \0 NAME=value \0 ... \0
class Args {
 public:
  Args();
  virtual ~Args();
  Args(const Args&) = delete;
  Args& operator=(const Args&) = delete;

  /// Appends a text. If memory runs out, the buffer becomes null, and this text and all later ones
  /// are dropped silently.
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
