#include "rastrel/imports/abb_run.h"

#include <algorithm>
#include <cwchar>
#include <optional>
#include <string>

#include "rastrel/imports/add_plate_object.h"
#include "rastrel/imports/text_placing.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/plate_object.h"
#include "rastrel/platform/host/selected_object_list.h"
#include "rastrel/platform/values/smart_double.h"

namespace rastrel::imports {
namespace {

/// Margins of text without a text frame of its own, per mille.
constexpr int DefaultMargin = 220;

/// Diameter of a hole without one in the file, in world units: 0.16 inches, as the number that
/// documents already hold.
constexpr double DefaultDiameter = 0.40640000000000004;

/// World units of a text unit.
constexpr double WorldFromText = 0.00254;

/// The host keeps places of drill points in 32 bits.
double WithinPlaces(double place) { return std::clamp(place, -2147483648.0, 2147483647.0); }

}  // namespace

bool StartCenteredText(PlacedText& text, const NewWorldPt& first, const NewWorldPt& second,
                       int marginPercent) {
  if (!OpenText(text, first, second)) return false;
  SetTextLines(text, JUSTIFY_CENTER);
  // Unsigned, so that a margin beyond all measure wraps like the host's own numbers.
  const auto perMille = static_cast<int>(static_cast<unsigned>(marginPercent) * 10U);
  SetTextMargins(text, marginPercent == 0 ? DefaultMargin : perMille);
  return true;
}

void AbbRun::Import(tagABB_PLATE_DATA& record) {
  const tagABB_PLATE& plate = *record.plates.front();
  if (!AddPane(plate)) return;
  const Pane pane = FindPane(plate);
  AddTexts(record, pane);
  for (const auto& point : record.drillPoints) AddDrillPoint(*point, pane);
}

bool AbbRun::AddPane(const tagABB_PLATE& plate) {
  const CVKColor color = PaletteColorOrBlack(m_Document.application, plate.color.c_str());
  if (ExtendLastPlate(plate)) return true;
  return AddPlateObject(m_Document, {.width = plate.width * host::CentimetresPerInch,
                                     .height = plate.height * host::CentimetresPerInch,
                                     .margins = {},
                                     .color = color})
      .has_value();
}

bool AbbRun::ExtendLastPlate(const tagABB_PLATE& plate) {
  if (m_Last.object == 0 || !(SmartDouble(m_Last.width) == SmartDouble(plate.width)) ||
      !(SmartDouble(m_Last.height) == SmartDouble(plate.height)))
    return false;
  CGenericPlateObject* const object = PlateObjectOf(m_Document.store, m_Last.object);
  if (object == nullptr) return false;
  const int count = object->GetPaneCount();
  const double width = object->GetPaneWidth();
  const double height = object->GetPaneHeight();
  const CWorldRect margins = object->GetMargins();
  const double horizontalGap = object->GetHorizontalGap();
  const double verticalGap = object->GetVerticalGap();
  object->ResetData(count + 1, width, height, margins, horizontalGap, verticalGap, {}, 0);
  return true;
}

AbbRun::Pane AbbRun::FindPane(const tagABB_PLATE& plate) {
  host::ObjectStore& store = m_Document.store;
  Pane pane;
  const host::ListHandle list = store.DBCreateList(
      host::DocumentRoot, DBLIST_MEMBERS | DBLIST_ALL_PAGES, ObjFilter_IsGenericPlate);
  const host::ObjectHandle object = store.DBGetLastMember(list);
  if (object != 0) {
    if (const CGenericPlateObject* found = PlateObjectOf(store, object))
      pane.bounds = found->GetLastPaneBounds();
    m_Last = {.object = object, .width = plate.width, .height = plate.height};
    pane.pages = store.DBGetPageRange(object);
    pane.sheetLayer = store.DBGetSheetLayer(object);
  }
  store.DBDestroyList(list);
  return pane;
}

void AbbRun::AddTexts(tagABB_PLATE_DATA& record, const Pane& pane) {
  const tagABB_PLATE& plate = *record.plates.front();
  if (record.texts.empty() || plate.hasText == 0) return;
  const NewWorldPt first{.x = host::TextFromWorld(pane.bounds.left),
                         .y = host::TextFromWorld(pane.bounds.top)};
  const NewWorldPt second{.x = host::TextFromWorld(pane.bounds.right),
                          .y = host::TextFromWorld(pane.bounds.bottom)};
  if (!StartCenteredText(m_Text, first, second, plate.textFrame)) return;
  PasteLines(record);
  FinishText(plate, pane);
}

void AbbRun::PasteLines(tagABB_PLATE_DATA& record) {
  for (const auto& line : record.texts) {
    if (line->data.empty()) continue;
    // The list's end decides, whether or not the last line has a text of its own.
    const bool isLast = line == record.texts.back();
    PasteText(m_Text, line->fontName.data(), line->size, line->data + (isLast ? L"" : L"\r\n"));
    line->fontName.resize(std::wcslen(line->fontName.c_str()));
  }
}

void AbbRun::FinishText(const tagABB_PLATE& plate, const Pane& pane) {
  const host::ObjectHandle object = CloseText(m_Text);
  m_Text.isOpen = false;
  if (object == 0) return;
  host::ObjectStore& store = m_Document.store;
  const CVKColor color = PaletteColorOrBlack(m_Document.application, plate.textColor.c_str());
  store.DBSetLayer(object, color);
  store.DBSetLineColor(object, color);
  store.DBSetPageRange(object, pane.pages);
  store.DBSetSheetLayer(object, pane.sheetLayer);
  store.DBInvalidateBounds(object);
  store.DBValidateBounds(object);
  store.InvalidateObject(object, 1);
}

void AbbRun::AddDrillPoint(const tagDRILLPOINT& point, const Pane& pane) {
  host::ObjectStore& store = m_Document.store;
  host::Application& application = m_Document.application;
  store.DBDeselectAll();
  // Written out as it is computed elsewhere: documents are compared to the last bit.
  const double left = pane.bounds.left / host::CentimetresPerInch;
  const double top = pane.bounds.top / host::CentimetresPerInch;
  const NewWorldPt place{
      .x = WithinPlaces((left + point.x) * host::CentimetresPerInch / WorldFromText),
      .y = WithinPlaces((top - point.y) * host::CentimetresPerInch / WorldFromText)};
  const double diameter =
      point.diameter == 0.0 ? DefaultDiameter : point.diameter * host::CentimetresPerInch;
  application.SetXMLDrillPoint(1, diameter);
  application.SetDrillPointObj(place);
  application.SetXMLDrillPoint(0, 0.0);
  if (const host::ObjectHandle object = CSelectedObjectList(store).GetFirstMember(); object != 0) {
    const CVKColor color = PaletteColorOrBlack(application, point.color.c_str());
    store.DBSetLayer(object, color);
    store.DBSetLineColor(object, color);
    store.DBSetSheetLayer(object, pane.sheetLayer);
    store.DBSetPageRange(object, pane.pages);
  }
  store.DBDeselectAll();
}

}  // namespace rastrel::imports
