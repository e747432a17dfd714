#include "server/web/http/byte_range.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace rastrel::server::web {
namespace {

// Nothing for an empty text, signs, and what no 64 bits hold.
std::optional<std::int64_t> NumberOf(std::string_view text) {
  std::int64_t number = 0;
  if (text.empty() || text.find_first_not_of("0123456789") != text.npos) return std::nullopt;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  return read.ec == std::errc() ? std::optional(number) : std::nullopt;
}

}  // namespace

ByteRange RangeOf(std::string_view header, std::int64_t size) {
  const ByteRange whole{ByteRange::Kind::Whole, 0, size - 1};
  const ByteRange outside{ByteRange::Kind::Outside, 0, -1};
  constexpr std::string_view Unit = "bytes=";
  if (!header.starts_with(Unit)) return whole;
  header.remove_prefix(Unit.size());
  const std::size_t dash = header.find('-');
  if (dash == header.npos || header.find(',') != header.npos) return whole;
  const auto first = NumberOf(header.substr(0, dash));
  const auto last = NumberOf(header.substr(dash + 1));
  if (!first) {
    if (dash != 0 || !last) return whole;
    if (*last == 0 || size == 0) return outside;
    return {ByteRange::Kind::Piece, std::max<std::int64_t>(0, size - *last), size - 1};
  }
  if (!last && dash + 1 != header.size()) return whole;
  if (last && *last < *first) return whole;
  if (*first >= size) return outside;
  return {ByteRange::Kind::Piece, *first, last ? std::min(*last, size - 1) : size - 1};
}

}  // namespace rastrel::server::web
