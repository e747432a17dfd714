// The kerf of one outline of 100,000 lines, as tracing programs make them, against reading and
// writing the job that it comes in; and its growth from an eighth of the lines. The one outline is
// smooth, so that most of its corners are passed over; the other keeps them all.

#include <cmath>
#include <random>
#include <string>
#include <utility>

#include "bench/measure.h"
#include "bench/require.h"
#include "cutting/job/job_file.h"
#include "cutting/toolpath/kerf.h"

namespace {

using namespace rastrel;
using bench::Require;

constexpr double Pi = 3.141592653589793;
constexpr double Radius = 2000;
constexpr double HighestRatio = 8;
// Of eight outlines with an eighth of the corners, of which the library's lists are shorter.
constexpr double HighestGrowth = 5;

cutting::CutJob JobOf(int lines, double noise) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> beside(-noise, noise);
  cutting::Contour contour{.start = {}, .segments = {}, .closed = true};
  for (int i = 0; i < lines; ++i) {
    const double angle = 2 * Pi * i / lines;
    const double radius = Radius + 8 * std::sin(angle * 200) + beside(random);
    const cutting::Point point{Radius * 1.1 + radius * std::cos(angle),
                               Radius * 1.1 + radius * std::sin(angle)};
    if (i == 0)
      contour.start = point;
    else
      contour.segments.push_back(cutting::LineTo(point));
  }
  cutting::CutPath path{.contours = {std::move(contour)}};
  path.settings.kerf = 0.2;
  return {.width = Radius * 2.2, .height = Radius * 2.2, .paths = {std::move(path)}};
}

void Offset(const cutting::CutJob& job) {
  cutting::KerfReport report;
  const auto moved = cutting::OffsetByKerf(job, cutting::Corners::Round, 0.02, report);
  Require(report.moved == 1 && moved.paths.size() == 1, "the outline was not moved");
}

}  // namespace

int main() {
  const cutting::CutJob smooth = JobOf(100'000, 0);
  const cutting::CutJob rough = JobOf(100'000, 0.05);
  const cutting::CutJob part = JobOf(12'500, 0.05);
  const std::string text = cutting::JobFileText(smooth);
  const auto readAndWrite = [&] {
    const auto read = cutting::ReadJobFile(text, "job.json");
    Require(read && cutting::JobFileText(*read).size() == text.size(), "the job was not read");
  };
  const bench::Turns turns{.count = 5, .clock = bench::Clock::Processor};
  bench::CompareBest("kerf of a smooth outline of 100,000 lines", turns, [&] { Offset(smooth); },
                     {{"reading and writing it", readAndWrite, HighestRatio}});
  bench::CompareBest("kerf of a rough outline of 100,000 lines", turns, [&] { Offset(rough); },
                     {{"12,500 lines eight times",
                       [&] {
                         for (int i = 0; i < 8; ++i) Offset(part);
                       },
                       HighestGrowth}});
  return 0;
}
