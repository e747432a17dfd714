// Cut archives out of any bytes, and objects of a host made of those that can be read. The colors
// of two records are the texts of the first two objects, so that cut lines are made as well.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

#include "rastrel/conversion/cut/cut_archive_reader.h"
#include "rastrel/conversion/cut/cut_lines.h"
#include "rastrel/platform/host/contour_cut.h"
#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/standalone/standalone_host.h"
#include "tests/support/bare_document.h"

namespace {

using namespace rastrel;

class PathStore : public test::BareStore {
 public:
  std::unique_ptr<POLYARC> PA_NewPolyArc() override { return std::make_unique<POLYARC>(); }
  void PA_AddVertice(POLYARC&, int, int, const host::PolyArcVertice&) override { ++m_Vertices; }

  std::size_t m_Vertices = 0;
};

class PathHost : public standalone::StandaloneHost {
 public:
  PathHost() { host::SetHost(this); }
  ~PathHost() override { host::SetHost(nullptr); }
  PathHost(const PathHost&) = delete;
  PathHost& operator=(const PathHost&) = delete;

  host::ObjectStore* GetObjectStore() override { return &m_Store; }
  host::ContourCut* GetContourCut() override { return &m_ContourCut; }

  PathStore m_Store;

 private:
  class IgnoredCuts : public host::ContourCut {
   public:
    void ChangeObjectsToContourCut(host::ListHandle, int) override {}
    void ChangeObjectsToContourCutThrough(host::ListHandle, int) override {}
  };
  IgnoredCuts m_ContourCut;
};

std::size_t VerticesOf(const CCutObjects& objects) {
  std::size_t vertices = 0;
  for (const auto& object : objects.m_Objects) {
    if (!object.polygons) continue;
    for (const auto& polygon : object.polygons->polygons)
      for (const auto& entry : polygon->entries) vertices += entry.subPoly->vertices.size();
  }
  return vertices;
}

CPS2CutData Named(const CCutObjects& objects, std::size_t index) {
  CPS2CutData cut;
  cut.colorKind = CutColorNamed;
  if (index < objects.m_Objects.size()) cut.color.SetColorName(objects.m_Objects[index].colorText);
  return cut;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  CMemFile file(std::vector<std::uint8_t>(bytes, bytes + size));
  CArchive archive(&file, CArchive::load, 4096);
  CCutObjects objects;
  try {
    if (!conversion::ReadCutObjects(archive, size, objects)) return 0;
  } catch (const CArchiveException& exception) {
    if (exception.m_cause != CArchiveException::endOfFile || !objects.m_Objects.empty())
      std::abort();
    return 0;
  }
  const std::size_t vertices = VerticesOf(objects);
  if (vertices * 40 > size) std::abort();
  const CCutObjects copy = objects;
  PathHost host;
  const CPS2CutData half = Named(copy, 1);
  static_cast<void>(conversion::BuildCutLines(copy, Named(copy, 0), &half));
  if (host.m_Store.m_Vertices != vertices) std::abort();
  return 0;
}
