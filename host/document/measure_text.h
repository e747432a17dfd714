#pragma once

#include <charconv>
#include <string>

namespace rastrel::document {

/// A measure for a person: at most six digits, with a dot whatever the locale. ASCII.
[[nodiscard]] inline std::string MeasureText(double value) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 6);
  return {text, end.ptr};
}

/// Two measures with "by" between them, in centimetres.
[[nodiscard]] inline std::string SizeText(double width, double height) {
  return MeasureText(width) + " by " + MeasureText(height) + " cm";
}

}  // namespace rastrel::document
