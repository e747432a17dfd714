#pragma once

#include <cstdint>
#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::os {

/// A file that this process is still writing while another of its threads reads it already. As long
/// as this object lives and has not ended, whoever comes to the file's end through
/// WaitForGrowth waits for what is still to come.
///
/// Any thread; one writer. Objects of several files may live at a time.
class GrowingFile {
 public:
  /// Makes an empty file by its native path and announces it. IsGood tells whether it could.
  explicit GrowingFile(const std::string& path);
  /// From here on the file is like any other, so the object is to live as long as there may be
  /// readers.
  ~GrowingFile();
  GrowingFile(const GrowingFile&) = delete;
  GrowingFile& operator=(const GrowingFile&) = delete;

  [[nodiscard]] const Expected<void>& State() const { return m_State; }
  /// The file has so many bytes now; readers go on.
  void Grow(std::uint64_t size);
  /// It is whole, or it never will be, which every reader that comes to its end is told.
  void End(bool isWhole);

 private:
  Expected<void> m_State;
  std::uint64_t m_Device = 0;
  std::uint64_t m_Number = 0;
};

/// What a reader finds at the end of a file.
enum class Growth {
  Grown,  ///< there is more than `size` bytes by now
  Whole,  ///< there will be no more; so it is with every file that nobody announced
  Failed  ///< the rest could not be written
};

/// Waits until the open file is longer than `size` bytes, or is known not to become so.
[[nodiscard]] Growth WaitForGrowth(int descriptor, std::uint64_t size);

}  // namespace rastrel::os
