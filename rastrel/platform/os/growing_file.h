#pragma once

#include <cstdint>
#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::os {

/// A file that one thread of this process still writes while another reads it. Until End, a reader
/// that has come to the file's end waits in WaitForGrowth for more bytes.
///
/// Any thread; one writer. Objects of several files may live at a time.
class GrowingFile {
 public:
  /// Makes an empty file by its native path and announces it. State has the failure, if any.
  explicit GrowingFile(const std::string& path);
  /// From here on the file is like any other, so the object must live as long as its readers.
  ~GrowingFile();
  GrowingFile(const GrowingFile&) = delete;
  GrowingFile& operator=(const GrowingFile&) = delete;

  [[nodiscard]] const Expected<void>& State() const { return m_State; }
  /// The file has `size` bytes now; waiting readers continue.
  void Grow(std::uint64_t size);
  /// Whether a reader has come to the file's end and waited there.
  [[nodiscard]] bool IsAwaited() const;
  /// The file is complete, or will never be. Readers at its end get Whole or Failed.
  void End(bool isWhole);

 private:
  Expected<void> m_State;
  std::uint64_t m_Device = 0;
  std::uint64_t m_Number = 0;
};

/// The state of a file at a reader's position.
enum class Growth {
  Grown,  ///< there is more than `size` bytes by now
  Whole,  ///< there will be no more; always so for a file that was not announced
  Failed  ///< the rest could not be written
};

/// Waits until the open file is longer than `size` bytes, or is known not to become so.
[[nodiscard]] Growth WaitForGrowth(int descriptor, std::uint64_t size);

}  // namespace rastrel::os
