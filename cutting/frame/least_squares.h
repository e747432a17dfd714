#pragma once

#include <cstddef>
#include <optional>
#include <vector>

/// Linear equations with more rows than unknowns.
namespace rastrel::cutting {

/// A table of numbers, row by row. Zeros at first.
class Matrix {
 public:
  Matrix(std::size_t rows, std::size_t columns)
      : m_Rows(rows), m_Columns(columns), m_Values(rows * columns) {}
  [[nodiscard]] std::size_t Rows() const { return m_Rows; }
  [[nodiscard]] std::size_t Columns() const { return m_Columns; }
  [[nodiscard]] double& At(std::size_t row, std::size_t column) {
    return m_Values[row * m_Columns + column];
  }
  [[nodiscard]] double At(std::size_t row, std::size_t column) const {
    return m_Values[row * m_Columns + column];
  }

 private:
  std::size_t m_Rows;
  std::size_t m_Columns;
  std::vector<double> m_Values;
};

/// The x for which the sum of the squares of `a` x - `b` is smallest, by Householder reflections
/// with exchange of columns. Nothing if the columns don't determine it: one of them is a sum of
/// others to `smallest` of the longest column, or a number is not finite.
///
/// REQUIRES: `b` has a number for each row, and there are at least as many rows as columns.
[[nodiscard]] std::optional<std::vector<double>> LeastSquares(Matrix a, std::vector<double> b,
                                                              double smallest = 1e-9);

}  // namespace rastrel::cutting
