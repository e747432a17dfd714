// The cut lines of an archive with 100,000 vertices, from the file to objects of the embedded host,
// against reading the file's bytes into memory.

#include <cmath>
#include <string>
#include <vector>

#include "bench/data_root.h"
#include "bench/measure.h"
#include "bench/require.h"
#include "host/document_host.h"
#include "rastrel/conversion/cut/cut_archive_reader.h"
#include "rastrel/conversion/cut/cut_lines.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/os/file.h"
#include "tests/support/cut_archive_bytes.h"

namespace {

using namespace rastrel;
using bench::Require;

constexpr int Vertices = 100'000;
constexpr double HighestRatio = 10;
constexpr std::uint64_t FileLimit = std::uint64_t{1} << 30;

// Closed contours on a circle each, as a picture with that many letters has them.
std::string ArchiveOf(int contours) {
  std::vector<std::string> polygons;
  for (int contour = 0; contour < contours; ++contour) {
    std::vector<std::string> vertices;
    const int count = Vertices / contours;
    for (int vertex = 0; vertex < count; ++vertex) {
      const double angle = 6.283185307179586 * vertex / count;
      vertices.push_back(test::cut::VertexBytes(contour + std::cos(angle), -std::sin(angle)));
    }
    polygons.push_back(test::cut::PolygonBytes({test::cut::SubPolyBytes(vertices, true)}));
  }
  return test::cut::ArchiveBytes({test::cut::ObjectBytes("Cut", polygons)});
}

CPS2CutData NamedCut() {
  CPS2CutData cut;
  cut.colorKind = CutColorNamed;
  cut.enabled = 1;
  cut.color.SetColorName(L"Cut");
  return cut;
}

void Measure(const char* name, const bench::DataRoot& root, document::DocumentHost& host,
             int contours) {
  root.Write("lines.cut", ArchiveOf(contours));
  const std::wstring path = root.Wide("lines.cut");
  const CPS2CutData cut = NamedCut();
  host::ObjectHandle lines = 0;
  const auto build = [&] {
    CCutObjects objects;
    Require(conversion::ReadCutArchive(path, objects), "the archive was not read");
    lines = conversion::BuildCutLines(objects, cut, nullptr);
    Require(lines != 0, "no cut lines were made");
  };
  const auto read = [&] {
    const auto bytes = os::ReadWholeFile(path, FileLimit);
    Require(bytes && bytes->size() > std::size_t{40} * Vertices, "the file was not read");
  };
  const auto before = [&] { host.GetObjectStore()->DBDestroyObject(std::exchange(lines, 0)); };
  bench::CompareBest(name, {.count = 15, .clock = bench::Clock::Processor, .before = before}, build,
                     {{"reading the file's bytes", read, HighestRatio}});
}

}  // namespace

int main() {
  const bench::DataRoot root;
  document::DocumentHost host;
  host::SetHost(&host);
  Measure("cut lines of 100,000 vertices in 1,000 contours", root, host, 1000);
  Measure("cut lines of 100,000 vertices in one contour", root, host, 1);
  host::SetHost(nullptr);
  return 0;
}
