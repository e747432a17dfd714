#include "host/document/document_store.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/document/plate_item.h"

namespace rastrel::document {

namespace {

// The second number of a paragraph whose first is an object; that of a closed one is 0.
constexpr std::uint32_t TextOfDocument = 1;
static_assert(Document::MaximumHandles <= UINT32_MAX);

}  // namespace

// The element of a handle. It asks the document in each call, so that it is never out of date.
class DocumentStore::Element : public DBElement {
 public:
  Element(DocumentStore& store, ObjectHandle object) : m_Store(store), m_Object(object) {}

  [[nodiscard]] CGenericItem* GetPlaceholderItem() override {
    const auto known = m_Store.m_Items.find(m_Object);
    if (known != m_Store.m_Items.end()) return known->second.get();
    // A plate of a loaded document, or one that continues another, has had no item yet.
    const Object* object = m_Store.m_Document.Find(m_Object);
    if (!object || !std::holds_alternative<PlateShape>(object->shape)) return nullptr;
    m_Store.Adopt(m_Object, std::make_unique<PlateItem>(m_Store, m_Object));
    return m_Store.m_Items[m_Object].get();
  }

  [[nodiscard]] bool IsFilled() const override {
    const Object* object = m_Store.m_Document.Find(m_Object);
    return object && !object->attributes.layer.IsInvisible() && HasInside(object->shape);
  }

  [[nodiscard]] ParagraphEle* GetParagraph() override {
    const Object* object = m_Store.m_Document.Find(m_Object);
    if (!object || !std::holds_alternative<TextShape>(object->shape)) return nullptr;
    m_Paragraph = ParagraphOf(m_Object);
    return &m_Paragraph;
  }

