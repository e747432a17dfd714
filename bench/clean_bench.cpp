// A job of 100,000 segments checked, healed and put in order, against reading and writing its
// file; and how the time of checking grows with the segments.

#include <cmath>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "bench/measure.h"
#include "bench/require.h"
#include "cutting/clean/heal.h"
#include "cutting/job/job_file.h"
#include "cutting/toolpath/order.h"

namespace {

using namespace rastrel;
using namespace rastrel::cutting;
using bench::Require;

constexpr int SegmentsOfAShape = 20;

// Rings of lines and curves by turns, as outlines of letters are, side by side on a square sheet;
// some have a fault.
CutJob JobOf(int segments) {
  const int shapes = segments / SegmentsOfAShape;
  const int columns = static_cast<int>(std::ceil(std::sqrt(shapes)));
  CutJob job{.width = columns * 10.0, .height = columns * 10.0, .paths = {}};
  for (int shape = 0; shape < shapes; ++shape) {
    const Point middle{shape % columns * 10.0 + 5, shape / columns * 10.0 + 5};
    const auto at = [&](double step, double radius) {
      const double angle = 6.283185307179586 * step / SegmentsOfAShape;
      return Point{middle.x + radius * std::cos(angle), middle.y + radius * std::sin(angle)};
    };
    Contour contour{.start = at(0, 4), .segments = {}, .closed = shape % 50 != 0};
    for (int i = 0; i < SegmentsOfAShape; ++i) {
      const double radius = i % 4 < 2 ? 3.2 : 4;
      contour.segments.push_back(
          i % 2 == 0 ? LineTo(at(i + 1, radius))
                     : CurveTo(at(i + 0.3, radius), at(i + 0.7, radius), at(i + 1, radius)));
    }
    contour.segments.back().end = contour.start;
    job.paths.push_back({.contours = {std::move(contour)}});
    if (shape % 100 == 7) job.paths.push_back(job.paths.back());
  }
  return job;
}

void Clean(const CutJob& job) {
  Require(!Check(job).faults.empty(), "no fault was found");
  const HealResult healed = Heal(job);
  Require(!healed.repairs.empty() && healed.complete, "nothing was healed");
}

void CleanAndOrder(const CutJob& job) {
  Require(!Check(job).faults.empty(), "no fault was found");
  HealResult healed = Heal(job);
  std::vector<ToolLine> lines = ToolLinesOf(healed.job);
  const OrderResult order = OrderLines(healed.job, std::move(lines), {});
  Require(order.travelAfter <= order.travelBefore, "the order is worse");
}

void ReadAndWrite(const std::string& text) {
  const auto job = ReadJobFile(text, "job.json");
  Require(job && JobFileText(*job).size() == text.size(), "the job was not read and written");
}

}  // namespace

int main() {
  const CutJob large = JobOf(100'000);
  const CutJob small = JobOf(12'500);
  const std::string text = JobFileText(large);
  bench::Compare(
      {.name = "100,000 segments checked, healed and ordered",
       .peerName = "reading and writing their file",
       .rounds = 9,
       .limit = 8,
       .clock = bench::Clock::Processor},
      [] {}, [&] { CleanAndOrder(large); }, [&] { ReadAndWrite(text); });
  // n log n grows by 8 · log 100,000 / log 12,500.
  bench::Compare(
      {.name = "100,000 segments checked and healed",
       .peerName = "12,500 segments, once",
       .rounds = 9,
       .limit = 9.8,
       .clock = bench::Clock::Processor},
      [] {}, [&] { Clean(large); }, [&] { Clean(small); });
  return 0;
}
