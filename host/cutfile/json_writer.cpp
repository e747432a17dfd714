#include "host/cutfile/json_writer.h"

#include <array>
#include <cmath>
#include <string>

#include "rastrel/platform/os/decimal.h"

namespace rastrel::cutfile {
namespace {

constexpr int Decimals = 6;

std::string Number(double value) { return os::ShortDecimal(value, Decimals); }

const char* NameOf(CutKind kind) {
  switch (kind) {
    case CutKind::Cut: return "cut";
    case CutKind::CutThrough: return "cut-through";
    case CutKind::Line: break;
  }
  return "line";
}

// "rgb" and three numbers of 0 to 255, or "cmyk" and four of 0 to 1.
std::string ColorText(const CVKColor& color) {
  const bool cmyk = color.GetColorSpace() == COLORSPACE_CMYK;
  std::array<double, 4> parts{};
  if (cmyk) {
    color.GetCMYKcolor(&parts[0], &parts[1], &parts[2], &parts[3]);
  } else {
    color.GetColorChannels(&parts[0], &parts[1], &parts[2], nullptr);
  }
  std::string text =
      cmyk ? R"({"model":"cmyk","components":[)" : R"({"model":"rgb","components":[)";
  for (std::size_t i = 0; i < (cmyk ? 4U : 3U); ++i) {
    if (i > 0) text += ',';
    text += Number(std::isfinite(parts[i]) ? parts[i] : 0);
  }
  return text + "]}";
}

void AddRun(std::string& text, const CutRun& run) {
  text += run.closed ? R"({"closed":true,"points":[)" : R"({"closed":false,"points":[)";
  for (const CWorldPoint& point : run.points) {
    if (&point != run.points.data()) text += ',';
    text += '[' + Number(point.x) + ',' + Number(point.y) + ']';
  }
  text += "]}";
}

void AddObject(std::string& text, const CutObject& object) {
  text += std::string(R"({"kind":")") + NameOf(object.kind) + R"(","colour":)" +
          ColorText(object.color) + R"(,"runs":[)";
  for (const CutRun& run : object.runs) {
    if (&run != object.runs.data()) text += ',';
    text += '\n';
    AddRun(text, run);
  }
  text += "]}";
}

}  // namespace

std::string JsonFileText(const CutDrawing& drawing) {
  std::string text = R"({"format":"rastrel-cut-lines","version":1,"unit":"cm","width":)" +
                     Number(drawing.width) + R"(,"height":)" + Number(drawing.height) +
                     R"(,"objects":[)";
  for (const CutObject& object : drawing.objects) {
    if (&object != drawing.objects.data()) text += ',';
    text += '\n';
    AddObject(text, object);
  }
  return text + "]}\n";
}

}  // namespace rastrel::cutfile
