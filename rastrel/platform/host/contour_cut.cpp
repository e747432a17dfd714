#include "rastrel/platform/host/contour_cut.h"

namespace rastrel::host {

ContourCut::~ContourCut() = default;

}  // namespace rastrel::host
