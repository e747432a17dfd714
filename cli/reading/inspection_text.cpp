#include "cli/reading/inspection_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>
#include <numeric>

#include "cli/console/json_text.h"
#include "cli/input/page_bounds.h"
#include "rastrel/platform/os/decimal.h"
#include "rastrel/platform/os/shown_text.h"

namespace rastrel::cli {
namespace {

std::string Number(double value) { return os::ShortestDecimal(std::round(value * 1000) / 1000); }

template <typename Values, typename TextOf>
std::string Joined(const Values& values, const char* between, const TextOf& textOf) {
  std::string text;
  for (const auto& value : values) text += (text.empty() ? "" : between) + textOf(value);
  return text;
}

// The name, followed by the name as PostScript reads it if that differs.
std::string NameText(const SpotName& name) {
  return name.name == name.postScript ? name.name : name.name + " (" + name.postScript + ")";
}

bool IsCmyk(const CVKColor& color) { return color.GetColorSpace() == COLORSPACE_CMYK; }

std::string ColorText(const CVKColor& color) {
  std::string text = IsCmyk(color) ? "CMYK" : "RGB";
  for (std::size_t index = 0; index < (IsCmyk(color) ? 4U : 3U); ++index)
    text += " " + Number(color.GetComponents().at(index));
  return text;
}

// Two blanks on the color, as far as a screen shows it.
std::string Swatch(const CVKColor& color) {
  const std::array<double, 4>& values = color.GetComponents();
  std::string text = "\x1b[48;2";
  for (std::size_t index = 0; index < 3; ++index) {
    const double level =
        IsCmyk(color) ? 255 * (1 - values.at(index)) * (1 - values[3]) : values.at(index);
    const double clipped = std::isfinite(level) ? std::clamp(level, 0.0, 255.0) : 0;
    text += ";" + std::to_string(static_cast<int>(std::lround(clipped)));
  }
  return text + "m  \x1b[0m ";
}

std::array<double, 4> PointsOf(const CRect& bounds) {
  return {double{1} * bounds.left, double{1} * bounds.bottom, double{1} * bounds.right,
          double{1} * bounds.top};
}

std::array<double, 4> CentimetresOf(const CRect& bounds) {
  const BOUNDS centimetres = InCentimetres(bounds);
  return {centimetres.xmin, centimetres.ymin, centimetres.xmax, centimetres.ymax};
}

const auto AsIs = [](const std::string& text) { return text; };

std::string SectionText(const char* name, const FileSection& section) {
  if (section.length == 0) return {};
  return std::string(", ") + name + " " + std::to_string(section.length) + " bytes at " +
         std::to_string(section.offset);
}

std::string PaintedText(const PaintedReport& report) {
  std::string text =
      "; painted: " + (report.painted.empty() ? "none" : Joined(report.painted, ", ", AsIs));
  if (!report.notPainted.empty())
    text += "; declared and not painted: " + Joined(report.notPainted, ", ", AsIs);
  if (!report.notDeclared.empty())
    text += "; painted and not declared: " + Joined(report.notDeclared, ", ", AsIs);
  return text;
}

std::string SpotsText(const Inspection& inspection, bool color) {
  std::string text;
  if (!inspection.names.empty())
    text += "; colours: " + os::CleanLine(Joined(inspection.names, ", ", NameText));
  if (!inspection.spots.empty())
    text += "; spots: " + Joined(inspection.spots, ", ", [color](const InspectedSpot& spot) {
              return (color ? Swatch(spot.color) : std::string()) +
                     os::CleanLine(NameText(spot.name)) + " " + ColorText(spot.color);
            });
  if (!inspection.undefined.empty())
    text += "; not defined: " + os::CleanLine(Joined(inspection.undefined, ", ", NameText));
  return text;
}

nlohmann::ordered_json NameObject(const SpotName& name) {
  return {{"name", name.name}, {"postscript", name.postScript}};
}

template <typename Values>
nlohmann::ordered_json NameList(const Values& names) {
  auto list = nlohmann::ordered_json::array();
  for (const SpotName& name : names) list.push_back(NameObject(name));
  return list;
}

nlohmann::ordered_json SpotList(const std::vector<InspectedSpot>& spots) {
  auto list = nlohmann::ordered_json::array();
  for (const InspectedSpot& spot : spots) {
    auto object = NameObject(spot.name);
    object["space"] = IsCmyk(spot.color) ? "CMYK" : "RGB";
    auto values = nlohmann::ordered_json::array();
    for (std::size_t index = 0; index < (IsCmyk(spot.color) ? 4U : 3U); ++index)
      values.push_back(spot.color.GetComponents().at(index));
    object["values"] = values;
    list.push_back(object);
  }
  return list;
}

}  // namespace

std::string InspectionLine(const Inspection& inspection, bool color) {
  std::string text = inspection.path + ": " + KindWord(inspection.kind) + " (" + inspection.reason;
  if (inspection.kind == FileKind::DosEps)
    text += SectionText("PostScript", inspection.postScript) +
            SectionText("metafile", inspection.metafile) + SectionText("TIFF", inspection.tiff);
  text = os::CleanLine(text + ")");
  if (inspection.kind == FileKind::Neither) return text + "\n";
  text += "; " + os::CleanLine(inspection.header);
  if (inspection.bounds) {
    text += "; bounds " + Joined(PointsOf(*inspection.bounds), " ", Number) + " pt, " +
            Joined(CentimetresOf(*inspection.bounds), " ", Number) + " cm";
  } else {
    text += "; no bounds";
  }
  text += SpotsText(inspection, color);
  if (inspection.painted) text += os::CleanLine(PaintedText(*inspection.painted));
  if (!inspection.paintedError.empty()) text += "; painted: not known";
  return text + "\n";
}

std::string InspectionTableHead() {
  return "path\tkind\treason\tstart\tlength\tps_offset\tps_length\tmetafile_offset\tmetafile_"
         "length\t"
         "tiff_offset\ttiff_length\theader\tbounds_pt\tbounds_"
         "cm\tcolours\tspots\tundefined\tpainted\t"
         "not_painted\tnot_declared\tpainted_error\n";
}

std::string InspectionRow(const Inspection& inspection) {
  std::vector<std::string> fields = {inspection.path, KindWord(inspection.kind), inspection.reason,
                                     std::to_string(inspection.start),
                                     std::to_string(inspection.length)};
  for (const FileSection& section : {inspection.postScript, inspection.metafile, inspection.tiff}) {
    fields.push_back(std::to_string(section.offset));
    fields.push_back(std::to_string(section.length));
  }
  fields.push_back(inspection.header);
  fields.push_back(inspection.bounds ? Joined(PointsOf(*inspection.bounds), " ", Number) : "");
  fields.push_back(inspection.bounds ? Joined(CentimetresOf(*inspection.bounds), " ", Number) : "");
  fields.push_back(Joined(inspection.names, " | ", NameText));
  fields.push_back(Joined(inspection.spots, " | ", [](const InspectedSpot& spot) {
    return NameText(spot.name) + " = " + ColorText(spot.color);
  }));
  fields.push_back(Joined(inspection.undefined, " | ", NameText));
  const PaintedReport report = inspection.painted.value_or(PaintedReport());
  for (const auto* names : {&report.painted, &report.notPainted, &report.notDeclared})
    fields.push_back(Joined(*names, " | ", AsIs));
  fields.push_back(inspection.paintedError);
  return Joined(fields, "\t", os::CleanLine) + "\n";
}

std::string InspectionObject(const Inspection& inspection) {
  nlohmann::ordered_json object = {{"event", "file"},
                                   {"path", inspection.path},
                                   {"kind", KindWord(inspection.kind)},
                                   {"reason", inspection.reason}};
  if (inspection.kind != FileKind::Neither) {
    object["start"] = inspection.start;
    object["length"] = inspection.length;
    object["header"] = inspection.header;
    object["names"] = NameList(inspection.names);
    object["spots"] = SpotList(inspection.spots);
    object["undefined"] = NameList(inspection.undefined);
  }
  if (inspection.kind == FileKind::DosEps)
    for (const auto& [name, section] :
         {std::pair("postscript", inspection.postScript),
          std::pair("metafile", inspection.metafile), std::pair("tiff", inspection.tiff)})
      object["sections"][name] = {{"offset", section.offset}, {"length", section.length}};
  if (inspection.bounds) {
    object["points"] = PointsOf(*inspection.bounds);
    object["centimetres"] = CentimetresOf(*inspection.bounds);
  }
  if (inspection.painted) {
    object["painted"] = inspection.painted->painted;
    object["not_painted"] = inspection.painted->notPainted;
    object["not_declared"] = inspection.painted->notDeclared;
  }
  if (!inspection.paintedError.empty()) object["painted_error"] = inspection.paintedError;
  return JsonText(object) + "\n";
}

}  // namespace rastrel::cli
