#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "cutting/job/cut_job.h"

/// The literal form of some checks: each line against each other, in the number of lines squared.
/// For contours of straight lines.
namespace rastrel::cutting::test {

struct LiteralLine {
  Point from;
  Point to;
};

inline std::vector<LiteralLine> LinesOf(const Contour& contour) {
  std::vector<LiteralLine> lines;
  Point from = contour.start;
  for (const Segment& segment : contour.segments) {
    lines.push_back({from, segment.end});
    from = segment.end;
  }
  if (contour.closed && from != contour.start) lines.push_back({from, contour.start});
  return lines;
}

inline double Cross(Point a, Point b, Point c) {
  return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// Whether their insides meet in one point.
inline bool Cross(const LiteralLine& a, const LiteralLine& b) {
  return Cross(a.from, a.to, b.from) * Cross(a.from, a.to, b.to) < 0 &&
         Cross(b.from, b.to, a.from) * Cross(b.from, b.to, a.to) < 0;
}

inline Point Meeting(const LiteralLine& a, const LiteralLine& b) {
  const double first = Cross(b.from, b.to, a.from);
  const double second = Cross(b.from, b.to, a.to);
  const double t = first / (first - second);
  return {a.from.x + (a.to.x - a.from.x) * t, a.from.y + (a.to.y - a.from.y) * t};
}

/// The length that two lines have in common if they lie on one line of whole numbers.
inline double CommonLength(const LiteralLine& a, const LiteralLine& b) {
  if (Cross(a.from, a.to, b.from) != 0 || Cross(a.from, a.to, b.to) != 0) return 0;
  const double length = Distance(a.from, a.to);
  const auto along = [&](Point p) {
    return ((p.x - a.from.x) * (a.to.x - a.from.x) + (p.y - a.from.y) * (a.to.y - a.from.y)) /
           length;
  };
  const double first = along(b.from);
  const double second = along(b.to);
  return std::max(
      0.0, std::min(length, std::max(first, second)) - std::max(0.0, std::min(first, second)));
}

inline double CommonLength(const Contour& first, const Contour& second) {
  double length = 0;
  for (const LiteralLine& a : LinesOf(first))
    for (const LiteralLine& b : LinesOf(second)) length += CommonLength(a, b);
  return length;
}

/// Where two contours of lines on whole numbers cross, at corners, too: the second is moved by so
/// little that all meetings become crossings within lines. A corner in which they only touch is
/// then left as none or as two crossings of lines side by side, and one in which they cross as an
/// odd number.
inline std::vector<Point> CrossingsOnWholeNumbers(const Contour& first, const Contour& second) {
  struct Place {
    Point point;
    std::size_t first = 0;
    std::size_t second = 0;
    int count = 1;
  };
  const std::vector<LiteralLine> lines = LinesOf(first);
  const std::vector<LiteralLine> others = LinesOf(Transformed(second, {.e = 1.3e-4, .f = 0.7e-4}));
  const auto neighbors = [](std::size_t a, std::size_t b, std::size_t count) {
    return a == b || (a + 1) % count == b || (b + 1) % count == a;
  };
  std::vector<Place> places;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    for (std::size_t j = 0; j < others.size(); ++j) {
      if (!Cross(lines[i], others[j])) continue;
      const Place place{Meeting(lines[i], others[j]), i, j};
      const auto near = std::find_if(places.begin(), places.end(), [&](const Place& other) {
        return Distance(other.point, place.point) < 0.02 &&
               neighbors(other.first, i, lines.size()) && neighbors(other.second, j, others.size());
      });
      if (near == places.end())
        places.push_back(place);
      else
        ++near->count;
    }
  }
  std::vector<Point> crossings;
  for (const Place& place : places)
    if (place.count % 2 == 1) crossings.push_back(place.point);
  return crossings;
}

/// Where the lines of one contour cross those of another, or with `own` the earlier ones of their
/// own. For contours in general position.
inline std::vector<Point> Crossings(const Contour& earlier, const Contour& later, bool own) {
  const std::vector<LiteralLine> others = LinesOf(earlier);
  const std::vector<LiteralLine> lines = LinesOf(later);
  std::vector<Point> crossings;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    for (std::size_t j = 0; j < (own ? i : others.size()); ++j)
      if (Cross(others[j], lines[i])) crossings.push_back(Meeting(others[j], lines[i]));
  }
  return crossings;
}

/// Whether two of them are so near that they may be a touch.
inline bool AreClose(const std::vector<Point>& places) {
  for (std::size_t i = 0; i < places.size(); ++i)
    for (std::size_t j = 0; j < i; ++j)
      if (Distance(places[i], places[j]) < 1) return true;
  return false;
}

}  // namespace rastrel::cutting::test
