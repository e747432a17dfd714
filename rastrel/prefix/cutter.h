#pragma once

#include <string>

#include "rastrel/job/job_data.h"

namespace rastrel::prefix {

/// CJobData::CutterColorModel.
enum CutterModel : int { CutterRgb = 0, CutterCmyk = 1, CutterNamed = 2 };

/// The section that sets the color of cut data in the RIP, or that there is none, and then keeps
/// the job from changing it. Components are 0 to 255; every model except CMYK is RGB.
[[nodiscard]] std::wstring CutterSection(const CJobData& settings);

}  // namespace rastrel::prefix
