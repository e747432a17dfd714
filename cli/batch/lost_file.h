#pragma once

#include <cstddef>
#include <string>

#include "cli/batch/batch_record.h"

namespace rastrel::cli {

/// How often the work on a file is begun, if its piece dies, before the file has failed.
inline constexpr int PieceAttempts = 3;

/// The result of a file whose piece died each time. `why` is the last end if it is known, and
/// `said` the piece's lines until then.
[[nodiscard]] FileResult LostFile(const BatchPlan& plan, std::size_t file, const std::string& why,
                                  const HeldText& said);

}  // namespace rastrel::cli
