#pragma once

/// Lengths that are compared to a number of decimals.

#include "rastrel/export.h"

/// A length that compares at a decimal precision: two are equal when value times 10 to that
/// precision, plus one half, truncates to the same whole number. So 2.0004 equals 2.0000 at
/// precision 3, and 2.0005 does not. Values that no 64-bit number holds, NaN among them, all
/// truncate to the least one and so equal each other.
class RASTREL_API SmartDouble {
 public:
  /// Keeps the value as it is.
  explicit SmartDouble(double value, int precision = 3) : m_Value(value), m_Precision(precision) {}

  /// The value, not rounded.
  [[nodiscard]] double GetValue() const { return m_Value; }
  /// The decimals that count in a comparison.
  [[nodiscard]] int GetPrecision() const { return m_Precision; }

  /// Compares at the precision of the left operand.
  bool operator==(const SmartDouble& other) const;

 private:
  double m_Value;
  int m_Precision;
};
