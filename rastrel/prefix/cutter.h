#pragma once

#include <string>

#include "rastrel/job/job_data.h"

namespace rastrel::prefix {

/// CJobData::CutterColorModel.
enum CutterModel : int { CutterRgb = 0, CutterCmyk = 1, CutterNamed = 2 };

/// The section that tells the RIP which color is cut data, or that none is, and then keeps the job
/// from changing it. Components stand on a scale of 0 to 255; every model but CMYK is RGB.
[[nodiscard]] std::wstring CutterSection(const CJobData& settings);

}  // namespace rastrel::prefix