 private:
  DocumentStore& m_Store;
  ObjectHandle m_Object;
  ParagraphEle m_Paragraph;
};

ParagraphEle ParagraphOf(ObjectHandle text) {
  return {static_cast<std::uint32_t>(text), TextOfDocument};
}

ObjectHandle TextNamedBy(const ParagraphEle& paragraph) {
  return paragraph.second == TextOfDocument ? paragraph.first : 0;
}

DocumentStore::DocumentStore(Document& document) : m_Document(document) {}
DocumentStore::~DocumentStore() = default;

void DocumentStore::Adopt(ObjectHandle object, std::unique_ptr<CGenericItem> item) {
  m_Items[object] = std::move(item);
}

void DocumentStore::Clear() {
  m_Document.Clear();
  m_Lists.clear();
  m_Elements.clear();
  m_Items.clear();
}

Attributes* DocumentStore::Edit(ObjectHandle object) {
  Object* found = m_Document.Edit(object);
  return found ? &found->attributes : nullptr;
}

// --- Undo ---

void DocumentStore::UNOpenStep(const wchar_t* name) { m_Document.OpenStep(name ? name : L""); }
void DocumentStore::UNCloseStep() { m_Document.CloseStep(); }
int DocumentStore::GetKeepHistory() { return m_Document.KeepsHistory() ? 1 : 0; }
void DocumentStore::WriteKeepHistory(int keep) { m_Document.KeepHistory(keep != 0); }

// --- Objects ---

ObjectHandle DocumentStore::DBCreateObject(int type) {
  const Attributes attributes = m_Document.NewAttributes();
  if (type == DBTYPE_GROUP) return m_Document.Create(GroupShape(), attributes);
  if (type == DBTYPE_POLYARC) return m_Document.Create(PathShape(), attributes);
  if (type == DBTYPE_PARAGRAPH) return m_Document.Create(TextShape(), attributes);
  return 0;
}

int DocumentStore::DBInsertObject(ObjectHandle object, ObjectHandle parent) {
  return m_Document.Insert(object, parent) ? 1 : 0;
}

void DocumentStore::DBDestroyObject(ObjectHandle object) {
  m_Document.Destroy(object);
  std::erase_if(m_Items, [&](const auto& item) { return !m_Document.Find(item.first); });
  std::erase_if(m_Elements, [&](const auto& element) { return !m_Document.Find(element.first); });
}

int DocumentStore::DBGetObjectType(ObjectHandle object) {
  const Object* found = m_Document.Find(object);
  return found ? TypeNumberOf(found->shape) : 0;
}

DBElement* DocumentStore::DBGetObjectElement(ObjectHandle object) {
  if (!m_Document.Find(object)) return nullptr;
  std::unique_ptr<Element>& element = m_Elements[object];
  if (!element) element = std::make_unique<Element>(*this, object);
  return element.get();
}

int DocumentStore::DSAddObject(ObjectHandle object) {
  if (!m_Document.Insert(object, host::DocumentRoot)) return 0;
  Edit(object)->traits |= DBTRAIT_IN_DOCUMENT;
  m_Document.Select(object);
  return 1;
}

int DocumentStore::DSAddSourceObject(ObjectHandle object, int /*kind*/, ObjectHandle /*source*/) {
  return DSAddObject(object);
}

// The first object of the document after `object` that is not among `those`; 0 if there is none.
ObjectHandle DocumentStore::NextAfter(ObjectHandle object, Handles those) const {
  std::ranges::sort(those);
  const Handles& objects = m_Document.Members(host::DocumentRoot);
  const auto place = std::ranges::find(objects, object);
  const auto next = std::find_if(place, objects.end(), [&](ObjectHandle other) {
    return !std::ranges::binary_search(those, other);
  });
  return next == objects.end() ? 0 : *next;
}

ObjectHandle DocumentStore::DSGroupObjects(host::ListHandle list, int /*kind*/,
                                           ObjectHandle first) {
  const Handles members = MembersOf(list);
  const Object* leader = m_Document.Find(first);
  // If the group could not be inserted, its members would be lost.
  const bool tooDeep = std::ranges::any_of(
      members, [&](ObjectHandle member) { return m_Document.GroupLevels(member) >= DeepestGroup; });
  if (members.empty() || !leader || tooDeep) return 0;
  Attributes attributes = leader->attributes;
  attributes.matrix = TM();
  const ObjectHandle group = m_Document.Create(GroupShape(), attributes);
  if (group == 0) return 0;
  const ObjectHandle next = NextAfter(first, members);
  for (const ObjectHandle member : members) {
    m_Document.Remove(member);
    m_Document.Insert(member, group);
  }
  const Handles& objects = m_Document.Members(host::DocumentRoot);
  const auto place = std::ranges::find(objects, next);
  m_Document.Insert(group, host::DocumentRoot, static_cast<std::size_t>(place - objects.begin()));
  return group;
}

// --- Selection ---

void DocumentStore::DBDeselectAll() { m_Document.DeselectAll(); }
void DocumentStore::DBSelect(ObjectHandle object) { m_Document.Select(object); }

void DocumentStore::DBSetSelectedList(host::ListHandle list) {
  m_Document.DeselectAll();
  for (const ObjectHandle member : MembersOf(list)) m_Document.Select(member);
}

int DocumentStore::DBGetSelectedListBounds(host::ListHandle list, BOUNDS& bounds) {
  const Handles members = MembersOf(list);
  if (members.empty()) return 0;
  bounds = m_Document.Bounds(members);
  return 1;
}

// --- Attributes ---

// Says once for each placed file why the color or line that is set does not show.
void DocumentStore::ReportKeptLook(ObjectHandle object) {
  const Object* found = m_Notices ? m_Document.Find(object) : nullptr;
  if (found && std::holds_alternative<BitmapShape>(found->shape)) {
    m_Notices->Add(L"a bitmap keeps its own colours");
  }
  const auto* graphic = found ? std::get_if<GraphicShape>(&found->shape) : nullptr;
  if (!graphic) return;
  m_Notices->Add(L"the placed file \"" + graphic->name + L"\" keeps its own colours and lines: " +
                 (graphic->reason.empty() ? L"it is a picture" : graphic->reason));
}

void DocumentStore::DBSetLayer(ObjectHandle object, const CVKColor& color) {
  ReportKeptLook(object);
  if (Attributes* attributes = Edit(object)) attributes->layer = color;
  for (const ObjectHandle member : m_Document.Members(object)) DBSetLayer(member, color);
}

int DocumentStore::DBGetLayer(ObjectHandle object, CVKColor& color) {
  const Object* found = m_Document.Find(object);
  if (found) color = found->attributes.layer;
  return found ? 1 : 0;
}

void DocumentStore::DBSetLineColor(ObjectHandle object, const CVKColor& color) {
  ReportKeptLook(object);
  if (Attributes* attributes = Edit(object)) attributes->lineColor = color;
  for (const ObjectHandle member : m_Document.Members(object)) DBSetLineColor(member, color);
}

int DocumentStore::DBGetLineColor(ObjectHandle object, CVKColor& color) {
  const Object* found = m_Document.Find(object);
  if (found) color = found->attributes.lineColor;
  return found ? 1 : 0;
}

int DocumentStore::DBGetLineStyle(ObjectHandle object, LINESTYLE& style) {
  const Object* found = m_Document.Find(object);
  if (found) style = found->attributes.lineStyle;
  return found ? 1 : 0;
}

void DocumentStore::DBSetLineStyle(ObjectHandle object, const LINESTYLE& style) {
  ReportKeptLook(object);
  if (Attributes* attributes = Edit(object)) attributes->lineStyle = style;
  for (const ObjectHandle member : m_Document.Members(object)) DBSetLineStyle(member, style);
}

int DocumentStore::DBGetSheetLayer(ObjectHandle object) {
  const Object* found = m_Document.Find(object);
  return found ? found->attributes.sheetLayer : 0;
}

void DocumentStore::DBSetSheetLayer(ObjectHandle object, int sheetLayer) {
  if (!m_Document.Find(object)) return;
  m_Document.SetSheetLayer(object, sheetLayer);
  for (const ObjectHandle member : m_Document.Members(object)) DBSetSheetLayer(member, sheetLayer);
}

VK_PAGE_RANGE DocumentStore::DBGetPageRange(ObjectHandle object) {
  const Object* found = m_Document.Find(object);
  return found ? found->attributes.pages : VK_PAGE_RANGE();
}

void DocumentStore::DBSetPageRange(ObjectHandle object, const VK_PAGE_RANGE& pages) {
  if (!m_Document.Find(object)) return;
  m_Document.SetPages(object, pages);
  for (const ObjectHandle member : m_Document.Members(object)) DBSetPageRange(member, pages);
}

void DocumentStore::DBSetTrait(ObjectHandle object, int trait, int value) {
  if (!m_Document.Find(object)) return;
  if ((trait & DBTRAIT_SELECTED) != 0 && value != 0) m_Document.Select(object);
  if ((trait & DBTRAIT_SELECTED) != 0 && value == 0) m_Document.Deselect(object);
  const int others = trait & ~DBTRAIT_SELECTED;
  if (others == 0) return;
  int& traits = Edit(object)->traits;
  traits = value != 0 ? traits | others : traits & ~others;
}

void DocumentStore::DBSetTraits(ObjectHandle object, int traits) {
  DBSetTrait(object, ~traits, 0);
  DBSetTrait(object, traits, 1);
}

void DocumentStore::DBSetPropertyLocks(ObjectHandle object, const CPropertyLocks& locks) {
  if (Attributes* attributes = Edit(object)) attributes->locks = locks;
}

void DocumentStore::DBInvalidateBounds(ObjectHandle /*object*/) {}
void DocumentStore::DBValidateBounds(ObjectHandle /*object*/) {}
void DocumentStore::InvalidateObject(ObjectHandle /*object*/, int /*erase*/) {}

void DocumentStore::DBApplyTM(ObjectHandle object, const TM& matrix) {
  const Object* found = m_Document.Find(object);
  if (!found) return;
  for (const ObjectHandle member : m_Document.Members(object)) DBApplyTM(member, matrix);
  const TM& was = found->attributes.matrix;
  const TM moved = {matrix.a * was.a + matrix.c * was.b,
                    matrix.b * was.a + matrix.d * was.b,
                    matrix.a * was.c + matrix.c * was.d,
                    matrix.b * was.c + matrix.d * was.d,
                    matrix.a * was.tx + matrix.c * was.ty + matrix.tx,
                    matrix.b * was.tx + matrix.d * was.ty + matrix.ty};
  // With infinite numbers an object could be neither drawn nor saved: it stays where it is.
  for (const double part : {moved.a, moved.b, moved.c, moved.d, moved.tx, moved.ty}) {
    if (!std::isfinite(part)) return;
  }
  Edit(object)->matrix = moved;
}

}  // namespace rastrel::document
