#include <nlohmann/json.hpp>
#include <utility>

#include "host/document/document_file.h"
#include "host/document/document_format.h"
#include "host/document/json_reader.h"
#include "host/document/json_stream.h"
#include "host/document/plate_layout.h"
#include "rastrel/platform/os/base64.h"
#include "rastrel/platform/os/file.h"

namespace rastrel::document {

namespace {

CVKColor ColorFrom(const JsonValue& json) {
  if (json.IsText()) {
    if (json.Utf8() != "invisible") json.Fail("is no colour");
    return {-1, COLORSPACE_RGB, 0, 0};
  }
  CVKColor color;
  if (json.Has("cmyk")) {
    const JsonValue parts = json["cmyk"];
    color.SetColor(parts.At(0).Number(), parts.At(1).Number(), parts.At(2).Number(),
                   parts.At(3).Number(), COLORSPACE_CMYK);
    return color;
  }
  const JsonValue parts = json["rgb"];
  const int space = json.Has("space") ? json["space"].Int() : COLORSPACE_RGB;
  color.SetColor(parts.At(0).Number(), parts.At(1).Number(), parts.At(2).Number(),
                 static_cast<COLORSPACE>(space));
  return color;
}

CVKFullColor FullColorFrom(const JsonValue& json) {
  CVKFullColor color(ColorFrom(json["color"]));
  if (json.Has("name")) color.SetColorName(json["name"].Text());
  return color;
}

CWorldPoint PointFrom(const JsonValue& json) { return {json.At(0).Number(), json.At(1).Number()}; }

CWorldRect RectFrom(const JsonValue& json) {
  return {json["left"].Number(), json["top"].Number(), json["right"].Number(),
          json["bottom"].Number()};
}

// Files of versions that knew one kind of cut line say true or false.
CutLine CutLineFrom(const JsonValue& json) {
  if (json.IsText()) return json.Named(CutLineNames);
  return json.Bool() ? CutLine::Cut : CutLine::None;
}

PathShape PathFrom(const JsonValue& json) {
  PathShape path;
  path.cutLine = CutLineFrom(json["cutLine"]);
  if (json.Has("fillRule")) path.fillRule = json["fillRule"].Named(FillRuleNames);
  if (json.Has("fillsOpen")) path.fillsOpen = json["fillsOpen"].Bool();
  json["subPaths"].Each([&](const JsonValue& part) {
    SubPath& added = path.subPaths.emplace_back();
    added.start = PointFrom(part["start"]);
    added.closed = part["closed"].Bool();
    part["segments"].Each([&](const JsonValue& points) {
      PathSegment& segment = added.segments.emplace_back();
      if (points.Count() != 1 && points.Count() != 3) points.Fail("has neither 1 nor 3 points");
      segment.curve = points.Count() == 3;
      for (std::size_t i = 0; i < points.Count(); ++i) {
        segment.points[segment.curve ? i : 2] = PointFrom(points.At(i));
      }
    });
  });
  return path;
}

TextRun RunFrom(const JsonValue& json) {
  TextRun run;
  run.text = json["text"].Text();
  run.font = json["font"].Text();
  run.fontType = json["fontType"].Int();
  if (json.Has("replacement")) run.replacement = json["replacement"].Text();
  run.size = json["size"].Number();
  run.colored = json.Has("color");
  if (run.colored) run.color = FullColorFrom(json["color"]);
  return run;
}

paragraphStruct ParagraphFrom(const JsonValue& json) {
  paragraphStruct paragraph;
  paragraph.lineFit = json["lineFit"].Int();
  paragraph.fit = json["fit"].Int();
  paragraph.frameMode = json["frameMode"].Int();
  paragraph.flags = static_cast<std::uint32_t>(json["flags"].Whole(0, UINT32_MAX));
  paragraph.leftMargin = json["leftMargin"].Number();
  paragraph.topMargin = json["topMargin"].Number();
  paragraph.rightMargin = json["rightMargin"].Number();
  paragraph.bottomMargin = json["bottomMargin"].Number();
  paragraph.leftPercent = json["leftPercent"].Int();
  paragraph.rightPercent = json["rightPercent"].Int();
  return paragraph;
}

TextShape TextFrom(const JsonValue& json) {
  TextShape text;
  text.frame = RectFrom(json["frame"]);
  text.paragraph = ParagraphFrom(json["paragraph"]);
  text.lineMode = json["lineMode"].Int();
  text.justifyMode = json["justifyMode"].Int();
  json["lines"].Each([&](const JsonValue& line) {
    TextLine& added = text.lines.emplace_back();
    added.justification = line["justification"].Named(JustificationNames);
    added.size = line["size"].Number();
    added.spacingKind = line["spacingKind"].Int();
    added.leading = line["leading"].Number();
    line["runs"].Each([&](const JsonValue& run) { added.runs.push_back(RunFrom(run)); });
  });
  return text;
}

ArcTextShape ArcTextFrom(const JsonValue& json) {
  ArcTextShape text;
  text.center = PointFrom(json["centre"]);
  text.radius = json["radius"].NumberAbove0();
  text.rotation = json["rotation"].Number();
  text.justification = json["justification"].Named(JustificationNames);
  text.run = RunFrom(json["run"]);
  if (text.run.text.size() > MaximumArcText) {
    json["run"]["text"].Fail("has more than " + std::to_string(MaximumArcText) +
                             " characters on a circle");
  }
  return text;
}

PlateShape PlateFrom(const JsonValue& json, ObjectHandle own) {
  PlateShape plate;
  plate.wanted = static_cast<int>(json["wanted"].Whole(0, MaximumPanes));
  plate.width = json["width"].NumberAbove0();
  plate.height = json["height"].NumberAbove0();
  plate.margins = RectFrom(json["margins"]);
  plate.horizontalGap = json["horizontalGap"].Number();
  plate.verticalGap = json["verticalGap"].Number();
  plate.fromBottom = json["fromBottom"].Bool();
  plate.start = PointFrom(json["start"]);
  plate.placed = json["placed"].Bool();
  const JsonValue continuation = json["continuation"];
  plate.continuation = static_cast<ObjectHandle>(
      continuation.Whole(0, static_cast<std::int64_t>(Document::MaximumHandles)));
  // A plate is only continued by later ones, so that following them always ends.
  if (plate.continuation != 0 && plate.continuation <= own) {
    continuation.Fail("is no later plate");
  }
  if (json["panes"].Count() > static_cast<std::size_t>(MaximumPanes))
    json.Fail("has too many panes");
  json["panes"].Each([&](const JsonValue& pane) { plate.panes.push_back(RectFrom(pane)); });
  return plate;
}

GraphicCut GraphicCutFrom(const JsonValue& json) {
  GraphicCut cut;
  cut.enabled = json["enabled"].Bool();
  cut.resolution = static_cast<int>(
      json["resolution"].Whole(GraphicCut::LowestResolution, GraphicCut::HighestResolution));
  cut.kind = json["colorKind"].Named(CutColorNames);
  cut.color = FullColorFrom(json["color"]);
  return cut;
}

std::shared_ptr<const std::string> FileFrom(const JsonValue& json) {
  auto bytes = os::BytesFromBase64(json.Utf8());
  if (!bytes) json.Fail("is no base 64");
  return std::make_shared<const std::string>(std::move(*bytes));
}

GraphicShape GraphicFrom(const JsonValue& json) {
  GraphicShape graphic;
  graphic.kind = json["fileKind"].Named(GraphicKindNames);
  graphic.name = json["name"].Text();
  graphic.width = json["width"].NumberAbove0();
  graphic.height = json["height"].NumberAbove0();
  if (json.Has("extent")) graphic.extent = RectFrom(json["extent"]);
  if (json.Has("reason")) graphic.reason = json["reason"].Text();
  if (json.Has("whole")) graphic.whole = json["whole"].Bool();
  if (json.Has("cutData")) graphic.cut = GraphicCutFrom(json["cutData"]);
  if (json.Has("halfCutData")) graphic.halfCut = GraphicCutFrom(json["halfCutData"]);
  if (json.Has("preview")) graphic.preview = FileFrom(json["preview"]);
  graphic.bytes = FileFrom(json["file"]);
  return graphic;
}

SeparationShape SeparationFrom(const JsonValue& json) {
  SeparationShape plane;
  plane.ink = FullColorFrom(json["ink"]);
  plane.page = static_cast<int>(json["page"].Whole(1, INT32_MAX));
  plane.pixelWidth = static_cast<int>(json["pixels"].At(0).Whole(1, MaximumPlaneSide));
  plane.pixelHeight = static_cast<int>(json["pixels"].At(1).Whole(1, MaximumPlaneSide));
  plane.xResolution = json["resolution"].At(0).NumberAbove0();
  plane.yResolution = json["resolution"].At(1).NumberAbove0();
  const std::uint64_t count =
      static_cast<std::uint64_t>(plane.pixelWidth) * static_cast<unsigned>(plane.pixelHeight);
  if (count > MaximumPlanePixels) {
    json["pixels"].Fail("are more than " + std::to_string(MaximumPlanePixels));
  }
  auto packed = os::BytesFromBase64(json["packed"].Utf8());
  if (!packed) json["packed"].Fail("is no base 64");
  plane.pixels = KeptPixels::FromPacked(std::move(*packed), count);
  if (!plane.pixels) json["packed"].Fail("does not hold the plane's pixels");
  return plane;
}

Shape ShapeFrom(const JsonValue& json, ObjectHandle own) {
  const std::string& kind = json["kind"].Utf8();
  if (kind == "group") return GroupShape();
  if (kind == "path") return PathFrom(json);
  if (kind == "text") return TextFrom(json);
  if (kind == "arcText") return ArcTextFrom(json);
  if (kind == "plate") return PlateFrom(json, own);
  if (kind == "graphic") return GraphicFrom(json);
  if (kind == "separation") return SeparationFrom(json);
  if (kind == "drillPoint") {
    return DrillShape{PointFrom(json["centre"]), json["diameter"].NumberAbove0()};
  }
  json["kind"].Fail("unknown kind \"" + kind + "\"");
}

Attributes AttributesFrom(const JsonValue& json) {
  Attributes attributes;
  attributes.layer = ColorFrom(json["layer"]);
  attributes.lineColor = ColorFrom(json["lineColor"]);
  attributes.lineStyle = {json["lineWidth"].Number(),
                          static_cast<std::uint32_t>(json["lineStyle"].Whole(0, UINT32_MAX))};
  attributes.sheetLayer = static_cast<int>(json["sheetLayer"].Whole(0, INT32_MAX));
  attributes.pages.first = static_cast<int>(json["pages"].At(0).Whole(1, Document::LastPage));
  attributes.pages.last =
      static_cast<int>(json["pages"].At(1).Whole(attributes.pages.first, Document::LastPage));
  attributes.traits = 0;
  json["traits"].Each([&](const JsonValue& name) { attributes.traits |= name.Named(TraitNames); });
  if (json.Has("locks")) {
    const JsonValue locks = json["locks"];
    attributes.locks = {locks["color"].Int(), locks["font"].Int(), locks["lineStyle"].Int(),
                        locks["size"].Int()};
  }
  if (json.Has("matrix")) {
    const JsonValue m = json["matrix"];
    attributes.matrix = {m.At(0).Number(), m.At(1).Number(), m.At(2).Number(),
                         m.At(3).Number(), m.At(4).Number(), m.At(5).Number()};
  }
  return attributes;
}

// Makes objects of their values, members before their group.
class ObjectReader {
 public:
  explicit ObjectReader(Document& document) : m_Document(document) {}

