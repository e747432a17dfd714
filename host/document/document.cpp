#include "host/document/document.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <utility>

namespace rastrel::document {

namespace {

using Handles = std::vector<ObjectHandle>;

// The vector of a pointer, unshared: others that share it keep the old one.
Handles& Alone(std::shared_ptr<Handles>& handles) {
  if (handles.use_count() > 1) handles = std::make_shared<Handles>(*handles);
  return *handles;
}

bool IsPlate(const Object& object) { return std::holds_alternative<PlateShape>(object.shape); }

}  // namespace

Document::Document()
    : m_Members(std::make_shared<Handles>()), m_PlateObjects(std::make_shared<Handles>()) {}

Document::~Document() = default;

bool Document::AddSheetLayer(const CSheetLayer& layer) {
  if (layer.number <= 0 || !m_SheetLayers.emplace(layer.number, layer).second) return false;
  m_HighestLayer = std::max(m_HighestLayer, layer.number);
  return true;
}

int Document::NextEmptyLayer() const {
  return m_HighestLayer < std::numeric_limits<int>::max() ? m_HighestLayer + 1 : m_HighestLayer;
}

int Document::HighestPage() const { return m_LastPages.empty() ? 0 : m_LastPages.rbegin()->first; }

Attributes Document::NewAttributes() const {
  Attributes attributes;
  const int page = std::max(m_DisplayPage, 1);
  attributes.pages = {page, page};
  if (m_SheetLayers.contains(m_CurrentSheetLayer)) attributes.sheetLayer = m_CurrentSheetLayer;
  return attributes;
}

void Document::Clear() {
  for (std::unique_ptr<Object>& object : m_Objects) object.reset();
  // Lists that share the old members keep them, and find none of them any more.
  m_Members = std::make_shared<Handles>();
  m_PlateObjects = std::make_shared<Handles>();
  m_LastPages.clear();
  m_Selection.clear();
  m_ObjectCount = 0;
  m_SheetLayers.clear();
  m_HighestLayer = 0;
  m_PlateParameters = {};
  m_DisplayPage = 1;
  m_CurrentSheetLayer = 0;
  Forget();
}

// --- Objects ---

ObjectHandle Document::Create(Shape shape, const Attributes& attributes) {
  const ObjectHandle handle = NextHandle();
  if (handle > MaximumHandles) return 0;
  auto object = std::make_unique<Object>(Object{std::move(shape), attributes, 0});
  object->attributes.traits &= ~DBTRAIT_SELECTED;
  m_Objects.push_back(std::move(object));
  m_HighestLayer = std::max(m_HighestLayer, attributes.sheetLayer);
  return handle;
}

bool Document::CreateAs(ObjectHandle handle, Object object) {
  if (handle < FirstHandle || handle > MaximumHandles) return false;
  if (handle >= NextHandle()) m_Objects.resize(handle - FirstHandle + 1);
  std::unique_ptr<Object>& place = m_Objects[handle - FirstHandle];
  if (place) return false;
  object.parent = 0;
  object.attributes.traits &= ~DBTRAIT_SELECTED;
  m_HighestLayer = std::max(m_HighestLayer, object.attributes.sheetLayer);
  place = std::make_unique<Object>(std::move(object));
  return true;
}

const Object* Document::Find(ObjectHandle handle) const {
  return handle >= FirstHandle && handle < NextHandle() ? m_Objects[handle - FirstHandle].get()
                                                        : nullptr;
}

Object* Document::Edit(ObjectHandle handle) {
  if (!Find(handle)) return nullptr;
  Object& object = *m_Objects[handle - FirstHandle];
  // An object that was made within the step goes with its insertion.
  if (Records() && object.parent != 0) Keep({Change::Kind::Edit, handle, object});
  return &object;
}

bool Document::SetPages(ObjectHandle handle, const VK_PAGE_RANGE& pages) {
  const Object* found = Find(handle);
  if (!found || pages.first < 1 || pages.last < pages.first || pages.last > LastPage) return false;
  if (found->attributes.pages == pages) return true;
  Object& object = *Edit(handle);
  CountPage(object, -1);
  object.attributes.pages = pages;
  CountPage(object, 1);
  return true;
}

bool Document::SetSheetLayer(ObjectHandle handle, int sheetLayer) {
  Object* object = sheetLayer >= 0 ? Edit(handle) : nullptr;
  if (!object) return false;
  object->attributes.sheetLayer = sheetLayer;
  m_HighestLayer = std::max(m_HighestLayer, sheetLayer);
  return true;
}

const Handles& Document::Members(ObjectHandle root) const {
  static const Handles none;
  if (root == host::DocumentRoot) return *m_Members;
  const Object* object = Find(root);
  const auto* group = object ? std::get_if<GroupShape>(&object->shape) : nullptr;
  return group ? group->members : none;
}

Handles* Document::MembersToChange(ObjectHandle root) {
  if (root == host::DocumentRoot) return &Alone(m_Members);
  if (!Find(root)) return nullptr;
  auto* group = std::get_if<GroupShape>(&m_Objects[root - FirstHandle]->shape);
  return group ? &group->members : nullptr;
}

bool Document::Insert(ObjectHandle handle, ObjectHandle parent, std::size_t position) {
  const Object* object = Find(handle);
  if (!object || object->parent != 0 || !MembersToChange(parent)) return false;
  // A group within itself would have no end.
  int levels = GroupLevels(handle);
  for (ObjectHandle above = parent; above != 0 && above != host::DocumentRoot; ++levels) {
    if (above == handle) return false;
    above = Find(above)->parent;
  }
  if (levels > DeepestGroup) return false;
  Link(handle, parent, std::min(position, Members(parent).size()));
  KeepOrForget({Change::Kind::Insert, handle, {}, parent});
  return true;
}

bool Document::Remove(ObjectHandle handle) {
  const Object* object = Find(handle);
  if (!object || object->parent == 0) return false;
  const ObjectHandle parent = object->parent;
  const std::size_t position = Unlink(handle);
  KeepOrForget({Change::Kind::Remove, handle, {}, parent, position});
  return true;
}

void Document::Destroy(ObjectHandle handle) {
  const Object* object = Find(handle);
  if (!object) return;
  if (object->parent != 0) Unlink(handle);
  Handles ended{handle};
  for (std::size_t i = 0; i < ended.size(); ++i) {
    const Handles& members = Members(ended[i]);
    ended.insert(ended.end(), members.begin(), members.end());
  }
  for (const ObjectHandle one : ended) {
    std::unique_ptr<Object>& place = m_Objects[one - FirstHandle];
    if (place->parent != 0) --m_ObjectCount;
    CountPage(*place, -1);
    place.reset();
  }
  std::erase_if(m_Selection, [&](ObjectHandle selected) { return !Find(selected); });
  // A destroyed object can't come back, and the history may hold it.
  Forget();
}

void Document::Link(ObjectHandle handle, ObjectHandle parent, std::size_t position) {
  Object& object = *m_Objects[handle - FirstHandle];
  Handles& members = *MembersToChange(parent);
  members.insert(members.begin() + static_cast<std::ptrdiff_t>(position), handle);
  object.parent = parent;
  ++m_ObjectCount;
  CountPage(object, 1);
  if (parent != host::DocumentRoot || !IsPlate(object)) return;
  Handles& plates = Alone(m_PlateObjects);
  if (position + 1 == members.size()) {
    plates.push_back(handle);
    return;
  }
  plates.clear();
  std::ranges::copy_if(members, std::back_inserter(plates),
                       [&](ObjectHandle member) { return IsPlate(*Find(member)); });
}

std::size_t Document::Unlink(ObjectHandle handle) {
  Object& object = *m_Objects[handle - FirstHandle];
  Handles& members = *MembersToChange(object.parent);
  // From the end: most objects that are taken out were put in last.
  const auto behind = std::find(members.rbegin(), members.rend(), handle).base();
  const auto position = static_cast<std::size_t>(behind - members.begin() - 1);
  members.erase(std::prev(behind));
  CountPage(object, -1);
  --m_ObjectCount;
  if (object.parent == host::DocumentRoot && IsPlate(object)) {
    std::erase(Alone(m_PlateObjects), handle);
  }
  object.parent = 0;
  Deselect(handle);
  return position;
}

void Document::CountPage(const Object& object, int howMany) {
  if (object.parent == 0) return;
  std::size_t& count = m_LastPages[object.attributes.pages.last];
  count += static_cast<std::size_t>(howMany);
  if (count == 0) m_LastPages.erase(object.attributes.pages.last);
}

bool Document::Holds(ObjectHandle handle) const {
  const Object* object = Find(handle);
  while (object && object->parent != host::DocumentRoot) object = Find(object->parent);
  return object != nullptr;
}

int Document::GroupLevels(ObjectHandle handle) const {
  const Object* object = Find(handle);
  if (!object || !std::holds_alternative<GroupShape>(object->shape)) return 0;
  int within = 0;
  for (const ObjectHandle member : Members(handle)) {
    within = std::max(within, GroupLevels(member));
  }
  return within + 1;
}

BOUNDS Document::Bounds(ObjectHandle handle) const {
  const Object* object = Find(handle);
  if (!object) return {};
  const Handles& members = Members(handle);
  return members.empty() ? BoundsOf(object->shape, object->attributes.matrix) : Bounds(members);
}

BOUNDS Document::Bounds(std::span<const ObjectHandle> handles) const {
  if (handles.empty()) return {};
  BOUNDS all = Bounds(handles.front());
  for (const ObjectHandle handle : handles.subspan(1)) {
    const BOUNDS one = Bounds(handle);
    all = {std::min(all.xmin, one.xmin), std::max(all.xmax, one.xmax), std::min(all.ymin, one.ymin),
           std::max(all.ymax, one.ymax)};
  }
  return all;
}

// --- Selection ---

void Document::Select(ObjectHandle handle) {
  if (!Find(handle)) return;
  int& traits = m_Objects[handle - FirstHandle]->attributes.traits;
  if ((traits & DBTRAIT_SELECTED) != 0) return;
  traits |= DBTRAIT_SELECTED;
  m_Selection.push_back(handle);
}

void Document::Deselect(ObjectHandle handle) {
  if (!Find(handle)) return;
  int& traits = m_Objects[handle - FirstHandle]->attributes.traits;
  // Most objects are not selected, and the selection may be long.
  if ((traits & DBTRAIT_SELECTED) == 0) return;
  traits &= ~DBTRAIT_SELECTED;
  std::erase(m_Selection, handle);
}

void Document::DeselectAll() {
  for (const ObjectHandle handle : m_Selection) {
    m_Objects[handle - FirstHandle]->attributes.traits &= ~DBTRAIT_SELECTED;
  }
  m_Selection.clear();
}

}  // namespace rastrel::document
