#pragma once

#include <string>

#include "rastrel/job/job_data.h"

namespace rastrel::prefix {

/// One transfer table as hexadecimal text: 256 entries, 32 a line, each line ended. An entry has
/// two digits at the default levels and may have up to four otherwise: the RIP's own reading
/// depends on just that, so nothing is clamped or scaled to a byte.
[[nodiscard]] std::wstring LevelsTable(const CLevelsData& levels);

/// The section that defines the four tables and applies them after the RIP's own:
///
///     userdict begin             the tables redextratransfertable ... grayextratransfertable
///     statusdict begin
///       /_printerinit {
///         Hexachrome {...} {...} ifelse     the procedures of 6 or 4 channels
///         the RIP's own _printerinit
///       } def
///     end
[[nodiscard]] std::wstring LevelsSection(const CJobData& settings);

}  // namespace rastrel::prefix
