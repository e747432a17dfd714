#include "rastrel/imports/cr2/pane_place.h"

#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/object_store.h"

namespace rastrel::imports {

PanePlace PlaceOf(const CPane& pane, host::ObjectHandle plate) {
  const host::ObjectHandle named = pane.GetPlateObject();
  return {.edges = {.left = pane.GetLeft(),
                    .top = pane.GetTop(),
                    .right = pane.GetRight(),
                    .bottom = pane.GetBottom()},
          .plate = named != 0 ? named : plate,
          .isNamed = named != 0};
}

int PageOf(const DocumentHost& document, const PanePlace& pane) {
  const int shown = document.application.GetDisplayPage();
  if (pane.isNamed) return document.store.DBGetPageRange(pane.plate).first;
  return shown == 0 ? 1 : shown;
}

CR2_PLACEMENT WithOrigin(const DocumentHost& document, const CR2_PLACEMENT& placement) {
  CR2_PLACEMENT with = placement;
  if (with.origin != 0) return with;
  CVelumark5View* const view = document.application.UIGetActiveView();
  if (view != nullptr) with.origin = view->GetDocument()->GetOrigin();
  return with;
}

}  // namespace rastrel::imports
