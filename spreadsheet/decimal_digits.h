#pragma once

#include <string>

namespace rastrel::spreadsheet {

/// A number of zero or more as decimal digits, the way spreadsheets show numbers: its 15
/// significant digits count, and halves are rounded up, so that 2.675 with two decimals is 2.68
/// although the binary number lies a little below. Never by the locale.
class DecimalDigits {
 public:
  /// REQUIRES: finite and not negative.
  explicit DecimalDigits(double magnitude);

  /// Rounds to so many places after the point; fewer than none round before it.
  void RoundTo(int places);
  /// Moves the point to the right, or to the left if `places` is negative.
  void Scale(int places) { m_Exponent += places; }

  [[nodiscard]] bool IsZero() const { return m_Digits.empty(); }
  /// Of the first digit: 0 for 1 to 9.99, 3 for 1000. 0 for zero.
  [[nodiscard]] int Exponent() const { return IsZero() ? 0 : m_Exponent; }
  /// Digits before the point without zeros in front; empty below 1.
  [[nodiscard]] std::string Integer() const;
  /// `places` digits after the point, with zeros at the end.
  [[nodiscard]] std::string Fraction(int places) const;
  /// How many digits there are after the point, without zeros at the end.
  [[nodiscard]] int Places() const;

 private:
  void Trim();

  std::string m_Digits;  // without zeros at either end; empty for zero
  int m_Exponent = 0;    // of the first digit
};

/// The number as a cell with no format of its own shows it: up to 15 digits, with an exponent only
/// where they would not do ("1E+20", "1.5E-10").
[[nodiscard]] std::string ShowGeneral(double value);

}  // namespace rastrel::spreadsheet
