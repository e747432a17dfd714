#include <nlohmann/json.hpp>

#include "host/document/bitmap_png.h"
#include "host/document/document_file.h"
#include "host/document/document_format.h"
#include "rastrel/platform/os/base64.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::document {

namespace {

using Json = nlohmann::ordered_json;

std::string Utf8(const std::wstring& text) { return os::Utf8FromWide(text); }

template <typename Names, typename Value>
std::string_view NameOf(const Names& names, Value value) {
  for (const auto& [own, name] : names) {
    if (own == value) return name;
  }
  return names.front().second;
}

Json JsonOf(const CVKColor& color) {
  if (color.IsInvisible()) return "invisible";
  const auto& parts = color.GetComponents();
  if (color.GetColorSpace() == COLORSPACE_CMYK) {
    return {{"cmyk", {parts[0], parts[1], parts[2], parts[3]}}};
  }
  Json json = {{"rgb", {parts[0], parts[1], parts[2]}}};
  if (color.GetColorSpace() != COLORSPACE_RGB) {
    json["space"] = static_cast<int>(color.GetColorSpace());
  }
  return json;
}

Json JsonOf(const CVKFullColor& color) {
  Json json = {{"color", JsonOf(static_cast<const CVKColor&>(color))}};
  std::wstring name;
  if (color.GetColorName(name) != 0) json["name"] = Utf8(name);
  return json;
}

Json JsonOf(const CWorldPoint& point) { return {point.x, point.y}; }

Json JsonOf(const CWorldRect& rect) {
  return {{"left", rect.left}, {"top", rect.top}, {"right", rect.right}, {"bottom", rect.bottom}};
}

Json JsonOf(const SubPath& part) {
  Json segments = Json::array();
  for (const PathSegment& segment : part.segments) {
    Json points = Json::array();
    for (std::size_t i = segment.curve ? 0 : 2; i < 3; ++i) {
      points.push_back(JsonOf(segment.points[i]));
    }
    segments.push_back(std::move(points));
  }
  return {
      {"start", JsonOf(part.start)}, {"closed", part.closed}, {"segments", std::move(segments)}};
}

Json JsonOf(const TextRun& run) {
  Json json = {{"text", Utf8(run.text)}, {"font", Utf8(run.font)}, {"fontType", run.fontType}};
  if (!run.replacement.empty()) json["replacement"] = Utf8(run.replacement);
  json["size"] = run.size;
  if (run.colored) json["color"] = JsonOf(run.color);
  return json;
}

Json JsonOf(const TextLine& line) {
  Json runs = Json::array();
  for (const TextRun& run : line.runs) runs.push_back(JsonOf(run));
  return {{"justification", NameOf(JustificationNames, line.justification)},
          {"size", line.size},
          {"spacingKind", line.spacingKind},
          {"leading", line.leading},
          {"runs", std::move(runs)}};
}

Json JsonOf(const paragraphStruct& paragraph) {
  return {{"lineFit", paragraph.lineFit},         {"fit", paragraph.fit},
          {"frameMode", paragraph.frameMode},     {"flags", paragraph.flags},
          {"leftMargin", paragraph.leftMargin},   {"topMargin", paragraph.topMargin},
          {"rightMargin", paragraph.rightMargin}, {"bottomMargin", paragraph.bottomMargin},
          {"leftPercent", paragraph.leftPercent}, {"rightPercent", paragraph.rightPercent}};
}

Json JsonOf(const GraphicCut& cut) {
  return {{"enabled", cut.enabled},
          {"resolution", cut.resolution},
          {"colorKind", NameOf(CutColorNames, cut.kind)},
          {"color", JsonOf(cut.color)}};
}

// The members that a shape adds to its object. Those of a group are added by the caller, who has
// the document.
struct ShapeWriter {
  Json& json;
  Expected<void>& read;  // the first plane that can't be read

