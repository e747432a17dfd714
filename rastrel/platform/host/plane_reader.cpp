#include "rastrel/platform/host/plane_reader.h"

CFMPlane::~CFMPlane() = default;
const wchar_t* CFMPlane::GetFailure() { return L""; }

CFMDllIF::~CFMDllIF() = default;

namespace rastrel::host {

PlaneReader::~PlaneReader() = default;

}  // namespace rastrel::host