  // Reads an object within so many groups. Its members were taken before it, or are in its value.
  void Read(const JsonValue& json, std::size_t groups) {
    if (json.Has("members")) {
      json["members"].Each([&](const JsonValue& member) { Read(member, groups + 1); });
    }
    const ObjectHandle handle = Make(json, groups);
    if (m_Waiting.size() < groups + 2) m_Waiting.resize(groups + 2);
    for (const ObjectHandle member : std::exchange(m_Waiting[groups + 1], {})) {
      if (!m_Document.Insert(member, handle)) json.Fail("has members and is no group");
    }
    if (groups > 0) {
      m_Waiting[groups].push_back(handle);
    } else if (!m_Document.Insert(handle, host::DocumentRoot)) {
      json.Fail("can't be put into the document");
    }
  }

 private:
  ObjectHandle Make(const JsonValue& json, std::size_t groups) {
    const auto handle = static_cast<ObjectHandle>(
        json["id"].Whole(0, static_cast<std::int64_t>(Document::MaximumHandles)));
    Shape shape = ShapeFrom(json, handle);
    if (std::holds_alternative<GroupShape>(shape) && groups >= DeepestGroup) {
      json.Fail("groups stand more than " + std::to_string(DeepestGroup) + " deep in groups");
    }
    if (!m_Document.CreateAs(handle, {std::move(shape), AttributesFrom(json), 0})) {
      json["id"].Fail("is taken, or no number for an object");
    }
    return handle;
  }

