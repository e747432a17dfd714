#include "tests/support/recording_document.h"

namespace rastrel::test {

using host::ObjectHandle;

// Attributes, drawing and paths of the recording document.

void RecordingStore::DBSetLayer(ObjectHandle object, const CVKColor& color) {
  m_Calls.Told("DBSetLayer", ObjectText{object}, color);
  if (RecordedObject* found = Find(object)) found->layer = color;
}

int RecordingStore::DBGetLayer(ObjectHandle object, CVKColor& color) {
  const RecordedObject* found = Find(object);
  if (found != nullptr) color = found->layer;
  m_Calls.Answered(color, "DBGetLayer", ObjectText{object});
  return found != nullptr ? 1 : 0;
}

void RecordingStore::DBSetLineColor(ObjectHandle object, const CVKColor& color) {
  m_Calls.Told("DBSetLineColor", ObjectText{object}, color);
  if (RecordedObject* found = Find(object)) found->lineColor = color;
}

int RecordingStore::DBGetLineColor(ObjectHandle object, CVKColor& color) {
  const RecordedObject* found = Find(object);
  if (found != nullptr) color = found->lineColor;
  m_Calls.Answered(color, "DBGetLineColor", ObjectText{object});
  return found != nullptr ? 1 : 0;
}

int RecordingStore::DBGetLineStyle(ObjectHandle object, LINESTYLE& style) {
  const RecordedObject* found = Find(object);
  if (found != nullptr) style = found->lineStyle;
  m_Calls.Answered(style, "DBGetLineStyle", ObjectText{object});
  return found != nullptr ? 1 : 0;
}

void RecordingStore::DBSetLineStyle(ObjectHandle object, const LINESTYLE& style) {
  m_Calls.Told("DBSetLineStyle", ObjectText{object}, style);
  if (RecordedObject* found = Find(object)) found->lineStyle = style;
}

int RecordingStore::DBGetSheetLayer(ObjectHandle object) {
  const RecordedObject* found = Find(object);
  return m_Calls.Answered(found != nullptr ? found->sheetLayer : 0, "DBGetSheetLayer",
                          ObjectText{object});
}

void RecordingStore::DBSetSheetLayer(ObjectHandle object, int sheetLayer) {
  m_Calls.Told("DBSetSheetLayer", ObjectText{object}, sheetLayer);
  if (RecordedObject* found = Find(object)) found->sheetLayer = sheetLayer;
}

VK_PAGE_RANGE RecordingStore::DBGetPageRange(ObjectHandle object) {
  const RecordedObject* found = Find(object);
  return m_Calls.Answered(found != nullptr ? found->pages : VK_PAGE_RANGE(), "DBGetPageRange",
                          ObjectText{object});
}

void RecordingStore::DBSetPageRange(ObjectHandle object, const VK_PAGE_RANGE& pages) {
  m_Calls.Told("DBSetPageRange", ObjectText{object}, pages);
  if (RecordedObject* found = Find(object)) found->pages = pages;
}

void RecordingStore::SetPageRange(ObjectHandle object, int page) {
  m_Calls.Told("SetPageRange", ObjectText{object}, page);
  if (RecordedObject* found = Find(object)) found->pages = {.first = page, .last = page};
}

void RecordingStore::DBSetTrait(ObjectHandle object, int trait, int value) {
  m_Calls.Told("DBSetTrait", ObjectText{object}, trait, value);
}

void RecordingStore::DBSetTraits(ObjectHandle object, int traits) {
  m_Calls.Told("DBSetTraits", ObjectText{object}, traits);
}

void RecordingStore::DBSetPropertyLocks(ObjectHandle object, const CPropertyLocks& locks) {
  m_Calls.Told("DBSetPropertyLocks", ObjectText{object}, locks);
}

void RecordingStore::DBInvalidateBounds(ObjectHandle object) {
  m_Calls.Told("DBInvalidateBounds", ObjectText{object});
}

void RecordingStore::DBValidateBounds(ObjectHandle object) {
  m_Calls.Told("DBValidateBounds", ObjectText{object});
}

void RecordingStore::InvalidateObject(ObjectHandle object, int erase) {
  m_Calls.Told("InvalidateObject", ObjectText{object}, erase);
}

void RecordingStore::DBApplyTM(ObjectHandle object, const TM& matrix) {
  m_Calls.Told("DBApplyTM", ObjectText{object}, matrix);
}

void RecordingStore::DBHoldNotifications() {
  m_Calls.Told("DBHoldNotifications");
  ++m_Held;
}

void RecordingStore::DBReleaseNotifications() {
  m_Calls.Told("DBReleaseNotifications");
  --m_Held;
}

std::unique_ptr<POLYARC> RecordingStore::PA_NewPolyArc() {
  m_Calls.Told("PA_NewPolyArc");
  return std::make_unique<POLYARC>();
}

void RecordingStore::PA_NewSubPoly(POLYARC&) { m_Calls.Told("PA_NewSubPoly"); }

void RecordingStore::PA_AddVertice(POLYARC&, int subPoly, int vertex,
                                   const host::PolyArcVertice& values) {
  m_Calls.Told("PA_AddVertice", subPoly, vertex, values.x, values.y, values.fifth, values.third,
               values.kind, values.reserved[0], values.reserved[1], values.reserved[2],
               values.reserved[3]);
}

void RecordingStore::PA_CloseSubpoly(POLYARC&, int subPoly) {
  m_Calls.Told("PA_CloseSubpoly", subPoly);
}

ObjectHandle RecordingStore::XCGetBaseObject(ObjectHandle object) {
  m_Calls.Answered(ObjectText{object}, "XCGetBaseObject", ObjectText{object});
  return object;
}

host::OperationHandle RecordingStore::XCGetOwnedOperation(ObjectHandle object) {
  return static_cast<host::OperationHandle>(m_Calls.Answered(
      m_Calls.Answer("XCGetOwnedOperation", 0), "XCGetOwnedOperation", ObjectText{object}));
}

void RecordingStore::SetProductListValid(host::OperationHandle operation, int valid) {
  m_Calls.Told("SetProductListValid", operation, valid);
}

void RecordingStore::RecalculateOperations() { m_Calls.Told("RecalculateOperations"); }

}  // namespace rastrel::test
