#pragma once

#include <string>

#include "rastrel/job/job_data.h"

namespace rastrel::prefix {

/// CJobData::ScaleMode.
enum ScaleMode : int { ScaleNone = 0, ScaleNamed = 1, ScaleCustom = 2 };

/// The section that scales the job: not at all, to a target of the RIP, or to a size of its own. A
/// RIP without scaling skips all of it. An unknown mode leaves the frame empty.
[[nodiscard]] std::wstring ScalingSection(const CJobData& settings);

}  // namespace rastrel::prefix
