#include "rastrel/platform/host/plate_object.h"

CPane::~CPane() = default;
rastrel::host::ObjectHandle CPane::GetPlateObject() const { return 0; }
CGenericPlateObject::~CGenericPlateObject() = default;
