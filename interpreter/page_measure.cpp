#include "interpreter/page_measure.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace rastrel::interpreter {
namespace {

constexpr double PointsPerInch = 72;
constexpr double DotsPerPoint = 2400 / PointsPerInch;
constexpr double SheetMiddle = 120000;  // points: where measure.ps puts the origin
// The device reports a box with a fraction of a dot around the marks.
constexpr double FillsAll = SheetMiddle - 1;
constexpr PageArea OrdinarySheet{0, 0, 595, 842};

std::optional<std::array<double, 6>> ReadSix(const std::string& text) {
  std::array<double, 6> numbers{};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (double& number : numbers) {
    while (at != end && *at == ' ') ++at;
    const auto [stop, error] = std::from_chars(at, end, number);
    if (error != std::errc() || !std::isfinite(number)) return {};
    at = stop;
  }
  return numbers;
}

}  // namespace

std::optional<PageMeasure> MeasuredPage(const std::string& report,
                                        const std::optional<PageArea>& declared) {
  const auto numbers = ReadSix(report);
  if (!numbers) return {};
  const auto& [width, height, left, bottom, right, top] = *numbers;
  PageMeasure page;
  page.marked = left < right && bottom < top;
  if (width > 0 && height > 0) {
    page.box = {0, 0, width, height};
    return page;
  }
  page.box = {left / DotsPerPoint - SheetMiddle, bottom / DotsPerPoint - SheetMiddle,
              right / DotsPerPoint - SheetMiddle, top / DotsPerPoint - SheetMiddle};
  const double farthest = std::max({std::abs(page.box.left), std::abs(page.box.bottom),
                                    std::abs(page.box.right), std::abs(page.box.top)});
  if (!page.marked || farthest >= FillsAll) page.box = declared.value_or(OrdinarySheet);
  return page;
}

}  // namespace rastrel::interpreter
