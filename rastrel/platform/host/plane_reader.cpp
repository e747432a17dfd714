#include "rastrel/platform/host/plane_reader.h"

CFMPlane::~CFMPlane() = default;
CFMDllIF::~CFMDllIF() = default;

namespace rastrel::host {

PlaneReader::~PlaneReader() = default;

}  // namespace rastrel::host
