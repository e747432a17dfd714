#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cutting/job/cut_job.h"

/// The one function of the optional component of windows that shows cut jobs.
namespace rastrel::cutting {

/// Pixels of a print, and where they lie on the job's page.
struct ShownPrint {
  int width = 0;   ///< pixels; 0: there is none
  int height = 0;  ///< pixels
  /// Rows from the top without gaps, a pixel as blue, green, red and 255.
  std::vector<std::byte> bgra;
  Box place;  ///< millimetres
};

/// A job with its print, which a window shows at a time.
struct ShownSheet {
  std::string name;  ///< UTF-8, of a file; shown cleaned
  CutJob job;
  ShownPrint print{};
};

/// The name that the component exports the function by.
inline constexpr const char* ShowCutWindowName = "RastrelShowCutWindow";
/// A component of another version shows nothing.
inline constexpr int CutWindowVersion = 1;
/// Shows a window until its user closes it. Without sheets it shows none, and only says whether it
/// could. False if none can be shown, with `reason` set to a static text (UTF-8).
using ShowCutWindow = bool(int version, const std::vector<ShownSheet>& sheets, const char** reason);

}  // namespace rastrel::cutting
