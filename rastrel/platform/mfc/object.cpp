#include "rastrel/platform/mfc/object.h"

CRuntimeClass CObject::classCObject{"CObject", 0xFFFF, nullptr, nullptr};

CObject::~CObject() = default;

CRuntimeClass* CObject::GetThisClass() { return &classCObject; }

CRuntimeClass* CObject::GetRuntimeClass() const { return &classCObject; }

void CObject::Serialize(CArchive&) {}

void CObject::AssertValid() const {}

void CObject::Dump(CDumpContext&) const {}
