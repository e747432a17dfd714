// Registration marks out of any text: the value of --marks in the first line, and measured places
// in the others.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "cutting/frame/mark_fit.h"
#include "cutting/frame/mark_layout.h"

namespace {

using namespace rastrel::cutting;

void Check(bool holds) {
  if (!holds) std::abort();
}

std::vector<Point> Centers(const CutJob& job) {
  std::vector<Point> centers;
  for (const RegistrationMark& mark : job.marks) centers.push_back(mark.center);
  return centers;
}

void CheckFit(const CutJob& job, const std::vector<Point>& measured) {
  const std::vector<Point> printed = Centers(job);
  const auto fit = FitMarks(printed, measured, 1000);
  if (!fit) {
    Check(!rastrel::Describe(fit.Error()).empty());
    return;
  }
  for (std::size_t i = 0; i < printed.size(); ++i) {
    Check(fit->residuals[i] <= 1000);
    Check(std::abs(Distance(fit->map.Apply(printed[i]), measured[i]) - fit->residuals[i]) < 1e-6);
  }
  if (const auto mapped = Mapped(job, fit->map)) {
    for (const Contour& contour : mapped->paths[0].contours) {
      Check(std::isfinite(contour.segments.back().end.x));
      Check(contour.segments.size() <= 1025);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const std::size_t end = std::min(text.find('\n'), text.size());
  CutJob job{.width = 594, .height = 420, .paths = {}};
  job.paths.push_back(
      {.contours = {{.start = {1, 2},
                     .segments = {CurveTo({1, 400}, {590, 400}, {590, 3}), LineTo({300, -20})},
                     .closed = true}}});
  const auto options = ParseMarks(text.substr(0, end));
  if (options) {
    auto marked = WithMarks(job, *options);
    if (marked) {
      Check(marked->job.marks.size() <= MaximumFittedMarks);
      Check(marked->job.width >= 594 && marked->job.height >= 420);
      job = std::move(marked->job);
    }
  }
  const auto measured =
      ParseMeasurements(text.substr(std::min(end + 1, text.size())), "measured.txt");
  if (measured) CheckFit(job, *measured);
  return 0;
}
