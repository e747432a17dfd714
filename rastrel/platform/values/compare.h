#pragma once

/// The host's comparisons of measures. Two values that are no more than `tolerance` apart are the
/// same to it, so that exactly one of the three is true of any two finite values. None is true of a
/// value that is no number.

/// True if the values are no more than `tolerance` apart.
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
