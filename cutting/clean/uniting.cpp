#include "cutting/clean/uniting.h"

#include <algorithm>
#include <cmath>
#include <polyclipping/clipper.hpp>
#include <span>

namespace rastrel::cutting::clean {
namespace {

namespace clip = ClipperLib;

GridPoint FromClip(const clip::IntPoint& point) { return {point.X, point.Y}; }

// A corner of a flattened contour.
struct Vertex {
  GridPoint place;
  std::size_t segment = 0;  ///< that goes on from here
  bool begins = false;      ///< whether the segment starts here
};

struct Ring {
  const Contour* contour = nullptr;
  std::vector<Segment> segments;  ///< with the line back
  std::vector<Vertex> vertices;
};

Point StartOf(const Ring& ring, std::size_t segment) {
  return segment == 0 ? ring.contour->start : ring.segments[segment - 1].end;
}

Ring RingOf(const Contour& contour, double tolerance) {
  Ring ring{.contour = &contour, .segments = contour.segments, .vertices = {}};
  ring.segments.push_back(LineTo(contour.start));
  for (std::size_t i = 0; i < ring.segments.size(); ++i) {
    const std::vector<Point> points = Flatten(
        {.start = StartOf(ring, i), .segments = {ring.segments[i]}, .closed = false}, tolerance);
    for (std::size_t k = 0; k + 1 < points.size(); ++k) {
      const Vertex vertex{OnGrid(points[k]), i, k == 0};
      if (!ring.vertices.empty() && ring.vertices.back().place == vertex.place)
        ring.vertices.back() = vertex;
      else
        ring.vertices.push_back(vertex);
    }
  }
  while (ring.vertices.size() > 1 && ring.vertices.back().place == ring.vertices.front().place)
    ring.vertices.pop_back();
  return ring;
}

clip::Path PathOf(const Ring& ring) {
  clip::Path path;
  path.reserve(ring.vertices.size());
  for (const Vertex& vertex : ring.vertices) path.emplace_back(vertex.place.x, vertex.place.y);
  return path;
}

clip::Paths UnionOf(const clip::Paths& paths, clip::PolyFillType rule) {
  clip::Clipper clipper;
  clipper.PreserveCollinear(true);
  clipper.AddPaths(paths, clip::ptSubject, true);
  clip::Paths united;
  clipper.Execute(clip::ctUnion, united, rule, rule);
  return united;
}

// The area of one path's contours.
clip::Paths AreaOfPath(const std::vector<clip::Path>& contours, Paint::Kind kind) {
  if (kind == Paint::Kind::EvenOddFill) return UnionOf(contours, clip::pftEvenOdd);
  if (kind != Paint::Kind::Stroke) return UnionOf(contours, clip::pftNonZero);
  clip::Paths simple;
  for (const clip::Path& contour : contours) {
    for (clip::Path& part : UnionOf({contour}, clip::pftNonZero)) simple.push_back(std::move(part));
  }
  return UnionOf(simple, clip::pftEvenOdd);
}

// Where a point of the union comes from.
struct Origin {
  GridPoint place;
  std::size_t ring = 0;
  std::size_t vertex = 0;
};

class Outlines {
 public:
  explicit Outlines(const std::vector<Ring>& rings) : m_Rings(rings) {
    for (std::size_t ring = 0; ring < rings.size(); ++ring) {
      for (std::size_t i = 0; i < rings[ring].vertices.size(); ++i)
        m_Origins.push_back({rings[ring].vertices[i].place, ring, i});
    }
    std::ranges::sort(m_Origins, {}, &Origin::place);
    united.kept.assign(rings.size(), false);
  }

  void Add(const clip::Path& outline) {
    if (outline.size() < 3) return;
    for (const Origin& origin : OriginsOf(outline.front())) {
      const std::size_t size = m_Rings[origin.ring].vertices.size();
      if (size != outline.size() || united.kept[origin.ring]) continue;
      if (Matches(outline, 0, origin, size - 1, true) ||
          Matches(outline, 0, origin, size - 1, false)) {
        united.kept[origin.ring] = true;
        return;
      }
    }
    united.added.push_back(ContourOf(outline));
  }

  United united;

 private:
  [[nodiscard]] std::span<const Origin> OriginsOf(const clip::IntPoint& point) const {
    const GridPoint place = FromClip(point);
    const auto first = std::ranges::lower_bound(m_Origins, place, {}, &Origin::place);
    return {first, std::ranges::upper_bound(first, m_Origins.end(), place, {}, &Origin::place)};
  }

  // Whether the outline follows the ring for so many steps, onward or back.
  [[nodiscard]] bool Matches(const clip::Path& outline, std::size_t from, const Origin& origin,
                             std::size_t steps, bool onward) const {
    const std::vector<Vertex>& vertices = m_Rings[origin.ring].vertices;
    for (std::size_t i = 0; i <= steps; ++i) {
      const std::size_t step = i % vertices.size();
      const std::size_t vertex =
          (origin.vertex + (onward ? step : vertices.size() - step)) % vertices.size();
      if (vertices[vertex].place != FromClip(outline[(from + i) % outline.size()])) return false;
    }
    return true;
  }

  // The point to the bit, where a corner of a contour is there.
  [[nodiscard]] Point PointOf(const clip::IntPoint& point) const {
    for (const Origin& origin : OriginsOf(point)) {
      const Ring& ring = m_Rings[origin.ring];
      const Vertex& vertex = ring.vertices[origin.vertex];
      if (vertex.begins) return StartOf(ring, vertex.segment);
    }
    return Millimeters(FromClip(point));
  }

