#include "spreadsheet/decimal_digits.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace rastrel::spreadsheet {
namespace {

constexpr int SignificantDigits = 15;
// Beyond these a cell without a format shows an exponent: from 1E+16 on, below 1E-9, and below
// 1E-4 where more places would be needed.
constexpr int LargestPlainExponent = 15;
constexpr int SmallestPlainExponent = -9;
constexpr int SmallestExponentOfAnyPlaces = -4;
constexpr int MaximumPlainPlaces = 16;
// Up to here every whole number is a double of its own, so that all its digits are meant.
constexpr double LargestExactWhole = 9007199254740992;

bool IsPlain(int exponent, int places) {
  if (exponent > LargestPlainExponent || exponent < SmallestPlainExponent) return false;
  return exponent >= SmallestExponentOfAnyPlaces || places <= MaximumPlainPlaces;
}

std::string ExactWhole(double value) {
  std::array<char, 24> text{};
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), static_cast<std::int64_t>(value)).ptr;
  return {text.data(), end};
}

}  // namespace

DecimalDigits::DecimalDigits(double magnitude) {
  std::array<char, 40> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), magnitude,
                                 std::chars_format::scientific, SignificantDigits - 1)
                       .ptr;
  const char* exponent = text.data();
  for (; exponent != end && *exponent != 'e'; ++exponent)
    if (*exponent != '.') m_Digits += *exponent;
  if (exponent == end) {
    m_Digits.clear();
    return;
  }
  exponent += exponent[1] == '+' ? 2 : 1;
  std::from_chars(exponent, end, m_Exponent);
  Trim();
}

void DecimalDigits::Trim() {
  m_Digits.erase(m_Digits.find_last_not_of('0') + 1);
  const std::size_t zeros = std::min(m_Digits.find_first_not_of('0'), m_Digits.size());
  m_Digits.erase(0, zeros);
  m_Exponent -= static_cast<int>(zeros);
}

void DecimalDigits::RoundTo(int places) {
  if (IsZero()) return;
  const int kept = m_Exponent + 1 + places;
  if (kept >= static_cast<int>(m_Digits.size())) return;
  const bool up = kept >= 0 && m_Digits[static_cast<std::size_t>(kept)] >= '5';
  m_Digits.resize(static_cast<std::size_t>(std::max(kept, 0)));
  if (up) {
    std::size_t at = m_Digits.size();
    while (at > 0 && m_Digits[at - 1] == '9') m_Digits[--at] = '0';
    if (at > 0) {
      ++m_Digits[at - 1];
    } else {
      m_Digits.insert(m_Digits.begin(), '1');
      ++m_Exponent;
    }
  }
  Trim();
}

std::string DecimalDigits::Integer() const {
  if (IsZero() || m_Exponent < 0) return {};
  std::string digits = m_Digits.substr(0, static_cast<std::size_t>(m_Exponent) + 1);
  digits.resize(static_cast<std::size_t>(m_Exponent) + 1, '0');
  return digits;
}

std::string DecimalDigits::Fraction(int places) const {
  std::string digits;
  for (int place = 1; place <= places; ++place) {
    const int index = m_Exponent + place;
    const bool has = !IsZero() && index >= 0 && index < static_cast<int>(m_Digits.size());
    digits += has ? m_Digits[static_cast<std::size_t>(index)] : '0';
  }
  return digits;
}

int DecimalDigits::Places() const {
  return IsZero() ? 0 : std::max(static_cast<int>(m_Digits.size()) - m_Exponent - 1, 0);
}

std::string ShowGeneral(double value) {
  if (std::fabs(value) <= LargestExactWhole && std::trunc(value) == value) return ExactWhole(value);
  const DecimalDigits digits(std::fabs(value));
  const std::string sign = value < 0 ? "-" : "";
  const int exponent = digits.Exponent();
  const int places = digits.Places();
  if (IsPlain(exponent, places)) {
    const std::string integer = digits.Integer();
    return sign + (integer.empty() ? "0" : integer) +
           (places > 0 ? "." + digits.Fraction(places) : "");
  }
  DecimalDigits mantissa = digits;
  mantissa.Scale(-exponent);
  const int mantissaPlaces = mantissa.Places();
  const std::string number = std::to_string(std::abs(exponent));
  return sign + mantissa.Integer() +
         (mantissaPlaces > 0 ? "." + mantissa.Fraction(mantissaPlaces) : "") +
         (exponent < 0 ? "E-" : "E+") + (number.size() < 2 ? "0" : "") + number;
}

}  // namespace rastrel::spreadsheet
