#pragma once

#include <string_view>

#include "cutting/job/cut_job.h"

namespace rastrel::cutting {

/// How the paths of an operation look in drawings.
struct OperationLook {
  std::string_view layer;  ///< of DXF: capitals, digits and underscores
  int colorNumber = 0;     ///< of DXF
  std::string_view color;  ///< of SVG
  std::string_view tint;   ///< of a separation where it is shown: cyan, magenta, yellow, black
  std::string_view title;  ///< for people
};

[[nodiscard]] const OperationLook& LookOf(Operation operation);

}  // namespace rastrel::cutting
