#include "host/layout/graphic_placer.h"

#include <utility>
#include <variant>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::layout {

using document::Document;
using document::Object;
using document::ObjectHandle;

// An object as it was loaded, and its members.
struct GraphicPlacer::Copy {
  Object object;
  std::vector<Copy> members;
};

struct GraphicPlacer::Graphic {
  std::vector<ObjectHandle> loaded;  // the objects themselves, without a place, until one is placed
  std::vector<Copy> copies;
  BOUNDS bounds;
  std::size_t weight = 0;  // points, with those that the objects count as
};

namespace {

// The points that an object counts as.
std::size_t WeightOf(const document::Shape& shape) {
  std::size_t weight = 10;
  if (const auto* path = std::get_if<document::PathShape>(&shape)) {
    for (const document::SubPath& part : path->subPaths) weight += 1 + part.segments.size();
  }
  return weight;
}

template <typename Copy>
Copy CopyOf(const Document& document, ObjectHandle handle, std::size_t& weight) {
  Copy copy{*document.Find(handle), {}};
  weight += WeightOf(copy.object.shape);
  for (const ObjectHandle member : document.Members(handle)) {
    copy.members.push_back(CopyOf<Copy>(document, member, weight));
  }
  // Members are made anew, and the group has to be empty until then.
  if (auto* group = std::get_if<document::GroupShape>(&copy.object.shape)) group->members.clear();
  return copy;
}

// An object like the copied one, without a place; 0 if the document is full.
template <typename Copy>
ObjectHandle NewObject(Document& document, const Copy& copy) {
  const ObjectHandle handle = document.Create(copy.object.shape, copy.object.attributes);
  for (const Copy& member : copy.members) {
    if (!document.Insert(NewObject(document, member), handle)) return 0;
  }
  return handle;
}

// One object of several, which have no place. 0 if groups would be too deep.
ObjectHandle Grouped(Document& document, const std::vector<ObjectHandle>& objects) {
  if (objects.size() == 1) return objects.front();
  const ObjectHandle group = document.Create(document::GroupShape());
  for (const ObjectHandle object : objects) {
    if (!document.Insert(object, group)) return 0;
  }
  return group;
}

void PutOn(Document& document, ObjectHandle handle, const PlacedPlate& plate) {
  for (const ObjectHandle member : std::vector<ObjectHandle>(document.Members(handle))) {
    PutOn(document, member, plate);
  }
  document.SetPages(handle, {plate.page, plate.page});
  document.SetSheetLayer(handle, plate.sheetLayer);
  document.Edit(handle)->attributes.traits |= DBTRAIT_IN_DOCUMENT;
}

}  // namespace

GraphicPlacer::GraphicPlacer(document::DocumentHost& host, const FileResolver& resolve)
    : m_Host(host), m_Resolve(resolve) {}

GraphicPlacer::~GraphicPlacer() = default;

// Loads a file, whose objects become those of the graphic; none if it can't be had. The loader
// itself says why a file can't be placed.
void GraphicPlacer::Read(const std::wstring& file, Graphic& graphic) {
  const Expected<std::wstring> path = m_Resolve ? m_Resolve(file) : Expected<std::wstring>(file);
  if (!path) {
    m_Host.GetNotices().AddLoss(L"the graphic file \"" + file + L"\": " +
                                os::WideFromUtf8(Describe(path.Error())));
    return;
  }
  Document& document = m_Host.GetDocument();
  document.DeselectAll();
  if (m_Host.GetApplication()->LoadTHZ(nullptr, nullptr, path->c_str(), 1, 1) == 0) return;
  graphic.loaded = document.Selection();
  graphic.bounds = document.Bounds(graphic.loaded);
  document.DeselectAll();
  for (const ObjectHandle handle : graphic.loaded) {
    graphic.copies.push_back(CopyOf<Copy>(document, handle, graphic.weight));
  }
  // They have no place until a plate has one for them. The last first: that is found at once.
  for (auto last = graphic.loaded.rbegin(); last != graphic.loaded.rend(); ++last) {
    document.Remove(*last);
  }
}

GraphicPlacer::Graphic& GraphicPlacer::Load(const std::wstring& file) {
  auto& graphic = m_Graphics[file];
  if (!graphic) {
    graphic = std::make_unique<Graphic>();
    Read(file, *graphic);
  }
  return *graphic;
}

// A few words of a template must not ask for a document that no memory holds.
bool GraphicPlacer::TakeRoom(const Graphic& graphic, const Request& request) {
  if (graphic.weight <= m_Room) {
    m_Room -= graphic.weight;
    return true;
  }
  m_Host.GetNotices().AddLoss(request.title +
                              L" and others after it: the graphics of all plates have more than " +
                              std::to_wstring(MaximumGraphicPoints) + L" points");
  m_Room = 0;
  return false;
}

// The loaded objects for the first place, and copies for the others, as one object without a place.
ObjectHandle GraphicPlacer::NewInstance(Graphic& graphic) {
  Document& document = m_Host.GetDocument();
  std::vector<ObjectHandle> objects = std::exchange(graphic.loaded, {});
  if (objects.empty()) {
    for (const Copy& copy : graphic.copies) {
      objects.push_back(NewObject(document, copy));
      if (objects.back() == 0) return 0;
    }
  }
  return Grouped(document, objects);
}

void GraphicPlacer::Place(const Request& request, const PlacedPlate& plate) {
  Graphic& graphic = Load(request.file);
  if (graphic.copies.empty()) return;
  document::Notices& notices = m_Host.GetNotices();
  if (!IsPlacement(request.placement)) {
    notices.AddLoss(request.title + L": its place or size is none that a plate could have");
    return;
  }
  if (m_Room == 0 || !TakeRoom(graphic, request)) return;
  Document& document = m_Host.GetDocument();
  const ObjectHandle object = NewInstance(graphic);
  if (object == 0 || !document.Insert(object, host::DocumentRoot)) {
    notices.AddLoss(request.title + L": the document has no room for its objects");
    return;
  }
  const TM placed = TmOf(request.placement, request.frame, graphic.bounds);
  m_Host.GetObjectStore()->DBApplyTM(object, Composed(placed, request.turn));
  PutOn(document, object, plate);
}

}  // namespace rastrel::layout
