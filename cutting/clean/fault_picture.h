#pragma once

#include <string>

#include "cutting/clean/check.h"

namespace rastrel::cutting {

/// Faults with a mark of their own in a picture; of those beyond only the contours are red.
inline constexpr std::size_t MaximumMarkedFaults = 5000;

/// An SVG of the job's page in its true size, with all tool paths in gray, contours with a fault in
/// red, and a ring with the fault's number in the report, from 1, at its place. A ring has the
/// fault's name and length as its title.
[[nodiscard]] std::string FaultPicture(const CutJob& job, const CheckReport& report);

}  // namespace rastrel::cutting