  void operator()(const GroupShape&) const { json["kind"] = "group"; }
  void operator()(const PathShape& path) const {
    json["kind"] = "path";
    json["cutLine"] = NameOf(CutLineNames, path.cutLine);
    if (path.fillRule != FillRule::EvenOdd) json["fillRule"] = NameOf(FillRuleNames, path.fillRule);
    if (path.fillsOpen) json["fillsOpen"] = true;
    Json parts = Json::array();
    for (const SubPath& part : path.subPaths) parts.push_back(JsonOf(part));
    json["subPaths"] = std::move(parts);
  }
  void operator()(const TextShape& text) const {
    json["kind"] = "text";
    json["frame"] = JsonOf(text.frame);
    json["paragraph"] = JsonOf(text.paragraph);
    json["lineMode"] = text.lineMode;
    json["justifyMode"] = text.justifyMode;
    Json lines = Json::array();
    for (const TextLine& line : text.lines) lines.push_back(JsonOf(line));
    json["lines"] = std::move(lines);
  }
  void operator()(const ArcTextShape& text) const {
    json["kind"] = "arcText";
    json["centre"] = JsonOf(text.center);
    json["radius"] = text.radius;
    json["rotation"] = text.rotation;
    json["justification"] = NameOf(JustificationNames, text.justification);
    json["run"] = JsonOf(text.run);
  }
  void operator()(const PlateShape& plate) const {
    json["kind"] = "plate";
    json["wanted"] = plate.wanted;
    json["width"] = plate.width;
    json["height"] = plate.height;
    json["margins"] = JsonOf(plate.margins);
    json["horizontalGap"] = plate.horizontalGap;
    json["verticalGap"] = plate.verticalGap;
    json["fromBottom"] = plate.fromBottom;
    json["start"] = JsonOf(plate.start);
    json["placed"] = plate.placed;
    json["continuation"] = plate.continuation;
    Json panes = Json::array();
    for (const CWorldRect& pane : plate.panes) panes.push_back(JsonOf(pane));
    json["panes"] = std::move(panes);
  }
  void operator()(const GraphicShape& graphic) const {
    json["kind"] = "graphic";
    json["fileKind"] = NameOf(GraphicKindNames, graphic.kind);
    json["name"] = Utf8(graphic.name);
    json["width"] = graphic.width;
    json["height"] = graphic.height;
    if (graphic.extent) json["extent"] = JsonOf(*graphic.extent);
    if (!graphic.reason.empty()) json["reason"] = Utf8(graphic.reason);
    if (graphic.whole) json["whole"] = true;
    if (graphic.cut != GraphicCut()) json["cutData"] = JsonOf(graphic.cut);
    if (graphic.halfCut != GraphicCut()) json["halfCutData"] = JsonOf(graphic.halfCut);
    if (graphic.preview) json["preview"] = os::Base64FromBytes(*graphic.preview);
    json["file"] = graphic.bytes ? os::Base64FromBytes(*graphic.bytes) : std::string();
  }
  void operator()(const BitmapShape& bitmap) const {
    json["kind"] = "graphic";
    json["fileKind"] = NameOf(GraphicKindNames, GraphicKind::Png);
    json["name"] = "bitmap.png";
    json["width"] = bitmap.width;
    json["height"] = bitmap.height;
    json["file"] = os::Base64FromBytes(PngOfBitmap(*bitmap.pixels));
  }
  void operator()(const DrillShape& drill) const {
    json["kind"] = "drillPoint";
    json["centre"] = JsonOf(drill.centre);
    json["diameter"] = drill.diameter;
  }
  void operator()(const SeparationShape& plane) const {
    json["kind"] = "separation";
    json["ink"] = JsonOf(plane.ink);
    json["page"] = plane.page;
    json["pixels"] = {plane.pixelWidth, plane.pixelHeight};
    json["resolution"] = {plane.xResolution, plane.yResolution};
    json["packed"] = PackedText(plane);
  }

