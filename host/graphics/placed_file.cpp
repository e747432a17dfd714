#include "host/graphics/placed_file.h"

#include <utility>

#include "host/graphics/eps_parts.h"
#include "host/graphics/graphic_file.h"
#include "host/graphics/picture.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"

namespace rastrel::graphics {

using document::CutColor;
using document::Document;
using document::GraphicCut;
using document::GraphicKind;
using document::GraphicShape;
using document::ObjectHandle;

namespace {

Expected<GraphicCut> GraphicCutOf(const CPS2CutData& data, const char* line) {
  if (data.resolution < GraphicCut::LowestResolution ||
      data.resolution > GraphicCut::HighestResolution) {
    return FailureOf(std::string("the resolution of the ") + line + ", " +
                     std::to_string(data.resolution) + " dpi, is not between " +
                     std::to_string(GraphicCut::LowestResolution) + " and " +
                     std::to_string(GraphicCut::HighestResolution));
  }
  GraphicCut cut;
  switch (data.colorKind) {
    case CutColorRgb: cut.kind = CutColor::Rgb; break;
    case CutColorCmyk: cut.kind = CutColor::Cmyk; break;
    case CutColorNamed: cut.kind = CutColor::Named; break;
    default:
      return FailureOf(std::string("the colour of the ") + line + " is of the unknown kind " +
                       std::to_string(data.colorKind));
  }
  cut.resolution = data.resolution;
  cut.enabled = data.enabled != 0;
  cut.color = data.color;
  return cut;
}

}  // namespace

Expected<GraphicShape> ReadPlacedFile(const std::wstring& path, const DrawingLimits& limits) {
  auto bytes = os::ReadWholeFile(path, LargestGraphicFile);
  if (!bytes) return bytes.Error();
  const auto kind = PlacedKindOf(*bytes);
  if (!kind) return FailureOf("it is neither PDF, EPS nor PostScript");
  if (document::IsPostScript(*kind) && !PostScriptPart(*bytes)) {
    return FailureOf("its PostScript is not all there");
  }
  GraphicShape graphic;
  graphic.kind = *kind;
  const os::PathParts parts = os::SplitPath(path);
  graphic.name = parts.name + parts.extension;
  graphic.bytes = std::make_shared<const std::string>(std::move(*bytes));
  graphic.whole = document::IsPostScript(*kind);
  const auto size = MeasureGraphic(graphic.kind, graphic.bytes, limits, EpsPart::Area);
  if (!size) return size.Error();
  graphic.width = size->width;
  graphic.height = size->height;
  return graphic;
}

Expected<ObjectHandle> PlaceFile(Document& document, const std::wstring& path,
                                 const DrawingLimits& limits) {
  auto graphic = ReadPlacedFile(path, limits);
  if (!graphic) return graphic.Error();
  const ObjectHandle handle = document.Create(*std::move(graphic), document.NewAttributes());
  if (!document.Insert(handle, host::DocumentRoot)) return FailureOf("the document is full");
  return handle;
}

Expected<void> SetPlacedCuts(Document& document, ObjectHandle handle, const PlacedCuts& cuts) {
  const document::Object* found = document.Find(handle);
  if (!found || !std::holds_alternative<GraphicShape>(found->shape)) {
    return FailureOf("the object is no placed file");
  }
  auto cut = GraphicCutOf(cuts.cut, "cut line");
  if (!cut) return cut.Error();
  auto halfCut = GraphicCutOf(cuts.halfCut, "half-cut line");
  if (!halfCut) return halfCut.Error();
  auto& graphic = std::get<GraphicShape>(document.Edit(handle)->shape);
  graphic.cut = *std::move(cut);
  graphic.halfCut = *std::move(halfCut);
  return {};
}

void PlaceCutResult(document::DocumentStore& store, ObjectHandle handle, ObjectHandle result) {
  const document::Object* found = store.GetDocument().Find(handle);
  const auto* graphic = found ? std::get_if<GraphicShape>(&found->shape) : nullptr;
  if (!graphic || graphic->kind == GraphicKind::PostScript) return;
  const TM place = found->attributes.matrix;
  store.DBApplyTM(result, {1, 0, 0, 1, 0, graphic->height});
  store.DBApplyTM(result, place);
}

}  // namespace rastrel::graphics
