#pragma once

#include <string>
#include <vector>

namespace rastrel::cli {

/// Something of a template that an import passes over in silence.
struct Finding {
  int line = 0;      ///< of the file, from 1; 0 where none is known
  std::string text;  ///< UTF-8, one sentence without a full stop
};
using Findings = std::vector<Finding>;

}  // namespace rastrel::cli
