#include "children/jobspool/page_measure.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "children/shared/reporter.h"

namespace rastrel::jobspool {
namespace {

constexpr double PointsPerInch = 72;

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
