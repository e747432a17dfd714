#pragma once

#include <string>

#include "cutting/job/cut_job.h"

namespace rastrel::cutting {

/// The drawing as version AC1015: DxfText.
[[nodiscard]] std::string DxfR2000Text(const CutJob& job, const Transform& toDevice);

}  // namespace rastrel::cutting
