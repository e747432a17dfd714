#include "host/layout/graphic_placer.h"

#include <variant>

#include "host/document/document.h"
#include "host/document/notices.h"
#include "rastrel/platform/host/application.h"
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

// The attributes of an object in its place on a plate.
document::Attributes Placed(document::Attributes attributes, const TM& place,
                            const PlacedPlate& plate) {
  attributes.matrix = Composed(attributes.matrix, place);
  attributes.pages = {plate.page, plate.page};
  attributes.sheetLayer = plate.sheetLayer;
  attributes.traits |= DBTRAIT_IN_DOCUMENT;
  attributes.traits &= ~DBTRAIT_SELECTED;
  return attributes;
}

// An object like the copied one, in its place on a plate, which is in neither document nor group;
// 0 if the document is full. It is made with all its attributes: editing it would keep another copy
// of it for undoing.
template <typename Copy>
ObjectHandle NewObject(Document& document, const Copy& copy, const TM& place,
                       const PlacedPlate& plate) {
  const ObjectHandle handle =
      document.Create(copy.object.shape, Placed(copy.object.attributes, place, plate));
  for (const Copy& member : copy.members) {
    if (!document.Insert(NewObject(document, member, place, plate), handle)) return 0;
  }
  return handle;
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
  const std::vector<ObjectHandle> loaded = document.Selection();
  graphic.bounds = document.Bounds(loaded);
  document.DeselectAll();
  for (const ObjectHandle handle : loaded) {
    graphic.copies.push_back(CopyOf<Copy>(document, handle, graphic.weight));
  }
  // Each place gets objects of its own. The last is taken out first: that one is found at once.
  for (auto last = loaded.rbegin(); last != loaded.rend(); ++last) document.Remove(*last);
}

GraphicPlacer::Graphic& GraphicPlacer::Load(const std::wstring& file) {
  auto& graphic = m_Graphics[file];
  if (!graphic) {
    graphic = std::make_unique<Graphic>();
    Read(file, *graphic);
  }
  return *graphic;
}

// A short template must not ask for a document that no memory holds.
bool GraphicPlacer::TakeRoom(const Graphic& graphic, const Request& request) {
  if (m_IsFull) return false;
  if (graphic.weight <= m_Room) {
    m_Room -= graphic.weight;
    return true;
  }
  m_Host.GetNotices().AddLoss(request.title +
                              L" and others after it: the graphics of all plates have more than " +
                              std::to_wstring(MaximumGraphicPoints) + L" points");
  m_IsFull = true;
  return false;
}

// The objects of a graphic as one object of the document; 0 if that can't take it.
ObjectHandle GraphicPlacer::Insert(const Graphic& graphic, const TM& place,
                                   const PlacedPlate& plate) {
  Document& document = m_Host.GetDocument();
  ObjectHandle object = 0;
  if (graphic.copies.size() == 1) {
    object = NewObject(document, graphic.copies.front(), place, plate);
  } else {
    object = document.Create(document::GroupShape(), Placed({}, TM(), plate));
    for (const Copy& copy : graphic.copies) {
      if (!document.Insert(NewObject(document, copy, place, plate), object)) return 0;
    }
  }
  return document.Insert(object, host::DocumentRoot) ? object : 0;
}

void GraphicPlacer::Place(const Request& request, const PlacedPlate& plate) {
  const Graphic& graphic = Load(request.file);
  if (graphic.copies.empty()) return;
  if (!IsPlacement(request.placement)) {
    m_Host.GetNotices().AddLoss(request.title +
                                L": its place or size is none that a plate could have");
    return;
  }
  if (!TakeRoom(graphic, request)) return;
  const TM placed = TmOf(request.placement, request.frame, graphic.bounds);
  if (Insert(graphic, Composed(placed, request.turn), plate) == 0) {
    m_Host.GetNotices().AddLoss(request.title + L": the document has no room for its objects");
  }
}

}  // namespace rastrel::layout
