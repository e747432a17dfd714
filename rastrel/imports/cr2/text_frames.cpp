#include "rastrel/imports/cr2/text_frames.h"

#include "rastrel/imports/cr2/frame_position.h"
#include "rastrel/imports/cr2/frame_text.h"
#include "rastrel/imports/cr2/pane_point.h"
#include "rastrel/platform/host/application.h"
#include "rastrel/platform/host/object_store.h"
#include "rastrel/platform/host/text_compose.h"

namespace rastrel::imports {
namespace {

constexpr int KeepText = 1;
constexpr int DocumentWindow = 2;

/// Puts the text that was closed last on the page of a pane that the host named an object for. The
/// engine puts it on the page on show.
void MoveToPageOf(const DocumentHost& document, const PanePlace& pane) {
  if (!pane.isNamed) return;
  const host::ObjectHandle object = document.text.GetTerminateTextEditHI();
  if (object != 0) document.store.DBSetPageRange(object, document.store.DBGetPageRange(pane.plate));
}

BOUNDS FrameOfZml(const PanePlace& pane, const CR2_TEMPLATE& plateTemplate,
                  CR2_PLACEMENT placement) {
  const CWorldPoint point =
      GetPointInPane(pane.edges, plateTemplate, {.x = placement.x, .y = placement.y});
  placement.x = point.x;
  placement.y = point.y;
  BOUNDS frame;
  GetFramePosition(placement, frame);
  return frame;
}

}  // namespace

void AddTextToPane(TemplateImport& import, const PanePlace& pane, const CR2_TEMPLATE& plateTemplate,
                   const OutputFilter& filter, const std::vector<CR2_TEXT_FRAME>& frames) {
  for (const CR2_TEXT_FRAME& frame : frames) {
    const CR2_PLACEMENT placement =
        WithOrigin(import.document, EffectivePlacement(frame.placement, plateTemplate.margins));
    const BOUNDS bounds = GetFramePosition(pane.edges, placement);
    const FrameText set = SetFrameText(import, Cr2TextRules(), filter, bounds, frame.texts);
    if (set == FrameText::Cancelled) return;
    if (set == FrameText::NotOpened) continue;
    import.document.text.TerminateNewText(nullptr, KeepText);
    MoveToPageOf(import.document, pane);
  }
}

void AddTextToPane(TemplateImport& import, const PanePlace& pane, const CR2_TEMPLATE& plateTemplate,
                   const std::vector<CR2_TEXT_FRAME>& frames) {
  host::ObjectStore& store = import.document.store;
  host::TextCompose& text = import.document.text;
  const VK_PAGE_RANGE pages = store.DBGetPageRange(pane.plate);
  const int layer = store.DBGetSheetLayer(pane.plate);
  for (const CR2_TEXT_FRAME& frame : frames) {
    const BOUNDS bounds = FrameOfZml(pane, plateTemplate, frame.placement);
    const FrameText set = SetFrameText(import, ZmlTextRules(), OutputFilter(), bounds, frame.texts);
    if (set == FrameText::Cancelled) return;
    if (set == FrameText::NotOpened) continue;
    text.TerminateNewText(import.document.application.GetWindowHandle(DocumentWindow), KeepText);
    const host::ObjectHandle object = text.GetTerminateTextEditHI();
    if (object == 0) continue;
    store.DBSetPageRange(object, pages);
    store.DBSetSheetLayer(object, layer);
  }
}

}  // namespace rastrel::imports
