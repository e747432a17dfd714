#pragma once

#include <cstdint>

namespace rastrel::os {

/// Brings a file to the disk while it is still being written, so that the flush at its end has
/// little to wait for. Only for files that are flushed in the end: of any other it would be work
/// for nothing. A failure shows in that flush. Used by one thread at a time.
class FlushAhead {
 public:
  /// Bytes that are handed to the disk at once.
  static constexpr std::uint64_t Part = std::uint64_t{4} << 20;

  /// The file has `end` bytes: begins with its whole parts that are new since the last call, and
  /// waits for none.
  void Begin(int descriptor, std::uint64_t end);

 private:
  std::uint64_t m_Begun = 0;  ///< up to this byte
};

}  // namespace rastrel::os
