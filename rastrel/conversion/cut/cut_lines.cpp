#include "rastrel/conversion/cut/cut_lines.h"

#include <memory>
#include <vector>

#include "rastrel/conversion/cut/cut_archive_reader.h"
#include "rastrel/job/app_log.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/contour_cut.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/os/file.h"

namespace rastrel::conversion {

namespace {

using host::ObjectHandle;

// Visible, selectable, and part of the document.
constexpr int OrdinaryTraits = DBTRAIT_VISIBLE | DBTRAIT_SELECTABLE | DBTRAIT_IN_DOCUMENT;

// Null if the host can't make one.
std::unique_ptr<POLYARC> MakeArc(host::ObjectStore& store, const Polygon& polygon) {
  std::unique_ptr<POLYARC> arc = store.PA_NewPolyArc();
  if (!arc) return nullptr;
  int subPoly = 0;
  for (const SubPolyEntry& entry : polygon.entries) {
    store.PA_NewSubPoly(*arc);
    int index = 0;
    // The host takes the fifth value before the third, and has no place for the fourth.
    for (const Vertex& vertex : entry.subPoly->vertices)
      store.PA_AddVertice(
          *arc, subPoly, index++,
          {.x = vertex.x, .y = vertex.y, .fifth = vertex.fifth, .third = vertex.third});
    if (entry.subPoly->closed != 0) store.PA_CloseSubpoly(*arc, subPoly);
    ++subPoly;
  }
  return arc;
}

ObjectHandle InsertArc(host::ObjectStore& store, const POLYARC& arc) {
  const ObjectHandle object =
      store.DBInsertElement(nullptr, DBTYPE_POLYARC, &arc, 0, 1, 0, 1, false);
  if (object == 0) return 0;
  store.DBInvalidateBounds(object);
  store.DBValidateBounds(object);
  store.DBSetTraits(object, OrdinaryTraits);
  return object;
}

ObjectHandle BuildObject(host::ObjectStore& store, const CutObject& object) {
  if (!object.polygons) return 0;
  std::vector<std::unique_ptr<POLYARC>> arcs;
  for (const PolyReference<Polygon>& polygon : object.polygons->polygons)
    arcs.push_back(MakeArc(store, *polygon));
  const bool several = arcs.size() > 1;
  const ObjectHandle group = several ? store.DBCreateObject(DBTYPE_GROUP) : 0;
  ObjectHandle result = group;
  for (std::unique_ptr<POLYARC>& arc : arcs) {
    const ObjectHandle path = arc ? InsertArc(store, *arc) : 0;
    if (several)
      store.DBInsertObject(path, group);
    else
      result = path;
    arc.reset();
  }
  if (several) {
    store.DBSetTraits(group, OrdinaryTraits);
    store.DBValidateBounds(group);
  }
  return result;
}

// How the objects of a color are cut.
using ChangeToCutLines = void (host::ContourCut::*)(host::ListHandle list, int reserved);

class CutLineBuilder {
 public:
  CutLineBuilder(host::ObjectStore& store, const CPS2CutData& cut, const CPS2CutData* halfCut)
      : m_Store(store), m_Cut(cut), m_HalfCut(halfCut) {}

  ObjectHandle Build(const CCutObjects& objects) {
    const bool several = objects.m_Objects.size() > 1;
    const ObjectHandle group = m_Store.DBCreateObject(DBTYPE_GROUP);
    ObjectHandle result = 0;
    for (const CutObject& object : objects.m_Objects) {
      result = BuildObject(m_Store, object);
      Mark(object, result);
      if (several) m_Store.DBInsertObject(result, group);
    }
    if (!several) {
      m_Store.DBDestroyObject(group);
      return result;
    }
    m_Store.DBSetTraits(group, OrdinaryTraits);
    m_Store.DBInvalidateBounds(group);
    m_Store.DBValidateBounds(group);
    return group;
  }

 private:
  void Mark(const CutObject& object, ObjectHandle made) {
    if (m_Cut.IsColorMatchKVI(object.colorText))
      MakeCutLine(made, m_Cut.color, &host::ContourCut::ChangeObjectsToContourCut);
    else if (m_HalfCut != nullptr && m_HalfCut->IsColorMatchKVI(object.colorText))
      MakeCutLine(made, m_HalfCut->color, &host::ContourCut::ChangeObjectsToContourCutThrough);
  }

  void MakeCutLine(ObjectHandle object, const CVKFullColor& color, ChangeToCutLines change) {
    host::Host& present = host::GetHost();
    host::Application* const application = present.GetApplication();
    if (application != nullptr) application->AddColorToPalette(color);
    m_Store.DBSetLayer(object, color);
    host::ContourCut* const contourCut = present.GetContourCut();
    if (contourCut == nullptr) return SayOnceThatPathsStay();
    const host::ListHandle list = m_Store.DBCreateEmptyList();
    m_Store.DBAddToList(list, object);
    (contourCut->*change)(list, 0);
    m_Store.DBDestroyList(list);
  }

  void SayOnceThatPathsStay() {
    if (m_Said) return;
    m_Said = true;
    CAppLog::Instance().Printf(L"[CLQ] the host makes no cut lines: the paths stay plain");
  }

  host::ObjectStore& m_Store;
  const CPS2CutData& m_Cut;
  const CPS2CutData* m_HalfCut;
  bool m_Said = false;
};

// False if the archive ends too early. One that can't be read otherwise has no objects.
bool ReadLogged(const std::wstring& archive, CCutObjects& objects) {
  try {
    if (!ReadCutArchive(archive, objects))
      CAppLog::Instance().Printf(L"[CLQ] the cut archive can't be read: %s", archive);
    return true;
  } catch (const CArchiveException& failure) {
    CAppLog::Instance().Printf(L"[CLQ] the cut archive is damaged: %s: %s", archive,
                               failure.what());
    return false;
  }
}

}  // namespace

host::ObjectStore* FindCutDocument() {
  host::ObjectStore* const store = host::GetHost().GetObjectStore();
  if (store == nullptr) CAppLog::Instance().Printf(L"[CLQ] the host has no document for cut lines");
  return store;
}

ObjectHandle BuildCutObject(const CutObject& object) {
  host::ObjectStore* const store = FindCutDocument();
  return store == nullptr ? 0 : BuildObject(*store, object);
}

ObjectHandle BuildCutLines(const CCutObjects& objects, const CPS2CutData& cut,
                           const CPS2CutData* halfCut) {
  host::ObjectStore* const store = FindCutDocument();
  return store == nullptr ? 0 : CutLineBuilder(*store, cut, halfCut).Build(objects);
}

ObjectHandle TakeCutLines(const std::wstring& archive, const CPS2CutData& cut) {
  if (!os::Exists(archive)) return 0;
  CCutObjects objects;
  const bool whole = ReadLogged(archive, objects);
  static_cast<void>(os::RemoveFile(archive));
  return whole ? BuildCutLines(objects, cut, nullptr) : 0;
}

}  // namespace rastrel::conversion
