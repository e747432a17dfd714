#include "rastrel/imports/cr2/cut_line.h"

#include "rastrel/imports/cr2/frame_position.h"
#include "rastrel/imports/cr2/line_style.h"
#include "rastrel/imports/cr2/load_graphic.h"
#include "rastrel/imports/cr2/object_list.h"
#include "rastrel/imports/cr2/palette.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/plate_object.h"

namespace rastrel::imports {
namespace {

void StyleObject(TemplateImport& import, host::ObjectHandle object, const CR2_CUTLINE& cutLine) {
  host::ObjectStore& store = import.document.store;
  LINESTYLE style;
  store.DBGetLineStyle(object, style);
  SetStroke(style, cutLine.strokeWidth * host::CentimetresPerInch);
  store.DBSetLineStyle(object, style);
  if (!cutLine.colors.stroke) return;
  AddMissingPaletteColor(import.document.application, *cutLine.colors.stroke);
  store.DBSetLineColor(object, *cutLine.colors.stroke);
}

/// Sets a stroke color on an object that has a visible line.
void ColorLine(const DocumentHost& document, host::ObjectHandle object, const CVKColor& stroke) {
  LINESTYLE style;
  document.store.DBGetLineStyle(object, style);
  if (LineKind(style) == LINESTYLE_NONE) return;
  CVKColor present;
  if (document.store.DBGetLineColor(object, present) == 0) return;
  if (document.application.IsInvisibleColor(present) != 0) return;
  document.store.DBSetLineColor(object, stroke);
}

/// Sets a fill color on an object whose inside is painted.
void ColorInside(const DocumentHost& document, host::ObjectHandle object, const CVKColor& fill) {
  const DBElement* const element = document.store.DBGetObjectElement(object);
  if (element == nullptr || !element->IsFilled()) return;
  CVKColor present;
  document.store.DBGetLayer(object, present);
  if (document.application.IsInvisibleColor(present) != 0) return;
  document.store.DBSetLayer(object, fill);
}

void ColorObjects(const DocumentHost& document, const ObjectList& objects,
                  const CR2_COLORS& colors) {
  for (const host::ObjectHandle object : ColoredObjects(document.store, objects)) {
    if (colors.stroke) ColorLine(document, object, *colors.stroke);
    if (colors.fill) ColorInside(document, object, *colors.fill);
  }
}

}  // namespace

void AddCutLineToPlate(TemplateImport& import, host::ObjectHandle plate,
                       const CR2_TEMPLATE& plateTemplate, const CR2_CUTLINE& cutLine) {
  host::ObjectStore& store = import.document.store;
  CGenericPlateObject* const object = PlateObjectOf(store, plate);
  const CPane* const first = object != nullptr ? object->GetFirstPane() : nullptr;
  if (first == nullptr) return;
  const PanePlace pane = PlaceOf(*first, plate);
  const int page = PageOf(import.document, pane);
  const ObjectList objects = LoadGraphic(
      import, {.path = cutLine.file,
               .purpose = LoadPurpose::CutLine,
               .pane = pane,
               .placement = EffectivePlacement(cutLine.placement, plateTemplate.margins)});
  for (const host::ObjectHandle loaded : objects.Members()) StyleObject(import, loaded, cutLine);
  GroupOnPage(store, objects, page);
}

void AddCutLineToPane(TemplateImport& import, const PanePlace& pane,
                      const CR2_TEMPLATE& plateTemplate, const CR2_CUTLINE& cutLine) {
  host::ObjectStore& store = import.document.store;
  const VK_PAGE_RANGE pages = store.DBGetPageRange(pane.plate);
  const int layer = store.DBGetSheetLayer(pane.plate);
  const ObjectList objects = LoadGraphic(import,
                                         {.path = cutLine.file,
                                          .purpose = LoadPurpose::CutLine,
                                          .pane = pane,
                                          .placement = cutLine.placement},
                                         plateTemplate, cutLine.strokeWidth, nullptr);
  if (cutLine.colors.fill)
    AddMissingPaletteColor(import.document.application, *cutLine.colors.fill);
  if (cutLine.colors.stroke)
    AddMissingPaletteColor(import.document.application, *cutLine.colors.stroke);
  ColorObjects(import.document, objects, cutLine.colors);
  for (const host::ObjectHandle object : objects.Members()) {
    store.DBSetPageRange(object, pages);
    store.DBSetSheetLayer(object, layer);
  }
  if (!cutLine.group || objects.Count() < 2) return;
  const host::ObjectHandle group = GroupObjects(store, objects);
  if (group == 0) return;
  store.DBSetPageRange(group, pages);
  store.DBSetSheetLayer(group, layer);
}

}  // namespace rastrel::imports
