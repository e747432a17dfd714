#pragma once

#include <cstdint>
#include <string_view>

namespace rastrel::server::web {

/// The bytes of a file that an answer has.
struct ByteRange {
  enum class Kind {
    Whole,    ///< no range, several, or one that is no range: the whole file is the answer
    Piece,    ///< from first to last
    Outside,  ///< the file has none of these bytes
  };
  Kind kind = Kind::Whole;
  std::int64_t first = 0;
  std::int64_t last = -1;  ///< inclusive; before `first` if there are none
};

/// Reads the header Range, "bytes=0-99", "bytes=100-", "bytes=-50", for a file of `size` bytes.
[[nodiscard]] ByteRange RangeOf(std::string_view header, std::int64_t size);

}  // namespace rastrel::server::web