  Document& m_Document;
  std::vector<std::vector<ObjectHandle>> m_Waiting;  // members whose group comes, by its depth + 1
};

void ReadSettings(Document& document, const JsonValue& json) {
  const JsonValue blank = json["blank"];
  document.SetBlank({blank["width"].NumberAbove0(), blank["height"].NumberAbove0(),
                     static_cast<int>(blank["origin"].Whole(1, 9))});
  document.SetDisplayPage(static_cast<int>(json["displayPage"].Whole(0, Document::LastPage)));
  if (json.Has("rotation")) document.SetRotation(json["rotation"].Number());
  const JsonValue plates = json["plates"];
  document.SetPlates({RectFrom(plates["margins"]), plates["horizontalGap"].Number(),
                      plates["verticalGap"].Number()});
  Palette palette;
  json["palette"].Each([&](const JsonValue& entry) {
    if (!palette.Add({FullColorFrom(entry), entry["spot"].Bool()})) {
      entry.Fail("names a colour twice");
    }
  });
  document.Colors() = std::move(palette);
  json["sheetLayers"].Each([&](const JsonValue& layer) {
    if (!document.AddSheetLayer({layer["number"].Int(), layer["name"].Text(), layer["type"].Int(),
                                 layer["substrate"].Bool()})) {
      layer.Fail("has a number that is taken or not above 0");
    }
  });
}

// Plates are continued by plates, also within groups.
void CheckContinuations(const Document& document, const JsonValue& json) {
  for (ObjectHandle handle = host::DocumentRoot + 1; handle < document.NextHandle(); ++handle) {
    const Object* object = document.Find(handle);
    const auto* plate = object ? std::get_if<PlateShape>(&object->shape) : nullptr;
    if (!plate || plate->continuation == 0) continue;
    const Object* next = document.Find(plate->continuation);
    if (!next || !std::holds_alternative<PlateShape>(next->shape)) {
      json["objects"].Fail("plate " + std::to_string(handle) + " is continued by no plate");
    }
  }
}

void CheckFormat(const JsonValue& json) {
  if (!json.Has("format") || !json["format"].IsText() ||
      json["format"].Utf8() != DocumentFormatName) {
    json.Fail("is no document of this program");
  }
  const int version = json["version"].Int();
  if (version != DocumentVersion) {
    json["version"].Fail("is " + std::to_string(version) + ", and this program reads version " +
                         std::to_string(DocumentVersion));
  }
}

// Objects are read as they come, unless they are ahead of format and version: as values they would
// take many times the memory of the text and of the document.
std::unique_ptr<Document> DocumentFrom(std::string_view text) {
  auto document = std::make_unique<Document>();
  ObjectReader objects(*document);
  const ElementTaker taker{
      "objects", "members",
      [](const JsonValue& before) {
        if (!before.Has("format") || !before.Has("version")) return false;
        CheckFormat(before);
        return true;
      },
      [&](const JsonValue& object, std::size_t groups) { objects.Read(object, groups); }};
  const nlohmann::json values = ParseJson(text, taker);
  const JsonValue json(values, "");
  CheckFormat(json);
  ReadSettings(*document, json);
  json["objects"].Each([&](const JsonValue& object) { objects.Read(object, 0); });
  CheckContinuations(*document, json);
  return document;
}

}  // namespace

Expected<std::unique_ptr<Document>> ReadDocumentText(std::string_view text) {
  std::unique_ptr<Document> document;
  const auto read = ReadJson([&] { document = DocumentFrom(text); });
  if (read) return document;
  return read.Error().where.empty() ? FailureAt("the file", read.Error()) : read.Error();
}

Expected<std::unique_ptr<Document>> LoadDocument(const std::wstring& path) {
  const auto text = os::ReadWholeFile(path, LargestDocumentFile);
  if (!text) return text.Error();
  return ReadDocumentText(*text);
}

}  // namespace rastrel::document
