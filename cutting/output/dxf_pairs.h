#pragma once

#include <cmath>
#include <string>
#include <string_view>

#include "cutting/job/contour.h"
#include "cutting/output/text_output.h"

namespace rastrel::cutting {

/// The pairs of lines that a drawing is made of:
///
///      0               an entity,
///     POLYLINE         of that kind
///      8
///     CUT              its layer
class DxfPairs {
 public:
  DxfPairs& Add(int code, std::string_view value) {
    AddCode(code);
    m_Text.Add(value).Add("\r\n");
    return *this;
  }
  DxfPairs& AddInteger(int code, long long value) {
    AddCode(code);
    m_Text.AddInteger(value).Add("\r\n");
    return *this;
  }
  /// Readers know a real number by its point.
  DxfPairs& AddReal(int code, double value) {
    constexpr int decimals = 6;
    constexpr double scale = 1e6;
    AddCode(code);
    m_Text.AddDecimal(value, decimals);
    if (std::llround(value * scale) % static_cast<long long>(scale) == 0) m_Text.Add(".0");
    m_Text.Add("\r\n");
    return *this;
  }
  DxfPairs& AddHandle(int code, unsigned long long handle) {
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), handle, 16).ptr;
    for (char& digit : digits) {
      if (digit >= 'a') digit = static_cast<char>(digit - 'a' + 'A');
    }
    return Add(code,
               std::string_view(digits.data(), static_cast<std::size_t>(end - digits.data())));
  }
  /// x and y by a code and the one 10 above it.
  DxfPairs& AddFlat(int code, Point point) {
    return AddReal(code, point.x).AddReal(code + 10, point.y);
  }
  /// The same with a z of 0.
  DxfPairs& AddPoint(int code, Point point) { return AddFlat(code, point).AddReal(code + 20, 0); }

  DxfPairs& BeginSection(std::string_view name) { return Add(0, "SECTION").Add(2, name); }
  DxfPairs& EndSection() { return Add(0, "ENDSEC"); }

  std::string Take() { return m_Text.Take(); }

 private:
  // Three places, padded by spaces.
  void AddCode(int code) {
    if (code < 100) m_Text.Add(' ');
    if (code < 10) m_Text.Add(' ');
    m_Text.AddInteger(code).Add("\r\n");
  }

  TextOutput m_Text;
};

}  // namespace rastrel::cutting
