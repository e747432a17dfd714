// Checking beside its literal form, and on input that means harm.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>

#include "cutting/clean/fault_picture.h"
#include "cutting/clean/heal.h"
#include "tests/cutting/clean/literal_check.h"
#include "tests/cutting/clean/shapes.h"

namespace rastrel::cutting {
namespace {

using namespace test;

std::vector<Fault> FaultsOf(const CheckReport& report, FaultKind kind, std::size_t path,
                            std::size_t other) {
  std::vector<Fault> faults;
  std::ranges::copy_if(report.faults, std::back_inserter(faults), [&](const Fault& fault) {
    return fault.kind == kind && fault.contour.path == path && fault.other.path == other;
  });
  return faults;
}

void ExpectPlaces(const std::vector<Fault>& faults, const std::vector<Point>& places,
                  double precision) {
  EXPECT_EQ(faults.size(), places.size());
  for (const Point place : places) {
    EXPECT_TRUE(std::ranges::any_of(
        faults, [&](const Fault& fault) { return Distance(fault.place, place) <= precision; }))
        << place.x << ", " << place.y;
  }
}

// Corners on a grid of 10 mm, so that corners on lines and common runs are frequent.
Contour OnWholeNumbers(std::mt19937& random) {
  std::uniform_int_distribution<int> place(0, 6);
  std::uniform_int_distribution<int> count(3, 6);
  std::vector<Point> corners;
  for (int left = count(random); left > 0;) {
    const Point corner{place(random) * 10.0, place(random) * 10.0};
    if (std::ranges::find(corners, corner) != corners.end()) continue;
    corners.push_back(corner);
    --left;
  }
  return Polygon(corners);
}

TEST(CheckBesideItsLiteralForm, finds_the_same_crossings_and_runs_on_whole_numbers) {
  std::mt19937 random(5);
  int crossings = 0;
  int overlaps = 0;
  for (int round = 0; round < 600; ++round) {
    const Contour first = OnWholeNumbers(random);
    const Contour second = OnWholeNumbers(random);
    // Needles are taken off before contours are compared; they are tested by themselves.
    const CheckReport report = Check(JobOf({first, second}));
    if (std::ranges::any_of(report.faults, [](const Fault& fault) {
          return fault.kind == FaultKind::Spike || fault.kind == FaultKind::Duplicate;
        }))
      continue;
    // A run that one contour has with itself would count twice.
    if (!FaultsOf(report, FaultKind::Overlap, 0, 0).empty() ||
        !FaultsOf(report, FaultKind::Overlap, 1, 1).empty())
      continue;
    const double common = CommonLength(first, second);
    const std::vector<Fault> runs = FaultsOf(report, FaultKind::Overlap, 1, 0);
    double length = 0;
    for (const Fault& run : runs) length += run.length;
    // The other contour leaves a run at an angle, at least of a quarter of a degree, and is within
    // the tolerance for some way.
    ASSERT_NEAR(length, common, 3 * static_cast<double>(runs.size()) + 1e-9) << round;
    overlaps += common > 0 ? 1 : 0;
    if (common > 0) continue;
    const std::vector<Point> places = CrossingsOnWholeNumbers(first, second);
    ExpectPlaces(FaultsOf(report, FaultKind::Crossing, 1, 0), places, 0.05);
    ASSERT_FALSE(HasFailure()) << round;
    crossings += static_cast<int>(places.size());
  }
  EXPECT_GT(crossings, 1000);
  EXPECT_GT(overlaps, 30);
}

TEST(CheckBesideItsLiteralForm, finds_the_same_crossings_of_random_lines) {
  std::mt19937 random(6);
  std::uniform_real_distribution<double> place(10, 990);
  std::size_t crossings = 0;
  for (int round = 0; round < 20; ++round) {
    std::vector<Contour> contours;
    for (int i = 0; i < 6; ++i) {
      std::vector<Point> corners;
      for (int k = 0; k < 15; ++k) corners.push_back({place(random), place(random)});
      contours.push_back(Polygon(corners));
    }
    const CheckReport report = Check(JobOf(contours));
    for (std::size_t i = 0; i < contours.size(); ++i) {
      for (std::size_t other = 0; other <= i; ++other) {
        const std::vector<Point> places = Crossings(contours[other], contours[i], other == i);
        if (AreClose(places)) continue;
        const FaultKind kind = other == i ? FaultKind::SelfCrossing : FaultKind::Crossing;
        ExpectPlaces(FaultsOf(report, kind, i, other), places, 0.001);
        crossings += places.size();
      }
    }
    ASSERT_FALSE(HasFailure()) << round;
  }
  EXPECT_GT(crossings, 5000U);
}

TEST(CheckBesideItsLiteralForm, pairs_the_same_ends) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> place(0, 3);
  for (int round = 0; round < 100; ++round) {
    std::vector<Contour> contours;
    std::vector<std::pair<Point, std::size_t>> ends;
    for (std::size_t i = 0; i < 25; ++i) {
      // Long enough to be no crumbs, and apart from each other but for their ends.
      const Point start{place(random), place(random)};
      const Point end{place(random) + 500, place(random)};
      contours.push_back(Line({start, end}));
      ends.insert(ends.end(), {{start, i}, {end, i}});
    }
    std::vector<std::pair<double, std::pair<std::size_t, std::size_t>>> pairs;
    for (std::size_t a = 0; a < ends.size(); ++a)
      for (std::size_t b = a + 1; b < ends.size(); ++b)
        if (const double gap = Distance(ends[a].first, ends[b].first); gap <= 0.1)
          pairs.push_back({gap, {a, b}});
    std::ranges::sort(pairs);
    std::vector<bool> used(ends.size());
    std::vector<double> gaps;
    for (const auto& [gap, pair] : pairs) {
      if (used[pair.first] || used[pair.second]) continue;
      used[pair.first] = used[pair.second] = true;
      gaps.push_back(gap);
    }
    std::vector<double> found;
    for (const Fault& fault : Check(JobOf(contours)).faults)
      if (fault.kind == FaultKind::UnjoinedEnds) found.push_back(fault.length);
    std::ranges::sort(found);
    EXPECT_EQ(found, gaps);
  }
}

CutJob RandomHostileJob(std::mt19937& random) {
  constexpr double Infinity = std::numeric_limits<double>::infinity();
  const std::array<double, 16> values{0,     -0.0, 1,   1e-300,       1e-7,     0.1, 0.02, 0.3,
                                      1e300, -1e6, 1e6, std::nan(""), Infinity, -5,  500,  1e-3};
  const auto value = [&] { return values[random() % (random() % 4 == 0 ? 16 : 8)]; };
  const auto point = [&] { return Point{value(), value()}; };
  CutJob job{.width = value(), .height = value(), .paths = {}};
  for (auto paths = random() % 6; paths > 0; --paths) {
    CutPath path;
    path.operation = static_cast<Operation>(random() % 9);
    path.paint.kind = static_cast<Paint::Kind>(random() % 4);
    for (auto contours = random() % 5; contours > 0; --contours) {
      Contour contour{.start = point(), .segments = {}, .closed = random() % 2 == 0};
      for (auto segments = random() % 8; segments > 0; --segments)
        contour.segments.push_back(random() % 2 == 0 ? LineTo(point())
                                                     : CurveTo(point(), point(), point()));
      path.contours.push_back(contour);
    }
    job.paths.push_back(path);
  }
  return job;
}

TEST(CheckOfHostileJobs, ends_and_healing_leaves_nothing_to_heal_but_once) {
  std::mt19937 random(8);
  for (int round = 0; round < 1000; ++round) {
    const CutJob job = RandomHostileJob(random);
    const CheckReport report = Check(job);
    for (const Fault& fault : report.faults) {
      ASSERT_LT(fault.contour.path, job.paths.size());
      ASSERT_LT(fault.contour.contour, job.paths[fault.contour.path].contours.size());
      ASSERT_TRUE(std::isfinite(fault.place.x) && std::isfinite(fault.length)) << round;
    }
    ASSERT_FALSE(FaultPicture(job, report).empty());
    const HealResult healed = Heal(job, {.faults = {}, .unite = round % 2 == 0});
    for (const Fault& fault : Check(healed.job).faults) ASSERT_NE(fault.kind, FaultKind::Unusable);
  }
}

TEST(CheckOfHostileJobs, ends_where_all_lines_go_through_one_point) {
  std::vector<Contour> star;
  for (int i = 0; i < 1500; ++i) {
    const double angle = 3.14159265358979 * i / 1500;
    star.push_back(Line({{500 + 400 * std::cos(angle), 500 + 400 * std::sin(angle)},
                         {500 - 400 * std::cos(angle), 500 - 400 * std::sin(angle)}}));
  }
  const CheckReport report = Check(JobOf(star));
  EXPECT_FALSE(report.complete);
  EXPECT_LE(report.faults.size(), MaximumFaults);
  EXPECT_FALSE(Heal(JobOf(star)).complete);
}

TEST(CheckOfHostileJobs, ends_where_all_ends_are_in_one_place) {
  std::vector<Contour> lines;
  for (int i = 0; i < 20'000; ++i)
    lines.push_back(Line({{500 + i * 1e-6, 500}, {500 + i * 1e-6, 500 + 1e-3}}));
  const CheckReport report = Check(JobOf(lines));
  EXPECT_GE(report.faults.size(), 20'000U);
}

TEST(CheckOfHostileJobs, flattens_curves_of_a_kilometer_within_bounds) {
  std::vector<Contour> curves;
  for (int i = 0; i < 1500; ++i) {
    const double y = i * 10.0;
    curves.push_back({.start = {0, y},
                      .segments = {CurveTo({1e6, y}, {-1e6, y + 5}, {1e6, y + 5})},
                      .closed = false});
  }
  // 4,096 lines each would be 6 million.
  EXPECT_EQ(Check(JobOf(curves)).contours, 1500U);
}

}  // namespace
}  // namespace rastrel::cutting
