#include "rastrel/imports/cr2/load_graphic.h"

#include <optional>

#include "rastrel/imports/cr2/frame_position.h"
#include "rastrel/imports/cr2/line_style.h"
#include "rastrel/imports/cr2/load_settings.h"
#include "rastrel/imports/cr2/loaded_objects.h"
#include "rastrel/imports/cr2/pane_point.h"
#include "rastrel/imports/cr2/text_variables.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/settings.h"

namespace rastrel::imports {
namespace {

BOUNDS BoundsOf(host::ObjectStore& store, const ObjectList& objects) {
  BOUNDS bounds;
  store.DBGetSelectedListBounds(objects.Get(), bounds);
  return bounds;
}

/// Lines of loaded objects get the cut line's width. An object without a line keeps none.
void SetLineWidths(host::ObjectStore& store, const ObjectList& objects, double width) {
  if (width < 0.0) return;
  for (const host::ObjectHandle object : objects.Members()) {
    LINESTYLE style;
    store.DBGetLineStyle(object, style);
    if (LineKind(style) == LINESTYLE_NONE) continue;
    if (!IsNoLine(width)) {
      SetStroke(style, width);
      store.DBSetLineStyle(object, style);
    }
    store.DBInvalidateBounds(object);
    store.DBValidateBounds(object);
  }
}

/// The matrix from loaded objects to the frame of a zml placement.
TM MatrixToFrame(const CR2_PLACEMENT& placement, const BOUNDS& objects) {
  BOUNDS frame;
  GetFramePosition(SizedToObjects(placement, objects), frame);
  TM matrix;
  GetTmFromBounds(objects, frame, matrix);
  return matrix;
}

}  // namespace

ObjectList LoadGraphic(TemplateImport& import, const GraphicToLoad& graphic) {
  host::ObjectStore& store = import.document.store;
  const int page = PageOf(import.document, graphic.pane);
  const int thickLines = GetIntKorvane(L"Preferences", L"DontStripThickLine", 1, DS_USER, nullptr);
  const SettingsDuringLoad settings(store, Cr2LoadSettings());
  ObjectList objects = LoadObjects(import, graphic.path, graphic.purpose, thickLines);
  if (objects.Get() == host::ListHandle::None) return objects;
  AssignSheetLayer(import, objects, graphic.pane.plate);
  const BOUNDS bounds = BoundsOf(store, objects);
  const CR2_PLACEMENT placement = WithOrigin(import.document, graphic.placement);
  PlaceObjects(import, objects, CreateTmForPlacement(graphic.pane.edges, placement, bounds), page);
  return objects;
}

ObjectList LoadGraphic(TemplateImport& import, const GraphicToLoad& graphic,
                       const CR2_TEMPLATE& plate, double lineWidth,
                       const CR2_GRAPHIC_FRAME* frame) {
  host::ObjectStore& store = import.document.store;
  const int page = PageOf(import.document, graphic.pane);
  const SettingsDuringLoad settings(store, ZmlLoadSettings());
  ObjectList loaded = LoadObjects(import, graphic.path, graphic.purpose, lineWidth > 0.0 ? 1 : 0);
  if (loaded.Get() == host::ListHandle::None) return loaded;
  AssignSheetLayer(import, loaded, graphic.pane.plate);
  // Replacing text may make other objects of the same content, which the selection then has.
  std::optional<ObjectList> rebuilt;
  if (frame != nullptr) {
    ReplaceVariables(import.document, loaded, *frame);
    rebuilt.emplace(store, store.DSCreateSelectedList());
  }
  ObjectList& objects = rebuilt ? *rebuilt : loaded;
  CR2_PLACEMENT placement = graphic.placement;
  const CWorldPoint point =
      GetPointInPane(graphic.pane.edges, plate, {.x = placement.x, .y = placement.y});
  placement.x = point.x;
  placement.y = point.y;
  SetLineWidths(store, objects, lineWidth);
  const BOUNDS bounds = BoundsOf(store, objects);
  PlaceObjects(import, objects, MatrixToFrame(placement, bounds), page);
  return std::move(objects);
}

}  // namespace rastrel::imports
