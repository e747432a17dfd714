#include "children/coreodalis/png_filter.h"

#include <algorithm>
#include <cstdlib>

namespace rastrel::odalis {
namespace {

// The numbers that the format gives the filters.
enum Filter : std::uint8_t { None = 0, Sub = 1, Up = 2, Paeth = 4 };

std::uint8_t Difference(std::uint8_t value, std::uint8_t predicted) {
  return static_cast<std::uint8_t>(value - predicted);
}

/// The one of left, above and above left that is nearest to left + above - above left.
std::uint8_t PaethOf(int left, int above, int corner) {
  const int toLeft = std::abs(above - corner);
  const int toAbove = std::abs(left - corner);
  const int toCorner = std::abs(left + above - 2 * corner);
  if (toLeft <= toAbove && toLeft <= toCorner) return static_cast<std::uint8_t>(left);
  return static_cast<std::uint8_t>(toAbove <= toCorner ? above : corner);
}

std::uint64_t SumOfAmounts(const std::uint8_t* bytes, std::size_t count) {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i < count; ++i) sum += bytes[i] < 128 ? bytes[i] : 256u - bytes[i];
  return sum;
}

/// Writes the row, filtered, after the filter's number.
void Apply(Filter filter, std::span<const std::uint8_t> row, const std::uint8_t* above,
           std::size_t step, std::uint8_t* to) {
  *to++ = filter;
  const std::size_t count = row.size();
  switch (filter) {
    case None:
      for (std::size_t i = 0; i < count; ++i) to[i] = row[i];
      break;
    case Up:
      for (std::size_t i = 0; i < count; ++i) to[i] = Difference(row[i], above[i]);
      break;
    case Sub:
      for (std::size_t i = 0; i < step; ++i) to[i] = row[i];
      for (std::size_t i = step; i < count; ++i) to[i] = Difference(row[i], row[i - step]);
      break;
    case Paeth:
      for (std::size_t i = 0; i < step; ++i) to[i] = Difference(row[i], above[i]);
      for (std::size_t i = step; i < count; ++i) {
        to[i] = Difference(row[i], PaethOf(row[i - step], above[i], above[i - step]));
      }
      break;
  }
}

}  // namespace

void AppendPlainRow(std::span<const std::uint8_t> row, std::vector<std::uint8_t>& to) {
  to.push_back(None);
  to.insert(to.end(), row.begin(), row.end());
}

void AppendFilteredRow(std::span<const std::uint8_t> row, std::span<const std::uint8_t> above,
                       std::size_t step, std::vector<std::uint8_t>& to) {
  const std::size_t size = row.size() + 1;
  const std::size_t at = to.size();
  // The best so far, and the next that is tried.
  to.resize(at + 2 * size);
  std::uint8_t* const best = to.data() + at;
  std::uint8_t* const tried = best + size;
  std::uint64_t least = UINT64_MAX;
  for (const Filter filter : {Up, None, Sub, Paeth}) {
    const bool looksUp = filter == Up || filter == Paeth;
    if (looksUp && above.empty()) continue;
    Apply(filter, row, above.data(), step, tried);
    const std::uint64_t sum = SumOfAmounts(tried + 1, row.size());
    if (sum >= least) continue;
    least = sum;
    std::copy_n(tried, size, best);
    // Nothing is less: most rows of a sign are the one above again.
    if (least == 0) break;
  }
  to.resize(at + size);
}

}  // namespace rastrel::odalis
