#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "interpreter/clip_shape.h"

/// Paths as the prolog reports them: words with blanks between them, "m 1A0 200 l 3B0 4A0 h". Their
/// coordinates are ReadCoordinate's.
namespace rastrel::interpreter {

/// Takes the next word off the text; empty at its end.
[[nodiscard]] std::string_view NextWord(std::string_view& text);

/// A finite number that is the whole word.
[[nodiscard]] std::optional<double> ReadNumber(std::string_view word);

/// A coordinate in pixels, made of the whole number of 1/256 pixels that the word is, to the base
/// of 14 (capture.ps): "100" is 0.765625. Negative ones are the unsigned numbers of the same 32 or
/// 64 bits. Nothing if the word is none, or beyond the interpreter's own range of 31 bits and a
/// sign.
[[nodiscard]] std::optional<double> ReadCoordinate(std::string_view word);

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

/// Segments of a path: their letters in turn, and the points of all of them.
struct SegmentView {
  std::string_view letters;
  std::span<const PixelPoint> points;
};

/// Segments of many paths, one after another, without a block of memory for each.
class SegmentList {
 public:
  /// A place between two segments.
  struct Mark {
    std::size_t letters = 0;
    std::size_t points = 0;
  };

  /// Appends those of a text. False, and unchanged, if it is none of the prolog's making.
  [[nodiscard]] bool Append(std::string_view text);
  [[nodiscard]] Mark End() const { return {m_Letters.size(), m_Points.size()}; }
  /// Valid until the next change.
  [[nodiscard]] SegmentView Between(const Mark& first, const Mark& last) const;
  [[nodiscard]] SegmentView All() const { return Between({}, End()); }

 private:
  std::string m_Letters;
  std::vector<PixelPoint> m_Points;
};

}  // namespace rastrel::interpreter
