// A cut job of a million points as HPGL in a file, against writing the file's bytes.

#include <cmath>
#include <string>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/require.h"
#include "cutting/output/cut_file.h"
#include "rastrel/platform/os/output_file.h"

namespace {

using namespace rastrel;
using bench::Require;

constexpr int Points = 1'000'000;
constexpr double HighestRatio = 3;

// Closed contours on a circle each, as a sheet with that many letters has them.
cutting::CutJob JobOf(int contours) {
  cutting::CutJob job{.width = 1200, .height = 1200, .paths = {}};
  const int count = Points / contours;
  for (int i = 0; i < contours; ++i) {
    cutting::Contour contour{.start = {}, .segments = {}, .closed = true};
    const double radius = contours > 1 ? 15 : 500;
    const double x = contours > 1 ? 20 + 36.0 * (i % 32) : 600;
    const double y = contours > 1 ? 20 + 36.0 * (i / 32) : 600;
    for (int point = 0; point < count; ++point) {
      // Each point is some units away from the one before it.
      const double angle = 6.283185307179586 * 7 * point / count;
      const double wave = radius * (1 + 0.02 * (point % 2));
      const cutting::Point at{x + wave * std::cos(angle), y + wave * std::sin(angle)};
      if (point == 0) contour.start = at;
      contour.segments.push_back(cutting::LineTo(at));
    }
    job.paths.push_back({.contours = {contour}});
  }
  return job;
}

void Write(const std::string& path, const std::string& text) {
  auto file = os::OutputFile::Create(path, os::Existing::Followed);
  Require(static_cast<bool>(file), "the file was not made");
  Require(static_cast<bool>(file->Write(text)), "the file was not written");
  Require(static_cast<bool>(file->Commit()), "the file was not named");
}

void Measure(const char* name, const std::string& path, int contours) {
  const cutting::CutJob job = JobOf(contours);
  const auto made = [&] {
    auto text = cutting::WriteCutFile(job, cutting::CutForm::Hpgl, {});
    Require(static_cast<bool>(text), "no text was made");
    return *std::move(text);
  };
  const std::string bytes = made();
  Require(bytes.size() > std::size_t{8} * Points, "points are missing");
  bench::CompareBest(name, {.count = 15, .clock = bench::Clock::Wall}, [&] { Write(path, made()); },
                     {{"writing the bytes", [&] { Write(path, bytes); }, HighestRatio}});
}

}  // namespace

int main() {
  const bench::DataRoot root;
  Measure("HPGL of a million points in 1,000 contours", root.Path("a.plt"), 1000);
  Measure("HPGL of a million points in one contour", root.Path("a.plt"), 1);
  return 0;
}
