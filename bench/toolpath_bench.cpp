// The order of 100,000 segments, 10,000 closed paths of ten, against reading and writing the job
// that they come in; and its growth from an eighth of them, done eight times.

#include <cmath>
#include <random>
#include <string>

#include "bench/measure.h"
#include "bench/require.h"
#include "cutting/job/job_file.h"
#include "cutting/toolpath/toolpath.h"

namespace {

using namespace rastrel;
using bench::Require;

constexpr int SegmentsOfPath = 10;
// Checking and healing take the other half of the time of a whole run.
constexpr double HighestRatio = 4;
// n log n makes 1.22 of eight times as many; the rest is memory that is further away.
constexpr double HighestGrowth = 1.6;

cutting::CutJob JobOf(int segments) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> place(0, 2000);
  std::uniform_real_distribution<double> radius(1, 4);
  cutting::CutPath path;
  for (int i = 0; i < segments / SegmentsOfPath; ++i) {
    const cutting::Point center{place(random), place(random)};
    const double r = radius(random);
    cutting::Contour contour{.start = {center.x + r, center.y}, .segments = {}, .closed = true};
    for (int k = 1; k <= SegmentsOfPath; ++k) {
      const double angle = 6.283185307179586 * k / SegmentsOfPath;
      contour.segments.push_back(
          cutting::LineTo({center.x + r * std::cos(angle), center.y + r * std::sin(angle)}));
    }
    path.contours.push_back(contour);
  }
  return {.width = 2010, .height = 2010, .paths = {path}};
}

void Order(const cutting::CutJob& job) {
  const auto result = cutting::MakeToolPaths(job, {});
  Require(result && result->report.travelAfter < result->report.travelBefore,
          "the way did not get shorter");
}

}  // namespace

int main() {
  const cutting::CutJob whole = JobOf(100'000);
  const cutting::CutJob part = JobOf(12'500);
  const std::string text = cutting::JobFileText(whole);
  const auto readAndWrite = [&] {
    const auto read = cutting::ReadJobFile(text, "job.json");
    Require(read && cutting::JobFileText(*read).size() == text.size(), "the job was not read");
  };
  bench::CompareBest("order of 100,000 segments", {.count = 7, .clock = bench::Clock::Processor},
                     [&] { Order(whole); },
                     {{"reading and writing them", readAndWrite, HighestRatio}});
  bench::CompareBest("growth of the order to 100,000 segments",
                     {.count = 7, .clock = bench::Clock::Processor}, [&] { Order(whole); },
                     {{"12,500 of them eight times",
                       [&] {
                         for (int i = 0; i < 8; ++i) Order(part);
                       },
                       HighestGrowth}});
  return 0;
}
