#pragma once

#include <chrono>

namespace rastrel::cli {

/// Removes the leftovers of killed commands below the data root: their directories in `jobs` and in
/// the separation directory, pages
/// that the RIP made for them, names in the spool that they had taken, and hidden temporary files.
/// Only files that name their owner are removed, and only if that process has certainly ended;
/// pages that came to the spool in part stay for `rastrel spool repair`. Looks at a limited number
/// of names in each place and removes a limited number of them, so that a start takes a bounded
/// time. Once in a process for each data root; a fault is left to the next start. Any thread may
/// call.
void SweepLeftovers();

/// Removes the files of conversions in the RIP directory that nobody has changed for a day, which
/// SweepLeftovers does with the present time: those that a failed or killed conversion left, and
/// those that a conversion leaves on purpose for that long (docs/formats/conversion-files.md).
/// They name no owner, and are known by the form of their temporary names. Nothing is removed
/// while the setting "Keep PS Files" is set. Limits as above. Any thread may call.
void SweepConversions(std::chrono::system_clock::time_point now);

/// Removes pages that the RIP made for this process and that nobody has taken, when its jobs have
/// ended: their list could not be read.
void RemoveOwnPages();

}  // namespace rastrel::cli
