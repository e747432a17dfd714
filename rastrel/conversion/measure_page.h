#pragma once

#include <functional>
#include <string>

#include "rastrel/platform/values/rect.h"

class CSemaphore;

namespace rastrel::conversion {

/// Called with each line of the queue program's messages but empty ones, on another thread.
using MeasureLineHandler = std::function<void(const std::wstring& line)>;

/// GetPSPageSize (page_size.h), which a count of `stop` ends early, with the result 0; `stop` may
/// be null. It may be given by any thread. Several threads may measure at once. `onLine` is not
/// called any more when it has returned.
[[nodiscard]] int MeasurePage(const wchar_t* path, BOUNDS& bounds, CSemaphore* stop,
                              const MeasureLineHandler& onLine = {});

}  // namespace rastrel::conversion
