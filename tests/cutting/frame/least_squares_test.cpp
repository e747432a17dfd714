#include "cutting/frame/least_squares.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace rastrel::cutting {
namespace {

Matrix Of(std::size_t rows, std::size_t columns, const std::vector<double>& values) {
  Matrix matrix(rows, columns);
  for (std::size_t i = 0; i < rows; ++i)
    for (std::size_t k = 0; k < columns; ++k) matrix.At(i, k) = values[i * columns + k];
  return matrix;
}

TEST(LeastSquares, of_as_many_rows_as_unknowns_solves_them) {
  // 2x + y = 5, x - 3y = -8: x = 1, y = 3.
  const auto x = LeastSquares(Of(2, 2, {2, 1, 1, -3}), {5, -8});
  ASSERT_TRUE(x);
  EXPECT_NEAR((*x)[0], 1, 1e-12);
  EXPECT_NEAR((*x)[1], 3, 1e-12);
}

TEST(LeastSquares, of_more_rows_is_the_line_of_regression) {
  // Through (0,1) (1,2) (2,4) (3,4): slope 1.1 and intercept 1.1 by the normal equations.
  const auto x = LeastSquares(Of(4, 2, {0, 1, 1, 1, 2, 1, 3, 1}), {1, 2, 4, 4});
  ASSERT_TRUE(x);
  EXPECT_NEAR((*x)[0], 1.1, 1e-12);
  EXPECT_NEAR((*x)[1], 1.1, 1e-12);
}

TEST(LeastSquares, leaves_residuals_at_right_angles_to_every_column) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> number(-1, 1);
  for (int round = 0; round < 100; ++round) {
    Matrix a(12, 8);
    std::vector<double> b(12);
    for (std::size_t i = 0; i < 12; ++i) {
      for (std::size_t k = 0; k < 8; ++k) a.At(i, k) = number(random);
      b[i] = number(random);
    }
    const auto x = LeastSquares(a, b);
    ASSERT_TRUE(x);
    for (std::size_t k = 0; k < 8; ++k) {
      double along = 0;
      for (std::size_t i = 0; i < 12; ++i) {
        double residual = b[i];
        for (std::size_t j = 0; j < 8; ++j) residual -= a.At(i, j) * (*x)[j];
        along += residual * a.At(i, k);
      }
      ASSERT_NEAR(along, 0, 1e-10);
    }
  }
}

TEST(LeastSquares, of_columns_that_depend_on_each_other_is_none) {
  EXPECT_FALSE(LeastSquares(Of(3, 2, {1, 2, 2, 4, 3, 6}), {1, 2, 3}));
  EXPECT_FALSE(LeastSquares(Of(2, 2, {0, 0, 0, 0}), {0, 0}));
  // Nearly so: by a millionth.
  const Matrix nearly = Of(3, 2, {1, 2, 2, 4, 3, 6.000001});
  EXPECT_FALSE(LeastSquares(nearly, {1, 2, 3}, 1e-5));
  EXPECT_TRUE(LeastSquares(nearly, {1, 2, 3}, 1e-9));
}

TEST(LeastSquares, of_no_numbers_is_none) {
  const double nan = std::nan("");
  EXPECT_FALSE(LeastSquares(Of(2, 2, {1, nan, 2, 3}), {1, 1}));
  EXPECT_FALSE(LeastSquares(Of(2, 2, {1, 0, 0, 1}), {nan, 1}));
  EXPECT_FALSE(LeastSquares(Of(2, 2, {1e308, 1e308, -1e308, 1e308}), {1, 1}));
}

}  // namespace
}  // namespace rastrel::cutting
