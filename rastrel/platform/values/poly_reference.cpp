#include "rastrel/platform/values/poly_reference.h"

PolyBaseClass2::~PolyBaseClass2() = default;
