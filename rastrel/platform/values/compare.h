#pragma once

/// Comparisons of measures within a tolerance, as the host makes them. Two values that are at most
/// `tolerance` apart are equal, so that exactly one of the three is true of any two finite values.
/// None is true of NaN.

/// True if the values are at most `tolerance` apart.
[[nodiscard]] inline bool IsDoubleEqual(double left, double right, double tolerance) {
  return left == right || (left - right <= tolerance && right - left <= tolerance);
}

/// True if `left` is greater than `right` by more than `tolerance`.
[[nodiscard]] inline bool IsDoubleGreaterthan(double left, double right, double tolerance) {
  return left - right > tolerance;
}

/// True if `left` is less than `right` by more than `tolerance`.
[[nodiscard]] inline bool IsDoubleLessthan(double left, double right, double tolerance) {
  return right - left > tolerance;
}
