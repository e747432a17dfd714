#pragma once

#include <charconv>
#include <string>

namespace rastrel::document {

/// A measure as a person reads it: at most six digits, a dot whatever the locale.
[[nodiscard]] inline std::wstring MeasureText(double value) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 6);
  return {text, end.ptr};
}

/// Two measures with "by" between them, in centimetres.
[[nodiscard]] inline std::wstring SizeText(double width, double height) {
  return MeasureText(width) + L" by " + MeasureText(height) + L" cm";
}

}  // namespace rastrel::document
