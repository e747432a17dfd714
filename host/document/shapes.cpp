#include "host/document/shapes.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace rastrel::document {

namespace {

// Kinds that the library never names have numbers of the host's own.
constexpr int PlateType = 1001;
constexpr int GraphicType = 1002;
constexpr int DrillType = 1003;
constexpr int ArcTextType = 1004;
constexpr int BitmapType = 1005;
constexpr int SeparationType = 1006;

// Grows to hold points.
class Box {
 public:
  void Add(double x, double y) {
    m_Bounds.xmin = std::min(m_Bounds.xmin, x);
    m_Bounds.xmax = std::max(m_Bounds.xmax, x);
    m_Bounds.ymin = std::min(m_Bounds.ymin, y);
    m_Bounds.ymax = std::max(m_Bounds.ymax, y);
  }
  void Add(const CWorldPoint& point) { Add(point.x, point.y); }
  void Add(const CWorldRect& rect) {
    Add(rect.left, rect.bottom);
    Add(rect.right, rect.top);
  }
  // The points where a cubic Bézier curve turns back in x or y. Its ends are added apart.
  void AddCurve(const CWorldPoint& a, const CWorldPoint& b, const CWorldPoint& c,
                const CWorldPoint& d) {
    const auto at = [](double p, double q, double r, double s, double t) {
      const double u = 1 - t;
      return u * u * u * p + 3 * u * u * t * q + 3 * u * t * t * r + t * t * t * s;
    };
    const auto add = [&](double t) {
      if (t > 0 && t < 1) Add(at(a.x, b.x, c.x, d.x, t), at(a.y, b.y, c.y, d.y, t));
    };
    const auto addTurns = [&](double p, double q, double r, double s) {
      // A third of the derivative: (p, q, r, s the control values) k t^2 + 2 l t + m.
      const double k = s - 3 * r + 3 * q - p;
      const double l = r - 2 * q + p;
      const double m = q - p;
      const double root = std::sqrt(l * l - k * m);
      if (std::isnan(root)) return;
      // The sum that does not cancel; the other turn follows from the product of both.
      const double sum = -(l + std::copysign(root, l));
      if (k != 0) add(sum / k);
      if (sum != 0) add(m / sum);
    };
    addTurns(a.x, b.x, c.x, d.x);
    addTurns(a.y, b.y, c.y, d.y);
  }
  [[nodiscard]] BOUNDS Get() const { return m_Bounds.xmin > m_Bounds.xmax ? BOUNDS{} : m_Bounds; }

 private:
  static constexpr double Far = std::numeric_limits<double>::infinity();
  BOUNDS m_Bounds{Far, -Far, Far, -Far};
};

CWorldPoint Mapped(const CWorldPoint& point, const TM& m) {
  return {m.a * point.x + m.c * point.y + m.tx, m.b * point.x + m.d * point.y + m.ty};
}

struct BoundsVisitor {
  Box& box;
  const TM& matrix;  // of a path alone: other shapes are mapped as boxes

  void operator()(const GroupShape&) const {}
  void operator()(const PathShape& path) const {
    for (const SubPath& part : path.subPaths) {
      CWorldPoint at = Mapped(part.start, matrix);
      box.Add(at);
      for (const PathSegment& segment : part.segments) {
        const CWorldPoint end = Mapped(segment.points[2], matrix);
        if (segment.curve) {
          box.AddCurve(at, Mapped(segment.points[0], matrix), Mapped(segment.points[1], matrix),
                       end);
        }
        box.Add(end);
        at = end;
      }
    }
  }
  void operator()(const TextShape& text) const { box.Add(text.frame); }
  void operator()(const ArcTextShape& text) const {
    // The circle, and letters as high as their size outside of it.
    const double reach =
        text.radius + text.run.size / host::TextUnitsPerInch * host::CentimetresPerInch;
    box.Add(text.center.x - reach, text.center.y - reach);
    box.Add(text.center.x + reach, text.center.y + reach);
  }
  void operator()(const PlateShape& plate) const {
    for (const CWorldRect& pane : plate.panes) box.Add(pane);
  }
  void operator()(const GraphicShape& graphic) const {
    box.Add(graphic.extent.value_or(CWorldRect{0, graphic.height, graphic.width, 0}));
  }
  void operator()(const DrillShape& drill) const {
    const double radius = drill.diameter / 2;
    box.Add(drill.centre.x - radius, drill.centre.y - radius);
    box.Add(drill.centre.x + radius, drill.centre.y + radius);
  }
  void operator()(const SeparationShape& plane) const {
    box.Add(CWorldRect{0, plane.Height(), plane.Width(), 0});
  }
  void operator()(const BitmapShape& bitmap) const {
    box.Add(0, 0);
    box.Add(bitmap.width, bitmap.height);
  }
};

bool SameFile(const std::shared_ptr<const std::string>& one,
              const std::shared_ptr<const std::string>& other) {
  return one == other || (one && other && *one == *other);
}

}  // namespace

