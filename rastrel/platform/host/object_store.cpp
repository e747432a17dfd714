#include "rastrel/platform/host/object_store.h"

POLYARC::~POLYARC() = default;

namespace rastrel::host {

ObjectStore::~ObjectStore() = default;

// The defaults of operations that a host leaves out.

int ObjectStore::GetKeepHistory() { return 0; }
void ObjectStore::WriteKeepHistory(int) {}
ListHandle ObjectStore::DBCreateEmptyList() { return ListHandle::None; }
ListHandle ObjectStore::DBFilterList(ListHandle, ObjFilter) { return ListHandle::None; }
int ObjectStore::DBGetMemberCount(ListHandle) { return 0; }
void ObjectStore::DBAddToList(ListHandle, ObjectHandle) {}
ObjectHandle ObjectStore::DBCreateObject(int) { return 0; }
ObjectHandle ObjectStore::DBInsertBitmap(const CVKBitmap&, double, double) { return 0; }
int ObjectStore::DBInsertObject(ObjectHandle, ObjectHandle) { return 0; }
void ObjectStore::DBDestroyObject(ObjectHandle) {}
int ObjectStore::DBGetObjectType(ObjectHandle) { return 0; }
ObjectHandle ObjectStore::DSGroupObjects(ListHandle, int, ObjectHandle) { return 0; }
void ObjectStore::DBSelect(ObjectHandle) {}
void ObjectStore::DBSetSelectedList(ListHandle) {}
void ObjectStore::DBNotifySelectionChanged() {}
int ObjectStore::DBGetSelectedListBounds(ListHandle, BOUNDS&) { return 0; }
int ObjectStore::DBGetLayer(ObjectHandle, CVKColor&) { return 0; }
int ObjectStore::DBGetLineColor(ObjectHandle, CVKColor&) { return 0; }
void ObjectStore::SetPageRange(ObjectHandle object, int page) {
  DBSetPageRange(object, {.first = page, .last = page});
}
void ObjectStore::DBSetTraits(ObjectHandle, int) {}
void ObjectStore::DBSetPropertyLocks(ObjectHandle, const CPropertyLocks&) {}
void ObjectStore::DBApplyTM(ObjectHandle, const TM&) {}
void ObjectStore::DBHoldNotifications() {}
void ObjectStore::DBReleaseNotifications() {}
std::unique_ptr<POLYARC> ObjectStore::PA_NewPolyArc() { return nullptr; }
void ObjectStore::PA_NewSubPoly(POLYARC&) {}
void ObjectStore::PA_AddVertice(POLYARC&, int, int, const PolyArcVertice&) {}
void ObjectStore::PA_CloseSubpoly(POLYARC&, int) {}
ObjectHandle ObjectStore::XCGetBaseObject(ObjectHandle object) { return object; }
OperationHandle ObjectStore::XCGetOwnedOperation(ObjectHandle) { return 0; }
void ObjectStore::SetProductListValid(OperationHandle, int) {}
void ObjectStore::RecalculateOperations() {}

}  // namespace rastrel::host
