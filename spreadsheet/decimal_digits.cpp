#include "spreadsheet/decimal_digits.h"

#include <array>
#include <charconv>
#include <cmath>

namespace rastrel::spreadsheet {
namespace {

constexpr int SignificantDigits = 15;
// From where on a cell shows an exponent.
constexpr int LargestPlainExponent = 15;
constexpr int SmallestPlainExponent = -9;
constexpr int MaximumPlainPlaces = 18;

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
  const DecimalDigits digits(std::fabs(value));
  if (digits.IsZero()) return "0";
  const std::string sign = value < 0 ? "-" : "";
  const int exponent = digits.Exponent();
  const int places = digits.Places();
  const bool isPlain = exponent <= LargestPlainExponent && exponent >= SmallestPlainExponent &&
                       places <= MaximumPlainPlaces &&
                       (exponent < LargestPlainExponent || std::fabs(value) <= 1e15);
  if (isPlain) {
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
