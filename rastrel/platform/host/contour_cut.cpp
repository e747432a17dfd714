#include "rastrel/platform/host/contour_cut.h"

PolyBaseClass2::~PolyBaseClass2() = default;

namespace rastrel::host {

ContourCut::~ContourCut() = default;

}  // namespace rastrel::host
