#include "rastrel/imports/add_plate_object.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "rastrel/job/app_log.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/plate_object.h"
#include "rastrel/platform/host/undo_step.h"

namespace rastrel::imports {
namespace {

constexpr int OriginBottomLeft = 7;

/// A host refuses panes that fit no page. One that neither refuses nor ever lays a pane out would
/// keep the library asking for pages without end.
constexpr int MaximumPagesWithoutPane = 1000;

struct Blank {
  double width = 0;
  double height = 0;
  int origin = 0;
};

CWorldPoint StartPoint(const Blank& blank, const CWorldRect& margins) {
  if (blank.origin == OriginBottomLeft) return {.x = margins.left, .y = margins.bottom};
  return {.x = margins.left, .y = blank.height - margins.top};
}

int LayPanesOut(CGenericPlateObject& plate, const Blank& blank, const CWorldRect& margins) {
  const CWorldPoint start = StartPoint(blank, margins);
  const int panes = blank.origin == OriginBottomLeft
                        ? plate.CreatePanesWithOriginBottomLeft(start, blank.width, blank.height)
                        : plate.CreatePanesWithOriginTopLeft(start, blank.width, blank.height);
  return std::max(panes, 0);
}

void SetPlateAttributes(const DocumentHost& document, host::ObjectHandle object,
                        const CVKColor& color, const PlateStyle& style, int page) {
  host::ObjectStore& store = document.store;
  store.DBSetLayer(object, color);
  if (style.setsLineColor) store.DBSetLineColor(object, color);
  LINESTYLE line;
  store.DBGetLineStyle(object, line);
  line.width = 0.0;
  line.style = (line.style & ~std::uint32_t{LINESTYLE_KIND}) | LINESTYLE_NONE;
  store.DBSetLineStyle(object, line);
  const int sheetLayer = document.application.GetNextEmptyLayer();
  document.application.AddNewSheetLayer(sheetLayer);
  store.DBSetSheetLayer(object, sheetLayer);
  store.DBSetPageRange(object, {.first = page, .last = page});
  document.application.UpdatePageWindow(0);
  store.DBInvalidateBounds(object);
  store.DBValidateBounds(object);
  store.InvalidateObject(object, 1);
}

void AddToDocument(const DocumentHost& document, std::unique_ptr<CGenericPlateObject> plate,
                   const PlateRequest& request, const PlateStyle& style, int page) {
  host::ObjectHandle object = 0;
  if (plate->Add(1, 1, 0, object) == 0) {
    CAppLog::Instance().Printf(L"[Import] the host did not take a plate object");
    return;
  }
  static_cast<void>(plate.release());  // the document's from here on
  {
    const host::UndoStep step(document.store, L"(*v*)Create plate object");
    document.store.DSAddObject(object);
  }
  SetPlateAttributes(document, object, request.color, style, page);
}

void LogRefusal(const PlateRequest& request) {
  CAppLog::Instance().Printf(
      L"[Import] the host refuses a plate of %g by %g cm, which does not fit the sign blank",
      request.width, request.height);
}

/// Lays all panes out, page after page. False if nothing was added for want of room.
bool LayPagesOut(const DocumentHost& document, const PlateRequest& request, const PlateStyle& style,
                 const Blank& blank, int page) {
  bool added = false;
  int pagesWithoutPane = 0;
  for (int left = request.count; left >= 1;) {
    auto plate = document.application.NewGenericPlateObject(left, request.width, request.height,
                                                            request.margins, request.horizontalGap,
                                                            request.verticalGap);
    if (plate == nullptr || pagesWithoutPane == MaximumPagesWithoutPane) {
      LogRefusal(request);
      return added;
    }
    const int panes = LayPanesOut(*plate, blank, request.margins);
    left -= panes;
    pagesWithoutPane = panes == 0 ? pagesWithoutPane + 1 : 0;
    if (panes == 0) {
      plate.reset();
    } else {
      AddToDocument(document, std::move(plate), request, style, page);
      added = true;
    }
    page = document.application.WhatisMaxNumberofPages(0) + 1;
  }
  return added;
}

}  // namespace

std::optional<host::ObjectHandle> AddPlateObject(const DocumentHost& document,
                                                 const PlateRequest& request,
                                                 const PlateStyle& style) {
  if (request.count < 1) return std::nullopt;
  host::Application& application = document.application;
  Blank blank;
  application.GetSignBlankSize(blank.width, blank.height);
  blank.origin = application.GetOriginPosIndex();
  const int shown = application.GetDisplayPage();
  if (!LayPagesOut(document, request, style, blank, shown == 0 ? 1 : shown)) return std::nullopt;
  application.SetPlateObjectParameters(request.margins, request.horizontalGap, request.verticalGap);
  return application.AdjustPlateObjects(0, style.keepsColors, 1);
}

}  // namespace rastrel::imports
