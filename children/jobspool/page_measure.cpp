#include "children/jobspool/page_measure.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "children/shared/reporter.h"

namespace rastrel::jobspool {
namespace {

constexpr double PointsPerInch = 72;
constexpr double DotsPerPoint = 2400 / PointsPerInch;
constexpr double SheetMiddle = 120000;  // points: where measure.ps puts the origin
// The device reports a box with a fraction of a dot around the marks.
constexpr double FillsAll = SheetMiddle - 1;
constexpr PointBox OrdinarySheet{0, 0, 595, 842};

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

// The reader of the records takes exactly -1 for a number that never came.
std::string Inches(double points) {
  std::array<char, 64> text{};
  const double inches = points / PointsPerInch;
  std::snprintf(text.data(), text.size(), "%.6f", inches);
  const std::string written = text.data();
  if (written == "-1.000000") return "-1.000001";
  return written == "-0.000000" ? "0.000000" : written;
}

long long Pixels(double points, int resolution) {
  return std::llround(points * resolution / PointsPerInch);
}

}  // namespace

std::optional<PageMeasure> MeasuredPage(const std::string& report,
                                        const std::optional<PointBox>& declared) {
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

std::string FormatPageRecords(const PageMeasure& page, const std::string& name, int resolution) {
  const PointBox& box = page.box;
  const std::string dots = std::to_string(resolution);
  const auto pixels = [&](double points) {
    return std::to_string(std::clamp(Pixels(points, resolution), -2147483647LL, 2147483647LL));
  };
  std::string text;
  const auto record = [&](const char* keyword, const std::string& value) {
    text.append("QRAST:").append(keyword).append(" ").append(value).append("\n");
  };
  record("name", children::OneLine(name));
  record("bits", "24");
  record("npls", "3");
  record("xdpi", dots);
  record("ydpi", dots);
  // The height comes before the width, and the lower edge last: so its reader has it.
  record("bbox", Inches(box.left) + " " + Inches(box.Height()) + " " + Inches(box.Width()) + " " +
                     Inches(box.bottom));
  record("mavl", page.marked ? "1" : "0");
  record("bmap", pixels(box.left) + " " + pixels(box.bottom) + " " + pixels(box.Width()) + " " +
                     pixels(box.Height()));
  return text;
}

}  // namespace rastrel::jobspool
