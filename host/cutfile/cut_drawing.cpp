#include "host/cutfile/cut_drawing.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <variant>

#include "rastrel/platform/values/document_values.h"

namespace rastrel::cutfile {
namespace {

using document::Object;
using document::PathShape;

constexpr double MaximumPieces = 10'000;  // of one curve

CWorldPoint Mapped(const TM& m, const CWorldPoint& point) {
  return {m.a * point.x + m.c * point.y + m.tx, m.b * point.x + m.d * point.y + m.ty};
}

bool IsInReach(const CWorldPoint& point) {
  return std::abs(point.x) <= FarthestPoint && std::abs(point.y) <= FarthestPoint;
}

double DistanceFromMiddle(const CWorldPoint& a, const CWorldPoint& b, const CWorldPoint& c) {
  return std::hypot(a.x - 2 * b.x + c.x, a.y - 2 * b.y + c.y);
}

// A chord of n equal pieces lies at most 3/4 d/n² from the curve, with d the larger second
// difference of its control points.
int PiecesOf(const CWorldPoint& from, const CWorldPoint& first, const CWorldPoint& second,
             const CWorldPoint& end) {
  const double bend =
      std::max(DistanceFromMiddle(from, first, second), DistanceFromMiddle(first, second, end));
  const double pieces = std::ceil(std::sqrt(0.75 * bend / CurveTolerance));
  return static_cast<int>(std::clamp(pieces, 1.0, MaximumPieces));
}

CWorldPoint PointOnCurve(const CWorldPoint& from, const CWorldPoint& first,
                         const CWorldPoint& second, const CWorldPoint& end, double t) {
  const double u = 1 - t;
  const double weights[] = {u * u * u, 3 * u * u * t, 3 * u * t * t, t * t * t};
  return {weights[0] * from.x + weights[1] * first.x + weights[2] * second.x + weights[3] * end.x,
          weights[0] * from.y + weights[1] * first.y + weights[2] * second.y + weights[3] * end.y};
}

class DrawingMaker {
 public:
  DrawingMaker(const document::Document& document, CutDrawing& drawing)
      : m_Document(document), m_Drawing(drawing) {}

  Expected<void> Add(host::ObjectHandle handle);

 private:
  Expected<void> AddPath(const PathShape& path, const document::Attributes& attributes);
  Expected<CutRun> RunOf(const document::SubPath& part, const TM& matrix) const;

  const document::Document& m_Document;
  CutDrawing& m_Drawing;
};

Expected<void> DrawingMaker::Add(host::ObjectHandle handle) {
  const Object& object = *m_Document.Find(handle);
  if ((object.attributes.traits & DBTRAIT_VISIBLE) == 0) return {};
  if (const auto* path = std::get_if<PathShape>(&object.shape))
    return AddPath(*path, object.attributes);
  if (!std::holds_alternative<document::GroupShape>(object.shape)) return {};
  for (const host::ObjectHandle member : m_Document.Members(handle)) {
    if (auto added = Add(member); !added) return added;
  }
  return {};
}

CutKind KindOf(const PathShape& path) {
  switch (path.cutLine) {
    case document::CutLine::Cut: return CutKind::Cut;
    case document::CutLine::Through: return CutKind::CutThrough;
    case document::CutLine::None: break;
  }
  return CutKind::Line;
}

Expected<CutRun> DrawingMaker::RunOf(const document::SubPath& part, const TM& matrix) const {
  CutRun run;
  run.closed = part.closed;
  const auto add = [&run](const CWorldPoint& point) {
    if (run.points.empty() || run.points.back() != point) run.points.push_back(point);
    return IsInReach(point);
  };
  const auto outOfReach = [] {
    return FailureOf("a line leads to a point too far away for a file");
  };
  CWorldPoint from = Mapped(matrix, part.start);
  if (!add(from)) return outOfReach();
  for (const document::PathSegment& segment : part.segments) {
    const CWorldPoint end = Mapped(matrix, segment.points[2]);
    if (segment.curve) {
      const CWorldPoint first = Mapped(matrix, segment.points[0]);
      const CWorldPoint second = Mapped(matrix, segment.points[1]);
      if (!IsInReach(first) || !IsInReach(second) || !IsInReach(end)) return outOfReach();
      const int pieces = PiecesOf(from, first, second, end);
      for (int piece = 1; piece < pieces; ++piece)
        add(PointOnCurve(from, first, second, end, static_cast<double>(piece) / pieces));
    }
    if (!add(end)) return outOfReach();
    from = end;
  }
  if (run.closed && run.points.size() > 1 && run.points.front() == run.points.back())
    run.points.pop_back();
  return run;
}

Expected<void> DrawingMaker::AddPath(const PathShape& path,
                                     const document::Attributes& attributes) {
  CutObject object;
  object.kind = KindOf(path);
  object.color = attributes.layer.IsInvisible() ? attributes.lineColor : attributes.layer;
  for (const document::SubPath& part : path.subPaths) {
    auto run = RunOf(part, attributes.matrix);
    if (!run) return run.Error();
    if (run->points.size() > 1) object.runs.push_back(*std::move(run));
  }
  if (!object.runs.empty()) m_Drawing.objects.push_back(std::move(object));
  return {};
}

}  // namespace

Expected<CutDrawing> CutDrawingOf(const document::Document& document, int page) {
  CutDrawing drawing;
  drawing.width = document.Blank().width;
  drawing.height = document.Blank().height;
  DrawingMaker maker(document, drawing);
  for (const host::ObjectHandle handle : document.Members(host::DocumentRoot)) {
    const VK_PAGE_RANGE pages = document.Find(handle)->attributes.pages;
    if (page < pages.first || page > pages.last) continue;
    if (const auto added = maker.Add(handle); !added) return added.Error();
  }
  return drawing;
}

}  // namespace rastrel::cutfile
