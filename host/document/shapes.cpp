#include "host/document/shapes.h"

#include <algorithm>
#include <limits>

namespace rastrel::document {

namespace {

// Kinds that the library never names have numbers of the host's own.
constexpr int PlateType = 1001;
constexpr int GraphicType = 1002;
constexpr int DrillType = 1003;
constexpr int ArcTextType = 1004;

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
  [[nodiscard]] BOUNDS Get() const { return m_Bounds.xmin > m_Bounds.xmax ? BOUNDS{} : m_Bounds; }

 private:
  static constexpr double Far = std::numeric_limits<double>::infinity();
  BOUNDS m_Bounds{Far, -Far, Far, -Far};
};

struct BoundsVisitor {
  Box& box;

  void operator()(const GroupShape&) const {}
  void operator()(const PathShape& path) const {
    for (const SubPath& part : path.subPaths) {
      box.Add(part.start);
      for (const PathSegment& segment : part.segments) {
        // Control points bound their curve: a little too large, and never too small.
        for (std::size_t i = segment.curve ? 0 : 2; i < 3; ++i) box.Add(segment.points[i]);
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
    box.Add(0, 0);
    box.Add(graphic.width, graphic.height);
  }
  void operator()(const DrillShape& drill) const {
    const double radius = drill.diameter / 2;
    box.Add(drill.centre.x - radius, drill.centre.y - radius);
    box.Add(drill.centre.x + radius, drill.centre.y + radius);
  }
};

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
         height == other.height &&
         (bytes == other.bytes || (bytes && other.bytes && *bytes == *other.bytes));
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
  };
  return std::visit(Numbers(), shape);
}

BOUNDS BoundsOf(const Shape& shape, const TM& matrix) {
  Box box;
  std::visit(BoundsVisitor{box}, shape);
  return DBTranslateBounds(box.Get(), matrix);
}

}  // namespace rastrel::document
