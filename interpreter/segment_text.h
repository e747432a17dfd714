#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "interpreter/clip_shape.h"

/// Paths as the prolog reports them: words with blanks between them, "m 1 2 l 3 4 h".
namespace rastrel::interpreter {

/// Takes the next word off the text; empty at its end.
[[nodiscard]] std::string_view NextWord(std::string_view& text);

/// A finite number that is the whole word.
[[nodiscard]] std::optional<double> ReadNumber(std::string_view word);

/// One segment: 'm', 'l', 'c' or 'h', with 1, 1, 3 or no points.
struct Segment {
  char letter = 'h';
  std::array<PixelPoint, 3> storage;
  std::size_t count = 0;

  [[nodiscard]] std::span<const PixelPoint> Points() const {
    return std::span(storage).first(count);
  }
};

/// Reads a path segment by segment.
class SegmentReader {
 public:
  explicit SegmentReader(std::string_view text) : m_Rest(text) {}
  /// The next one, or nothing: at the end, or where the text is none of the prolog's making.
  [[nodiscard]] std::optional<Segment> Next();
  /// Whether Next() has ended at the text's end.
  [[nodiscard]] bool AtEnd() const { return m_AtEnd; }

 private:
  std::string_view m_Rest;
  bool m_AtEnd = false;
};

}  // namespace rastrel::interpreter
