#include "cutting/frame/least_squares.h"

#include <cmath>
#include <numeric>
#include <utility>

namespace rastrel::cutting {
namespace {

double LengthBelow(const Matrix& a, std::size_t row, std::size_t column) {
  double sum = 0;
  for (std::size_t i = row; i < a.Rows(); ++i) sum += a.At(i, column) * a.At(i, column);
  return std::sqrt(sum);
}

void ExchangeColumns(Matrix& a, std::size_t one, std::size_t other) {
  for (std::size_t i = 0; i < a.Rows(); ++i) std::swap(a.At(i, one), a.At(i, other));
}

// Brings the longest column that is left to place `step`, and returns its length below there.
double Pivot(Matrix& a, std::vector<std::size_t>& order, std::size_t step) {
  std::size_t longest = step;
  double length = LengthBelow(a, step, step);
  for (std::size_t column = step + 1; column < a.Columns(); ++column) {
    const double other = LengthBelow(a, step, column);
    if (other > length) {
      longest = column;
      length = other;
    }
  }
  ExchangeColumns(a, step, longest);
  std::swap(order[step], order[longest]);
  return length;
}

// Mirrors all that is right of and below `step`, so that the column there has its length in one
// number.
void Reflect(Matrix& a, std::vector<double>& b, std::size_t step, double length) {
  const double diagonal = a.At(step, step) > 0 ? -length : length;
  std::vector<double> mirror(a.Rows() - step);
  for (std::size_t i = step; i < a.Rows(); ++i) mirror[i - step] = a.At(i, step);
  mirror[0] -= diagonal;
  const double square = std::inner_product(mirror.begin(), mirror.end(), mirror.begin(), 0.0);
  if (square == 0) return;
  for (std::size_t column = step; column < a.Columns(); ++column) {
    double along = 0;
    for (std::size_t i = step; i < a.Rows(); ++i) along += mirror[i - step] * a.At(i, column);
    for (std::size_t i = step; i < a.Rows(); ++i)
      a.At(i, column) -= 2 * along / square * mirror[i - step];
  }
  double along = 0;
  for (std::size_t i = step; i < a.Rows(); ++i) along += mirror[i - step] * b[i];
  for (std::size_t i = step; i < a.Rows(); ++i) b[i] -= 2 * along / square * mirror[i - step];
}

}  // namespace

std::optional<std::vector<double>> LeastSquares(Matrix a, std::vector<double> b, double smallest) {
  const std::size_t columns = a.Columns();
  std::vector<std::size_t> order(columns);
  std::iota(order.begin(), order.end(), std::size_t{0});
  double first = 0;
  for (std::size_t step = 0; step < columns; ++step) {
    const double length = Pivot(a, order, step);
    if (step == 0) first = length;
    // Written so that a number that is none fails as well.
    if (!(length > smallest * first) || !std::isfinite(length)) return std::nullopt;
    Reflect(a, b, step, length);
  }
  std::vector<double> solution(columns);
  for (std::size_t step = columns; step-- > 0;) {
    double value = b[step];
    for (std::size_t column = step + 1; column < columns; ++column)
      value -= a.At(step, column) * solution[order[column]];
    solution[order[step]] = value / a.At(step, step);
    if (!std::isfinite(solution[order[step]])) return std::nullopt;
  }
  return solution;
}

}  // namespace rastrel::cutting
