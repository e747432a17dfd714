#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "host/document/shapes.h"
#include "host/drawing/path_sink.h"

/// Readers of vector files, with their paths and notes in lists.
namespace rastrel::test {

struct ReadPaths {
  std::vector<graphics::VectorPath> paths;
  std::vector<std::string> notes;
  std::string refusal;  ///< empty for success
};

template <typename Reader>
ReadPaths PathsBy(Reader reader, std::string_view bytes) {
  ReadPaths result;
  drawing::PathSink sink([&](const graphics::VectorPath& path) { result.paths.push_back(path); },
                         [&](const std::string& note) { result.notes.push_back(note); });
  const auto read = reader(bytes, sink);
  if (!read) result.refusal = Describe(read.Error());
  return result;
}

inline BOUNDS BoundsOfPath(const graphics::VectorPath& path) {
  return document::BoundsOf(path.shape, TM());
}

inline void ExpectBox(const graphics::VectorPath& path, double left, double bottom, double right,
                      double top, double near = 1e-9) {
  const BOUNDS bounds = BoundsOfPath(path);
  EXPECT_NEAR(bounds.xmin, left, near);
  EXPECT_NEAR(bounds.ymin, bottom, near);
  EXPECT_NEAR(bounds.xmax, right, near);
  EXPECT_NEAR(bounds.ymax, top, near);
}

/// Calls with points of all lines and curves of a path, `count` on each.
inline void VisitPoints(const graphics::VectorPath& path, int count,
                        const std::function<void(const CWorldPoint&)>& visit) {
  for (const document::SubPath& run : path.shape.subPaths) {
    CWorldPoint from = run.start;
    for (const document::PathSegment& segment : run.segments) {
      const CWorldPoint& to = segment.points[2];
      const CWorldPoint& a = segment.curve ? segment.points[0] : from;
      const CWorldPoint& b = segment.curve ? segment.points[1] : to;
      for (int i = 0; i <= count; ++i) {
        const double t = static_cast<double>(i) / count;
        const double u = 1 - t;
        const double w[] = {u * u * u, 3 * u * u * t, 3 * u * t * t, t * t * t};
        visit({w[0] * from.x + w[1] * a.x + w[2] * b.x + w[3] * to.x,
               w[0] * from.y + w[1] * a.y + w[2] * b.y + w[3] * to.y});
      }
      from = to;
    }
  }
}

}  // namespace rastrel::test
