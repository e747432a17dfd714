#include "rastrel/platform/host/plate_object.h"

CPane::~CPane() = default;
CGenericPlateObject::~CGenericPlateObject() = default;