bool TextShape::operator==(const TextShape& other) const {
  const paragraphStruct& a = paragraph;
  const paragraphStruct& b = other.paragraph;
  return frame == other.frame && lineMode == other.lineMode && justifyMode == other.justifyMode &&
         lines == other.lines && a.lineFit == b.lineFit && a.fit == b.fit &&
         a.frameMode == b.frameMode && a.flags == b.flags && a.leftMargin == b.leftMargin &&
         a.topMargin == b.topMargin && a.rightMargin == b.rightMargin &&
         a.bottomMargin == b.bottomMargin && a.leftPercent == b.leftPercent &&
         a.rightPercent == b.rightPercent;
}

bool GraphicShape::operator==(const GraphicShape& other) const {
  return kind == other.kind && name == other.name && width == other.width &&
         height == other.height && extent == other.extent && reason == other.reason &&
         whole == other.whole && cut == other.cut && halfCut == other.halfCut &&
         SameFile(bytes, other.bytes) && SameFile(preview, other.preview);
}

ShownFile ShownFileOf(const GraphicShape& graphic) {
  if (graphic.preview) return {GraphicKind::Png, graphic.preview};
  return {graphic.kind, graphic.bytes};
}

bool IsPostScript(GraphicKind kind) {
  return kind == GraphicKind::Eps || kind == GraphicKind::PostScript;
}

double SeparationShape::Width() const {
  return pixelWidth / xResolution * host::CentimetresPerInch;
}

double SeparationShape::Height() const {
  return pixelHeight / yResolution * host::CentimetresPerInch;
}

bool SeparationShape::operator==(const SeparationShape& other) const {
  if (!(ink == other.ink && page == other.page && pixelWidth == other.pixelWidth &&
        pixelHeight == other.pixelHeight && xResolution == other.xResolution &&
        yResolution == other.yResolution)) {
    return false;
  }
  if (pixels == other.pixels) return true;
  if (!pixels || !other.pixels) return false;
  const auto own = pixels->Read();
  const auto others = other.pixels->Read();
  return own && others && *own == *others;
}

bool BitmapShape::operator==(const BitmapShape& other) const {
  return width == other.width && height == other.height &&
         (pixels == other.pixels || (pixels && other.pixels && *pixels == *other.pixels));
}

int TypeNumberOf(const Shape& shape) {
  struct Numbers {
    int operator()(const GroupShape&) const { return DBTYPE_GROUP; }
    int operator()(const PathShape&) const { return DBTYPE_POLYARC; }
    int operator()(const TextShape&) const { return DBTYPE_PARAGRAPH; }
    int operator()(const ArcTextShape&) const { return ArcTextType; }
    int operator()(const PlateShape&) const { return PlateType; }
    int operator()(const GraphicShape&) const { return GraphicType; }
    int operator()(const DrillShape&) const { return DrillType; }
    int operator()(const SeparationShape&) const { return SeparationType; }
    int operator()(const BitmapShape&) const { return BitmapType; }
  };
  return std::visit(Numbers(), shape);
}

BOUNDS BoundsOf(const Shape& shape, const TM& matrix) {
  Box box;
  std::visit(BoundsVisitor{box, matrix}, shape);
  return std::holds_alternative<PathShape>(shape) ? box.Get()
                                                  : DBTranslateBounds(box.Get(), matrix);
}

bool HasInside(const PathShape& path) {
  return path.cutLine == CutLine::None &&
         (path.fillsOpen || std::ranges::any_of(path.subPaths, &SubPath::closed));
}

bool HasInside(const Shape& shape) {
  if (const auto* path = std::get_if<PathShape>(&shape)) return HasInside(*path);
  return !std::holds_alternative<GraphicShape>(shape) &&
         !std::holds_alternative<SeparationShape>(shape) &&
         !std::holds_alternative<BitmapShape>(shape);
}

}  // namespace rastrel::document
