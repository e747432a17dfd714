#include "rastrel/imports/cr2/plate.h"

#include "rastrel/imports/add_plate_object.h"
#include "rastrel/imports/cr2/palette.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/settings.h"
#include "rastrel/platform/values/world.h"

namespace rastrel::imports {
namespace {

constexpr int OriginTopLeft = 1;
constexpr int OriginBottomLeft = 7;

double World(double inches) { return inches * host::CentimetresPerInch; }

CWorldRect Margins(const CR2_MARGINS& margins) {
  return {
      .left = margins.left, .top = margins.top, .right = margins.right, .bottom = margins.bottom};
}

CWorldRect MarginsInWorld(const CR2_MARGINS& inches) {
  return {.left = World(inches.left),
          .top = World(inches.top),
          .right = World(inches.right),
          .bottom = World(inches.bottom)};
}

CVKColor ColorWithoutStroke(host::Application& application) {
  constexpr int Invisible = -1;
  const bool invisible = GetIntKorvane(L"ZML IMPORT", L"Invisible Plate", 1, DS_USER, nullptr) != 0;
  CVKColor color(0, COLORSPACE_RGB, 0, 0);
  application.FindPaletteColor(invisible ? Invisible : 0, color);
  return color;
}

void FillVisiblePlate(TemplateImport& import, host::ObjectHandle plate, const CVKColor& fill) {
  CVKColor present;
  import.document.store.DBGetLayer(plate, present);
  if (import.document.application.IsInvisibleColor(present) != 0) return;
  import.document.store.DBSetLayer(plate, fill);
}

}  // namespace

void SetupSignBlank(TemplateImport& import, CR2_TABLE_SIZE& table) {
  host::Application& application = import.document.application;
  CR2_PLACEMENT& placement = table.placement;
  application.SetSignBlankSize(World(placement.width), World(placement.height), 1);
  if (placement.origin != OriginTopLeft && placement.origin != OriginBottomLeft)
    placement.origin = OriginTopLeft;
  application.SetSignBlankOriginPos(placement.origin);
}

void SetupSignBlankAsGiven(TemplateImport& import, const CR2_TABLE_SIZE& table) {
  host::Application& application = import.document.application;
  application.SetSignBlankSize(table.placement.width, table.placement.height, 1);
  application.SetSignBlankOriginPos(table.placement.origin);
}

std::optional<host::ObjectHandle> CreatePlate(TemplateImport& import, const CR2_TABLE_SIZE& table,
                                              const CR2_TEMPLATE& plateTemplate) {
  const CVKColor* const stroke = plateTemplate.colors.stroke.get();
  if (stroke != nullptr) AddMissingPaletteColor(import.document.application, *stroke);
  const double gap = World(plateTemplate.spacing);
  return AddPlateObject(import.document,
                        {.count = 1,
                         .width = World(plateTemplate.placement.width),
                         .height = World(plateTemplate.placement.height),
                         .margins = MarginsInWorld(table.margins),
                         .horizontalGap = gap,
                         .verticalGap = gap,
                         .color = stroke != nullptr ? *stroke : CVKColor(0, COLORSPACE_RGB, 0, 0)});
}

std::optional<host::ObjectHandle> CreateZmlPlate(TemplateImport& import,
                                                 const CR2_TABLE_SIZE& table,
                                                 const CR2_TEMPLATE& plateTemplate) {
  const CR2_COLORS& colors = plateTemplate.colors;
  const std::optional<host::ObjectHandle> plate = AddPlateObject(
      import.document,
      {.count = 1,
       .width = plateTemplate.placement.width,
       .height = plateTemplate.placement.height,
       .margins = Margins(table.margins),
       .horizontalGap = plateTemplate.xSpacing,
       .verticalGap = plateTemplate.ySpacing,
       .color = colors.stroke ? *colors.stroke : ColorWithoutStroke(import.document.application)},
      {.setsLineColor = false, .keepsColors = 1});
  if (plate && colors.fill) FillVisiblePlate(import, *plate, *colors.fill);
  return plate;
}

}  // namespace rastrel::imports
