#include "host/cutfile/exchange_writer.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "host/graphics/indexed_color.h"
#include "rastrel/platform/os/decimal.h"

namespace rastrel::cutfile {
namespace {

constexpr double MillimetresPerCentimetre = 10;
constexpr int Decimals = 4;

struct Layer {
  const char* name;
  int color;  // by the format's numbers
};

// In the order of CutKind.
constexpr std::array Layers{Layer{"LINES", 7}, Layer{"CUT", 1}, Layer{"CUT_THROUGH", 5}};

const Layer& LayerOf(CutKind kind) { return Layers[static_cast<std::size_t>(kind)]; }

// The pairs of lines that the format is made of:
//
//      0               an entity,
//     POLYLINE         of that kind
//      8
//     CUT              its layer
class PairWriter {
 public:
  PairWriter& Add(int code, const std::string& value) {
    const std::string digits = std::to_string(code);
    m_Text.append(digits.size() < 3 ? 3 - digits.size() : 0, ' ');
    m_Text.append(digits).append("\r\n").append(value).append("\r\n");
    return *this;
  }
  PairWriter& Add(int code, int value) { return Add(code, std::to_string(value)); }
  // Readers of this version know a real number by its point.
  PairWriter& AddReal(int code, double value) {
    std::string text = os::ShortDecimal(value, Decimals);
    if (text.find('.') == std::string::npos) text += ".0";
    return Add(code, text);
  }
  PairWriter& AddPoint(const CWorldPoint& centimetres) {
    AddReal(10, centimetres.x * MillimetresPerCentimetre);
    AddReal(20, centimetres.y * MillimetresPerCentimetre);
    return AddReal(30, 0);
  }
  std::string Take() { return std::move(m_Text); }

 private:
  std::string m_Text;
};

void BeginSection(PairWriter& pairs, const char* name) { pairs.Add(0, "SECTION").Add(2, name); }

struct Extent {
  CWorldPoint least;
  CWorldPoint most;
};

// The box of the page and of all lines.
Extent ExtentOf(const CutDrawing& drawing) {
  Extent extent{{0, 0}, {drawing.width, drawing.height}};
  for (const CutObject& object : drawing.objects) {
    for (const CutRun& run : object.runs) {
      for (const CWorldPoint& point : run.points) {
        extent.least = {std::min(extent.least.x, point.x), std::min(extent.least.y, point.y)};
        extent.most = {std::max(extent.most.x, point.x), std::max(extent.most.y, point.y)};
      }
    }
  }
  return extent;
}

void AddHeader(PairWriter& pairs, const CutDrawing& drawing) {
  constexpr int millimetres = 4;
  constexpr int metric = 1;
  const Extent extent = ExtentOf(drawing);
  BeginSection(pairs, "HEADER");
  pairs.Add(9, "$ACADVER").Add(1, "AC1009");
  pairs.Add(9, "$INSUNITS").Add(70, millimetres);
  pairs.Add(9, "$MEASUREMENT").Add(70, metric);
  pairs.Add(9, "$EXTMIN").AddPoint(extent.least);
  pairs.Add(9, "$EXTMAX").AddPoint(extent.most);
  pairs.Add(0, "ENDSEC");
}

// The line type that the layers name, and the layers.
void AddTables(PairWriter& pairs) {
  constexpr int alignment = 65;
  BeginSection(pairs, "TABLES");
  pairs.Add(0, "TABLE").Add(2, "LTYPE").Add(70, 1);
  pairs.Add(0, "LTYPE").Add(2, "CONTINUOUS").Add(70, 0).Add(3, "Solid line");
  pairs.Add(72, alignment).Add(73, 0).AddReal(40, 0);
  pairs.Add(0, "ENDTAB");
  pairs.Add(0, "TABLE").Add(2, "LAYER").Add(70, static_cast<int>(Layers.size()));
  for (const Layer& layer : Layers)
    pairs.Add(0, "LAYER").Add(2, layer.name).Add(70, 0).Add(62, layer.color).Add(6, "CONTINUOUS");
  pairs.Add(0, "ENDTAB").Add(0, "ENDSEC");
}

int ColorNumberOf(const CVKColor& color) {
  graphics::VectorPath::Rgb parts{};
  color.GetColorChannels(&parts[0], &parts[1], &parts[2], nullptr);
  return graphics::IndexOfColor(parts);
}

void AddRun(PairWriter& pairs, const CutObject& object, const CutRun& run) {
  constexpr int withVertices = 1;
  const char* layer = LayerOf(object.kind).name;
  pairs.Add(0, "POLYLINE").Add(8, layer);
  if (object.kind == CutKind::Line) pairs.Add(62, ColorNumberOf(object.color));
  pairs.Add(66, withVertices).AddPoint({}).Add(70, run.closed ? 1 : 0);
  for (const CWorldPoint& point : run.points) pairs.Add(0, "VERTEX").Add(8, layer).AddPoint(point);
  pairs.Add(0, "SEQEND").Add(8, layer);
}

}  // namespace

std::string ExchangeFileText(const CutDrawing& drawing) {
  PairWriter pairs;
  AddHeader(pairs, drawing);
  AddTables(pairs);
  BeginSection(pairs, "ENTITIES");
  for (const CutObject& object : drawing.objects) {
    for (const CutRun& run : object.runs) AddRun(pairs, object, run);
  }
  pairs.Add(0, "ENDSEC").Add(0, "EOF");
  return pairs.Take();
}

}  // namespace rastrel::cutfile
