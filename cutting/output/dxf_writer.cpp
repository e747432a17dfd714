#include "cutting/output/dxf_writer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "cutting/output/drawn_contour.h"
#include "cutting/output/dxf_pairs.h"
#include "cutting/output/dxf_r2000_writer.h"
#include "cutting/output/operation_look.h"

namespace rastrel::cutting {
namespace {

// In the order of DxfVersion.
constexpr std::array<std::string_view, 2> Names{"r12", "r2000"};

void AddHeader(DxfPairs& pairs, const Box& box) {
  constexpr int millimetres = 4;
  constexpr int metric = 1;
  pairs.BeginSection("HEADER");
  pairs.Add(9, "$ACADVER").Add(1, "AC1009");
  pairs.Add(9, "$INSUNITS").AddInteger(70, millimetres);
  pairs.Add(9, "$MEASUREMENT").AddInteger(70, metric);
  pairs.Add(9, "$EXTMIN").AddPoint(10, {box.left, box.bottom});
  pairs.Add(9, "$EXTMAX").AddPoint(10, {box.right, box.top});
  pairs.EndSection();
}

// The line type that the layers name, and the layers.
void AddTables(DxfPairs& pairs, const CutJob& job) {
  constexpr int alignment = 65;
  const std::vector<Operation> operations = ToolOperationsOf(job);
  pairs.BeginSection("TABLES");
  pairs.Add(0, "TABLE").Add(2, "LTYPE").AddInteger(70, 1);
  pairs.Add(0, "LTYPE").Add(2, "CONTINUOUS").AddInteger(70, 0).Add(3, "Solid line");
  pairs.AddInteger(72, alignment).AddInteger(73, 0).AddReal(40, 0);
  pairs.Add(0, "ENDTAB");
  pairs.Add(0, "TABLE").Add(2, "LAYER");
  pairs.AddInteger(70, static_cast<long long>(operations.size() + 1));
  const auto addLayer = [&](std::string_view name, int color) {
    pairs.Add(0, "LAYER").Add(2, name).AddInteger(70, 0).AddInteger(62, color);
    pairs.Add(6, "CONTINUOUS");
  };
  addLayer("0", 7);
  for (const Operation operation : operations)
    addLayer(LookOf(operation).layer, LookOf(operation).colorNumber);
  pairs.Add(0, "ENDTAB").EndSection();
}

void AddContour(DxfPairs& pairs, std::string_view layer, const std::vector<Point>& points,
                bool closed) {
  constexpr int withVertices = 1;
  if (points.size() == 1) {
    pairs.Add(0, "POINT").Add(8, layer).AddPoint(10, points.front());
    return;
  }
  pairs.Add(0, "POLYLINE").Add(8, layer).AddInteger(66, withVertices).AddPoint(10, {});
  pairs.AddInteger(70, closed ? 1 : 0);
  for (const Point& point : points) pairs.Add(0, "VERTEX").Add(8, layer).AddPoint(10, point);
  pairs.Add(0, "SEQEND").Add(8, layer);
}

std::string DxfR12Text(const CutJob& job, const Transform& toDevice, double tolerance) {
  DxfPairs pairs;
  AddHeader(pairs, PageBoxOf(job, toDevice));
  AddTables(pairs, job);
  pairs.BeginSection("ENTITIES");
  for (const CutPath& path : job.paths) {
    if (!HasTool(path.operation)) continue;
    for (const Contour& contour : path.contours) {
      if (!IsDrawn(path, contour)) continue;
      const auto points = Flatten(Transformed(contour, toDevice), tolerance);
      if (points.size() > 1 || path.operation == Operation::Drill)
        AddContour(pairs, LookOf(path.operation).layer, points, contour.closed);
    }
  }
  pairs.EndSection().Add(0, "EOF");
  return pairs.Take();
}

}  // namespace

std::string_view NameOf(DxfVersion version) { return Names[static_cast<std::size_t>(version)]; }

std::optional<DxfVersion> DxfVersionOf(std::string_view name) {
  const auto* const found = std::ranges::find(Names, name);
  if (found == Names.end()) return std::nullopt;
  return static_cast<DxfVersion>(found - Names.begin());
}

std::string DxfText(const CutJob& job, const Transform& toDevice, double tolerance,
                    DxfVersion version) {
  return version == DxfVersion::R12 ? DxfR12Text(job, toDevice, tolerance)
                                    : DxfR2000Text(job, toDevice);
}

}  // namespace rastrel::cutting
