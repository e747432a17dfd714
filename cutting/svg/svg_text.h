#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "cutting/job/contour.h"

/// Values of attributes.
namespace rastrel::cutting {

/// Reads numbers and words of a value in a row. The text belongs to the caller.
class SvgScanner {
 public:
  explicit SvgScanner(std::string_view text) : m_Text(text) {}

  void SkipWhitespace();
  /// Whitespace, with one comma in it or none.
  void SkipComma();
  [[nodiscard]] bool AtEnd() const { return m_At == m_Text.size(); }
  [[nodiscard]] char Here() const { return AtEnd() ? '\0' : m_Text[m_At]; }
  /// Takes that character, if it is the next one.
  [[nodiscard]] bool Take(char character);
  /// A finite number with its sign, of 1e9 at most in amount. Nothing, and the same place, if there
  /// is none.
  [[nodiscard]] std::optional<double> Number();
  /// 0 or 1, which needs no comma after it.
  [[nodiscard]] std::optional<bool> Flag();
  /// Letters, digits, hyphens and underscores; perhaps none.
  [[nodiscard]] std::string_view Word();
  [[nodiscard]] std::string_view Rest() const { return m_Text.substr(m_At); }

 private:
  std::string_view m_Text;
  std::size_t m_At = 0;
};

/// Without whitespace at its ends.
[[nodiscard]] std::string_view SvgTrimmed(std::string_view text);
/// Equal but for upper and lower case of A to Z.
[[nodiscard]] bool SvgSame(std::string_view a, std::string_view b);

/// A length in px, of which 96 are an inch. `whole` is 100 % of it, and em is 16 px. Nothing for
/// another text.
[[nodiscard]] std::optional<double> SvgLength(std::string_view text, double whole);

/// A list of transformations as one map. Nothing for another text.
[[nodiscard]] std::optional<Transform> SvgTransform(std::string_view text);

/// The points of a polygon or polyline. Nothing for another text.
[[nodiscard]] std::optional<std::vector<Point>> SvgPoints(std::string_view text);

}  // namespace rastrel::cutting