  // Lines of the flattened curve that begins at a vertex.
  [[nodiscard]] static std::size_t LinesFrom(const Ring& ring, std::size_t vertex) {
    const std::size_t segment = ring.vertices[vertex].segment;
    std::size_t lines = 1;
    while (lines < ring.vertices.size() &&
           ring.vertices[(vertex + lines) % ring.vertices.size()].segment == segment &&
           !ring.vertices[(vertex + lines) % ring.vertices.size()].begins)
      ++lines;
    return lines;
  }

  // The whole curve that the outline follows from a place on: adds it, and returns its lines; 0 if
  // there is none.
  std::size_t AddCurve(const clip::Path& outline, std::size_t from, Contour& contour) const {
    for (const Origin& origin : OriginsOf(outline[from])) {
      const Ring& ring = m_Rings[origin.ring];
      const Vertex& vertex = ring.vertices[origin.vertex];
      if (!vertex.begins) continue;
      const Segment& segment = ring.segments[vertex.segment];
      if (segment.isCurve) {
        const std::size_t lines = LinesFrom(ring, origin.vertex);
        if (lines < outline.size() && Matches(outline, from, origin, lines, true)) {
          contour.segments.push_back(segment);
          return lines;
        }
      }
      if (const std::size_t lines = AddCurveBack(outline, from, origin, contour)) return lines;
    }
    return 0;
  }

  std::size_t AddCurveBack(const clip::Path& outline, std::size_t from, const Origin& origin,
                           Contour& contour) const {
    const Ring& ring = m_Rings[origin.ring];
    const std::size_t size = ring.vertices.size();
    std::size_t begin = (origin.vertex + size - 1) % size;
    for (std::size_t i = 1; i < size && !ring.vertices[begin].begins; ++i)
      begin = (begin + size - 1) % size;
    const std::size_t number = ring.vertices[begin].segment;
    if (!ring.segments[number].isCurve) return 0;
    const std::size_t lines = LinesFrom(ring, begin);
    if (lines >= outline.size() || !Matches(outline, from, origin, lines, false)) return 0;
    const Segment& segment = ring.segments[number];
    contour.segments.push_back(CurveTo(segment.second, segment.first, StartOf(ring, number)));
    return lines;
  }

  // A vertex within a curve is no place to begin.
  [[nodiscard]] std::size_t FirstOf(const clip::Path& outline) const {
    for (std::size_t i = 0; i < outline.size(); ++i) {
      const auto origins = OriginsOf(outline[i]);
      const bool corner = std::ranges::any_of(origins, [&](const Origin& origin) {
        return m_Rings[origin.ring].vertices[origin.vertex].begins;
      });
      if (corner || origins.empty()) return i;
    }
    return 0;
  }

  [[nodiscard]] Contour ContourOf(const clip::Path& outline) const {
    const std::size_t first = FirstOf(outline);
    Contour contour{.start = PointOf(outline[first]), .segments = {}, .closed = true};
    for (std::size_t i = 0; i < outline.size();) {
      const std::size_t at = (first + i) % outline.size();
      std::size_t lines = i + 1 < outline.size() ? AddCurve(outline, at, contour) : 0;
      if (lines == 0 || i + lines > outline.size()) {
        if (lines > 0) contour.segments.pop_back();
        lines = 1;
        if (i + 1 < outline.size())
          contour.segments.push_back(LineTo(PointOf(outline[(at + 1) % outline.size()])));
      }
      i += lines;
    }
    return contour;
  }

  const std::vector<Ring>& m_Rings;
  std::vector<Origin> m_Origins;
};

clip::Paths AreasOf(const std::vector<AreaContour>& contours, const std::vector<Ring>& rings) {
  clip::Paths areas;
  for (std::size_t i = 0; i < contours.size();) {
    const std::size_t path = contours[i].path;
    const Paint::Kind kind = contours[i].kind;
    std::vector<clip::Path> own;
    for (; i < contours.size() && contours[i].path == path; ++i) own.push_back(PathOf(rings[i]));
    for (clip::Path& area : AreaOfPath(own, kind)) areas.push_back(std::move(area));
  }
  return areas;
}

}  // namespace

std::optional<United> Unite(const std::vector<AreaContour>& contours, double tolerance) {
  std::vector<Ring> rings;
  rings.reserve(contours.size());
  for (const AreaContour& contour : contours) rings.push_back(RingOf(*contour.contour, tolerance));
  try {
    Outlines outlines(rings);
    for (const clip::Path& outline : UnionOf(AreasOf(contours, rings), clip::pftNonZero))
      outlines.Add(outline);
    return std::move(outlines.united);
  } catch (const clip::clipperException&) {
    return std::nullopt;
  }
}

double CommonArea(const Contour& first, const Contour& second, double tolerance) {
  try {
    clip::Clipper clipper;
    clipper.AddPath(PathOf(RingOf(first, tolerance)), clip::ptSubject, true);
    clipper.AddPath(PathOf(RingOf(second, tolerance)), clip::ptClip, true);
    clip::Paths common;
    clipper.Execute(clip::ctIntersection, common, clip::pftNonZero, clip::pftNonZero);
    double area = 0;
    for (const clip::Path& path : common) area += clip::Area(path);
    return area / (GridUnits * GridUnits);
  } catch (const clip::clipperException&) {
    return 0;
  }
}

}  // namespace rastrel::cutting::clean