 private:
  [[nodiscard]] std::string PackedText(const SeparationShape& plane) const {
    if (const auto* kept = dynamic_cast<const KeptPixels*>(plane.pixels.get()))
      return os::Base64FromBytes(kept->Packed());
    const auto pixels = plane.pixels->Read();
    if (pixels) return os::Base64FromBytes(PackPixels(*pixels));
    if (read) read = pixels.Error();
    return {};
  }
};

Json JsonOf(const Attributes& attributes) {
  Json json = {{"layer", JsonOf(attributes.layer)},
               {"lineColor", JsonOf(attributes.lineColor)},
               {"lineWidth", attributes.lineStyle.width},
               {"lineStyle", attributes.lineStyle.style},
               {"sheetLayer", attributes.sheetLayer},
               {"pages", {attributes.pages.first, attributes.pages.last}}};
  Json traits = Json::array();
  for (const auto& [trait, name] : TraitNames) {
    if (trait != DBTRAIT_SELECTED && (attributes.traits & trait) != 0) traits.push_back(name);
  }
  json["traits"] = std::move(traits);
  const CPropertyLocks& locks = attributes.locks;
  if (!(locks == CPropertyLocks())) {
    json["locks"] = {{"color", locks.color},
                     {"font", locks.font},
                     {"lineStyle", locks.lineStyle},
                     {"size", locks.size}};
  }
  const TM& tm = attributes.matrix;
  if (!(tm == TM())) json["matrix"] = {tm.a, tm.b, tm.c, tm.d, tm.tx, tm.ty};
  return json;
}

Json MembersJson(const Document& document, ObjectHandle root, Expected<void>& read);

Json ObjectJson(const Document& document, ObjectHandle handle, Expected<void>& read) {
  const Object& object = *document.Find(handle);
  Json json = {{"id", handle}};
  std::visit(ShapeWriter{json, read}, object.shape);
  // A plate that was taken out is in no file that a plate could be continued by.
  const auto* plate = std::get_if<PlateShape>(&object.shape);
  if (plate && !document.Holds(plate->continuation)) json["continuation"] = 0;
  json.update(JsonOf(object.attributes));
  if (std::holds_alternative<GroupShape>(object.shape)) {
    json["members"] = MembersJson(document, handle, read);
  }
  return json;
}

Json MembersJson(const Document& document, ObjectHandle root, Expected<void>& read) {
  Json members = Json::array();
  for (const ObjectHandle member : document.Members(root)) {
    members.push_back(ObjectJson(document, member, read));
  }
  return members;
}

Json PaletteJson(const Palette& palette) {
  Json entries = Json::array();
  for (const PaletteEntry& entry : palette.Entries()) {
    Json json = JsonOf(entry.color);
    json["spot"] = entry.spot;
    entries.push_back(std::move(json));
  }
  return entries;
}

Json SheetLayersJson(const Document& document) {
  Json layers = Json::array();
  for (const auto& [number, layer] : document.SheetLayers()) {
    layers.push_back({{"number", number},
                      {"name", Utf8(layer.name)},
                      {"type", layer.sheetType},
                      {"substrate", layer.hasSubstrate}});
  }
  return layers;
}

// Line feeds are between values only: within a text JSON escapes them.
void AppendIndented(std::string& text, const Json& json, std::string_view indent) {
  const std::string own = json.dump(1, ' ', false, Json::error_handler_t::replace);
  for (const char letter : own) {
    text += letter;
    if (letter == '\n') text += indent;
  }
}

// The objects as the array at the document's end, one after the other: as values they would take
// many times the memory of the document and of its text.
//
//     {
//      "format": "rastrel-document",        which a reader needs before the objects
//      "version": 1,
//      "unit": "cm",
//      "blank": { ... },  "displayPage": 1,  "rotation": 0,  "plates": { ... },
//      "palette": [ ... ],  "sheetLayers": [ ... ],
//      "objects": [
//       {"id": 2, "kind": "plate", ...shape..., ...attributes...},
//       {"id": 3, "kind": "group", ...attributes..., "members": [ {"id": 4, ...}, ... ]}
//      ]
//     }
Expected<void> AppendObjects(std::string& text, const Document& document) {
  Expected<void> read;
  text += ",\n \"objects\": [";
  bool first = true;
  for (const ObjectHandle member : document.Members(host::DocumentRoot)) {
    text += first ? "\n  " : ",\n  ";
    AppendIndented(text, ObjectJson(document, member, read), "  ");
    if (!read) return read;
    first = false;
  }
  text += first ? "]" : "\n ]";
  return {};
}

}  // namespace

Expected<std::string> WriteDocumentText(const Document& document) {
  const SignBlank& blank = document.Blank();
  const PlateParameters& plates = document.Plates();
  Json json = {
      {"format", DocumentFormatName},
      {"version", DocumentVersion},
      {"unit", "cm"},
      {"blank", {{"width", blank.width}, {"height", blank.height}, {"origin", blank.origin}}},
      {"displayPage", document.DisplayPage()},
      {"rotation", document.Rotation()},
      {"plates",
       {{"margins", JsonOf(plates.margins)},
        {"horizontalGap", plates.horizontalGap},
        {"verticalGap", plates.verticalGap}}}};
  json["palette"] = PaletteJson(document.Colors());
  json["sheetLayers"] = SheetLayersJson(document);
  std::string text = json.dump(1, ' ', false, Json::error_handler_t::replace);
  text.resize(text.size() - std::string_view("\n}").size());
  if (const auto read = AppendObjects(text, document); !read) return read.Error();
  text += "\n}\n";
  return text;
}

std::string DocumentText(const Document& document) { return *WriteDocumentText(document); }

Expected<void> SaveDocument(const Document& document, const std::wstring& path) {
  const auto text = WriteDocumentText(document);
  if (!text) return text.Error();
  return os::ReplaceFile(path, *text);
}

}  // namespace rastrel::document
