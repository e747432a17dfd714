#pragma once

#include "rastrel/platform/values/rect.h"

class CSemaphore;

namespace rastrel::conversion {

/// GetPSPageSize (page_size.h), which a count of `stop` ends early, with the result 0; `stop` may
/// be null. It may be given by any thread.
[[nodiscard]] int MeasurePage(const wchar_t* path, BOUNDS& bounds, CSemaphore* stop);

}  // namespace rastrel::conversion
