#include "host/document/plate_item.h"

#include <utility>

#include "host/document/document_store.h"
#include "host/document/plate_layout.h"

namespace rastrel::document {

// A pane's edges as they were when the walk came by; the next layout ends it.
class PlateItem::Pane : public CPane {
 public:
  Pane(const CWorldRect& edges, ObjectHandle plate) : m_Edges(edges), m_Plate(plate) {}
  Pane(const Pane& other) : Pane(other.m_Edges, other.m_Plate) {}
  Pane& operator=(const Pane&) = delete;
  ~Pane() override = default;
  [[nodiscard]] double GetLeft() const override { return m_Edges.left; }
  [[nodiscard]] double GetTop() const override { return m_Edges.top; }
  [[nodiscard]] double GetRight() const override { return m_Edges.right; }
  [[nodiscard]] double GetBottom() const override { return m_Edges.bottom; }
  [[nodiscard]] ObjectHandle GetPlateObject() const override { return m_Plate; }

 private:
  CWorldRect m_Edges;
  ObjectHandle m_Plate;  // 0 while the plate is not in the document
};

PlateItem::PlateItem(DocumentStore& store, PlateShape shape)
    : m_Store(store), m_Shape(std::move(shape)) {}

PlateItem::PlateItem(DocumentStore& store, ObjectHandle object)
    : m_Store(store), m_Object(object) {}

PlateItem::~PlateItem() = default;

const PlateShape& PlateItem::Shape() const {
  const Object* object = m_Object != 0 ? m_Store.GetDocument().Find(m_Object) : nullptr;
  return object ? std::get<PlateShape>(object->shape) : m_Shape;
}

PlateShape& PlateItem::ShapeToChange() {
  Object* object = m_Object != 0 ? m_Store.GetDocument().Edit(m_Object) : nullptr;
  return object ? std::get<PlateShape>(object->shape) : m_Shape;
}

int PlateItem::Add(int visible, int selectable, int /*reserved*/, ObjectHandle& object) {
  if (m_Object != 0) return 0;
  Attributes attributes = m_Store.GetDocument().NewAttributes();
  attributes.traits =
      (visible != 0 ? DBTRAIT_VISIBLE : 0) | (selectable != 0 ? DBTRAIT_SELECTABLE : 0);
  const ObjectHandle created = m_Store.GetDocument().Create(m_Shape, attributes);
  if (created == 0) return 0;
  m_Object = created;
  m_Shape = {};
  m_Store.Adopt(m_Object, std::unique_ptr<CGenericItem>(this));
  object = m_Object;
  return 1;
}

int PlateItem::CreatePanesWithOriginTopLeft(const CWorldPoint& start, double width, double height) {
  return CreatePanes(start, width, height, false);
}

int PlateItem::CreatePanesWithOriginBottomLeft(const CWorldPoint& start, double width,
                                               double height) {
  return CreatePanes(start, width, height, true);
}

int PlateItem::CreatePanes(const CWorldPoint& start, double width, double height, bool fromBottom) {
  PlateShape& shape = ShapeToChange();
  shape.start = start;
  shape.fromBottom = fromBottom;
  EndWalk();
  return static_cast<int>(LayPanes(shape, SignBlank{width, height, 7},
                                   static_cast<std::size_t>(std::max(shape.wanted, 0))));
}

void PlateItem::ResetData(int count, double width, double height, const CWorldRect& margins,
                          double horizontalGap, double verticalGap,
                          const std::vector<ObjectHandle>& /*objects*/, int /*flag*/) {
  EndWalk();
  const PlateShape& now = Shape();
  const bool sameMeasures = now.width == width && now.height == height && now.margins == margins &&
                            now.horizontalGap == horizontalGap && now.verticalGap == verticalGap;
  if (!sameMeasures) {
    PlateShape& shape = ShapeToChange();
    shape.width = width;
    shape.height = height;
    shape.margins = margins;
    shape.horizontalGap = horizontalGap;
    shape.verticalGap = verticalGap;
    shape.panes.clear();
  }
  if (m_Object == 0) {
    m_Shape.wanted = count;
    return;
  }
  GrowPlate(m_Store.GetDocument(), m_Object, static_cast<std::size_t>(std::max(count, 0)));
}

CWorldRect PlateItem::GetLastPaneBounds() const {
  const PlateShape& shape = Shape();
  return shape.panes.empty() ? CWorldRect{} : shape.panes.back();
}

void PlateItem::EndWalk() {
  m_Parts.clear();
  m_Walk = 0;
  m_NextPart = 0;
}

// The panes of a part are made when the walk comes to it: an import asks for the first pane of the
// part on each page, and goes no further than its end.
void PlateItem::AppendPart(const PlateShape& part, ObjectHandle plate) {
  m_Parts.emplace_back();
  m_Parts.back().reserve(part.panes.size());
  for (const CWorldRect& edges : part.panes) m_Parts.back().emplace_back(edges, plate);
  m_Walk = 0;
  m_NextPart = part.continuation;
}

CPane* PlateItem::GetFirstPane() {
  EndWalk();
  AppendPart(Shape(), m_Object);
  return GetNextPane();
}

CPane* PlateItem::GetNextPane() {
  if (m_Parts.empty()) return nullptr;
  const Document& document = m_Store.GetDocument();
  while (m_Walk == m_Parts.back().size() && document.Holds(m_NextPart)) {
    const ObjectHandle part = m_NextPart;
    AppendPart(std::get<PlateShape>(document.Find(part)->shape), part);
  }
  return m_Walk < m_Parts.back().size() ? &m_Parts.back()[m_Walk++] : nullptr;
}

}  // namespace rastrel::document
